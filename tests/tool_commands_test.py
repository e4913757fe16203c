"""The subcommands of lfmeta that write, measure and convert, run as a user runs them. Judges are
ExifTool, libtiff's tools, ImageMagick and plain arithmetic. Needs LFMETA, the tool to run."""
import json, math, os, pathlib, resource, signal, struct, subprocess, tempfile, unittest

LFMETA = os.environ["LFMETA"]
PHOTO = pathlib.Path(__file__).resolve().parent.parent / "examples" / "photo.jpg"
W, H = 13, 5
RGB = bytes((x * 19 + y * 7 + c * 83) & 255 for y in range(H) for x in range(W) for c in range(3))
# Around every edge of the halves: ties to even, the largest, what becomes infinite, subnormals.
HALVES = [0.0, -0.0, 1.0, 0.1, 2049.0, 2051.0, 65504.0, 65519.0, -65520.0, 1e9, 2**-14 - 2**-26,
          2**-24, 2**-25, 2**-25 * 1.01, 3 * 2**-25, 6e-8, float("inf"), float("nan")]
RAMP = [-1.0, 0.0, 0.5, 1.0, 7.0, float("nan"), 0.7 / 255, 0.3 / 65535]


def run(*command, data=None, limit=None):
    def prepare():
        if limit is not None:
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit))
    done = subprocess.run([str(word) for word in command], input=data, capture_output=True,
                          preexec_fn=prepare)
    return done.returncode, done.stdout, done.stderr.decode()


def exiftool(path, *tags):
    told = json.loads(run("exiftool", "-json", *tags, path)[1])[0]
    return {name: value for name, value in told.items() if name != "SourceFile"}


def half(value):  # struct refuses what rounds to infinity
    return struct.pack("<e", math.copysign(math.inf, value) if abs(value) >= 65520 else value)


def floats(values, order="<"):
    return struct.pack("%s%df" % (order, len(values)), *values)


def radiance(rows, size=(H, W)):
    return b"#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y %d +X %d\n" % size + b"".join(rows)


def pnm(magic, samples, maximum, size=(W, H)):
    return b"%s # c\n%d %d\n%d\n" % (magic, *size, maximum) + samples


def pfm(values, order):
    return b"Pf\n%d 1\n%s1.0\n" % (len(values), b"-" * (order == "<")) + floats(values, order)


def png(*how, samples=RGB, maximum=255):
    return run("convert", "ppm:-", *how, data=pnm(b"P6", samples, maximum))[1]


# One picture in all three kinds of scanlines: six equal pixels, then others, one row of them black.
ROWS = [[b"\x09\x08\x07\x82"] * 6 + [RGB[3 * (y * W + x):][:3] + bytes([(y != 3) * (120 + x + y)])
                                     for x in range(6, W)] for y in range(H)]
FLAT = radiance(b"".join(row) for row in ROWS)
OLD = radiance(row[0] + b"\1\1\1\3\1\1\1\0" + b"".join(row[4:]) for row in ROWS)
NEW = radiance(bytes([2, 2, 0, W]) + b"".join(bytes([134, row[0][c], 7]) + bytes(
    pixel[c] for pixel in row[6:]) for c in range(4)) for row in ROWS)
LINEAR = floats([p[c] * 2.0 ** (p[3] - 136) * (p[3] > 0) for row in ROWS for p in row for c in range(3)])


class ToolCommands(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.dir = pathlib.Path(folder.name)

    def file(self, name, data):
        (self.dir / name).write_bytes(data)
        return self.dir / name

    def good(self, *arguments):
        status, out, err = run(LFMETA, *arguments)
        self.assertEqual((status, err), (0, ""), arguments)
        return out.decode()

    def bad(self, expected, *arguments, limit=None):  # and nothing in the folder has changed
        before = {path: path.read_bytes() for path in self.dir.iterdir()}
        status, out, err = run(LFMETA, *arguments, limit=limit)
        self.assertEqual((status, out, err.count("\n")), (1, b"", 1), (arguments, err))
        self.assertIn(expected, err)
        self.assertEqual({path: path.read_bytes() for path in self.dir.iterdir()}, before)

    def shown(self, path):
        return json.loads(self.good("settings", "show", "--json", path))

    def test_settings(self):
        out = self.dir / "a.xmp"
        self.good("settings", "write", out, "--method", "details enhancer", "--set", "Smoothing=Low",
                  "--set", "SmoothingMode=Light", "--set", "Strength=+12.5", "--set", "IsPano360=Yes",
                  "--set", "BrightnessIndividualColors=1,2,3,4,5,6,7,-8")
        shown = self.shown(out)
        self.assertEqual((shown["method"], shown["methodName"]), (1, "Details Enhancer"))
        self.assertEqual({k: v for k, v in shown["settings"].items() if v not in (0, [0] * 8)},
                         {"Strength": 12.5, "WhiteClip": 0.25, "SmoothingMode": "Light", "Smoothing":
                          "Low", "Microsmoothing": 2, "IsPano360": "Yes",
                          "BrightnessIndividualColors": [1, 2, 3, 4, 5, 6, 7, -8]})
        for expected, method, *assignments in [
                ("13 \"Fusion/2 images\"", 12, "Strength=1"), ("the methods are", "", "Boost=1"),
                ("are Strength, ToneCompression", 1, "Gamma=2"), ("Element=value", 1, "Strength"),
                ("Lighting, Boost", 4, "Version=6"), ("a number", 4, "Boost=1x"),
                ("a number", 4, "Boost="), ("a number", 4, "Boost=nan"), ("a number", 4, "Boost=2e39"),
                ("No, Yes", 4, "IsPano360=yes"), ("8 numbers", 1, "SaturationIndividualColors=1,2,3"),
                ("Medium, Very Low", 1, "SmoothingMode=Light", "Smoothing=Lowest")]:
            sets = [word for assignment in assignments for word in ("--set", assignment)]
            self.bad(expected, "settings", "write", self.dir / "new", "--method", method, *sets)
            self.bad(expected, "settings", "insert", out, "--method", method, *sets)

    def test_insertion_replaces_a_packet_only_when_it_is_complete(self):
        first = self.dir / "first.xmp"
        self.good("settings", "write", first, "--method", 14)
        text = b"<?xpacket begin='' id='x'?>\n" + first.read_bytes() + b" " * 300 + b"\n<?xpacket?>"
        for packet in [first.read_bytes(), text]:
            path = self.file("packet.xmp", packet)
            path.chmod(0o640)
            self.good("settings", "insert", path, "--method", 10, "--set", "Sharpness=4")
            new = path.read_bytes()
            start = new.index(b"<rdf:Description")
            block = new[start:start + len(new) - len(packet)]
            self.assertEqual(new[:start] + new[start + len(block):], packet)
            self.assertTrue(b"settings02" in block and b"Sharpness>4.0<" in block, block)
            self.assertEqual(path.stat().st_mode & 0o777, 0o640)
            self.assertEqual(self.good("settings", "count", path), "2\n")
        for data in [b"", b"x" * 500, text.replace(b"<rdf:RDF", b"<rdf:RDX")]:
            self.bad("x:xmpmeta", "settings", "insert", self.file("bad", data), "--method", 1)
        self.bad("is an image", "settings", "insert", PHOTO, "--method", 1)
        self.bad("not a regular file", "settings", "write", "/dev/null", "--method", 1)
        self.bad("no settings", "settings", "show", self.file("bad", b"x"))

    def test_decoders_and_depths(self):
        gray, rgb16 = RGB[::3], b"".join(bytes([v, v ^ 85]) for v in RGB)
        swapped = b"".join(bytes([v ^ 85, v]) for v in RGB)
        as_text = b" ".join(b"%d" % v for v in RGB)
        pam = b"P7\nWIDTH 13\nHEIGHT 5\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n" + b"".join(
            RGB[i:i + 3] + b"\x55" for i in range(0, len(RGB), 3))
        color, palette = pnm(b"P6", RGB, 255), png("-colors", "99", "png8:-")
        wide = [bytes(range(128)) + b"\3" * 72] * 3 + [bytes([136]) * 128 + b"\x88" * 72]
        cases = [
            (color, RGB), (pnm(b"P3", as_text, 255), RGB), (pam, RGB), (pnm(b"P5", gray, 255), gray),
            (pnm(b"P2", b"0 2 4\n7", 7, (2, 2)), b"\0\x49\x92\xff"), (png("png24:-"), RGB),
            (pnm(b"P6", rgb16, 65535), swapped), (pnm(b"P6", rgb16, 65535), RGB, "8"),
            (png("-interlace", "PNG", "png32:-"), RGB), (palette, run("convert", "-", "rgb:-",
             data=palette)[1]), (png("png48:-", samples=rgb16, maximum=65535), swapped),
            (PHOTO.read_bytes(), run("convert", PHOTO, "rgb:-")[1]),
            (FLAT, LINEAR), (OLD, LINEAR), (NEW, LINEAR),
            (radiance([b"\2\2\0\xc8"] + [b"\x80" + row[:128] + b"\xc8" + row[199:] for row in wide],
                      (1, 200)), floats([float(v) for v in wide[0] for c in range(3)])),
            (radiance([b"\4\5\6\x88\1\1\1\x57\1\1\1\2"], (1, 600)), floats([4.0, 5.0, 6.0] * 600)),
            (pfm(RAMP[1:5], ">"), floats(RAMP[1:5])),
            (b"PF\n1 2\n-1\n" + bytes(range(24)), bytes([*range(12, 24), *range(12)])),
            (pfm(RAMP, "<"), bytes([0, 0, 128, 255, 255, 0, 1, 0]), "8"),
            (pfm(RAMP, "<"), struct.pack("<8H", 0, 0, 32768, 65535, 65535, 0, 180, 0), "16"),
            (pfm(HALVES, ">"), b"".join(map(half, HALVES)), "half"),
            (color, bytes(v for v in RGB for twice in (0, 1)), "16"),
            (color, b"".join(half(v / 255) for v in RGB), "half"),
            (color, floats([v / 255 for v in RGB]), "float")]
        out = self.dir / "out.tif"
        for number, (data, expected, *depth) in enumerate(cases):
            with self.subTest(number=number):
                options = ["--depth", *depth] if depth else []
                self.good("tiff", self.file("in", data), out, *options)
                tiff = out.read_bytes()
                self.assertEqual(tiff[8:struct.unpack_from("<I", tiff, 4)[0]], expected)
                for cut in [] if depth else [2, 9, len(data) // 2, len(data) - 4]:
                    self.bad("in: ", "tiff", self.file("in", data[:cut]), out)
        self.good("tiff", self.file("in", FLAT.replace(b"-Y", b"+Y")), out)
        self.assertEqual(exiftool(out, "-Orientation#"), {"Orientation": 4})

    def test_malformed_pictures(self):
        row = bytes([2, 2, 0, W])
        for data in [b"GIF89a", pnm(b"P6", RGB, 0), pnm(b"P6", RGB, 70000), pnm(b"P2", b"9 9", 8, (1, 2)),
                     pnm(b"P5", b"", 255, (2**31 - 1, 2**31 - 1)), pnm(b"P5", b"x", 255, (0, 1)),
                     pnm(b"P6", RGB[1:], 255), FLAT[:-1], NEW[:-1], pfm(HALVES, ">")[:-1],
                     radiance([b"\1\1\1\1", bytes(4 * W * H)]), radiance([b"\5\5\5\x09\1\1\1\x0d"]),
                     radiance([row, b"\xff" * 999]), radiance([row, bytes(400)]),
                     radiance([row, bytes([128 + W + 1, 1] * 40)]), radiance([b"\2\2\0\xee" + RGB]),
                     FLAT.replace(b"-Y", b"-Z"), FLAT.replace(b"rgbe", b"xyze"),
                     FLAT.replace(b" 13\n", b" 999999999\n"), FLAT.replace(b"-Y 5", b"-Y 99999999")]:
            self.bad("in: ", "tiff", self.file("in", data), self.dir / "out.tif")
            if data.startswith(b"#?"):
                self.bad("in: ", "hdr", self.dir / "in")

    def test_finished_tiff(self):
        icc = bytes(16) + b"RGB " + bytes(108)
        profile, gray = self.file("p.icc", icc), self.file("gray.icc", icc.replace(b"RGB ", b"GRAY"))
        source, block = self.file("in.png", png("png24:-")), self.dir / "block.bin"
        self.good("tiff", source, source, "--like", PHOTO, "--keyword", "one", "--keyword", "two",
                  "--icc", profile, "--resolution", 240)
        tags = ["-Model", "-ExposureTime", "-FNumber", "-ISO", "-DateTimeOriginal", "-FocalLength",
                "-GPSLatitude", "-GPSLongitude", "-GPSAltitude#", "-GPSTimeStamp", "-GPSDateStamp"]
        told = exiftool(PHOTO, *tags, "-EXIF:Orientation#", "-Keywords")
        self.assertEqual(exiftool(source, *tags, "-EXIF:Orientation#", "-Keywords", "-XResolution"),
                         {**told, "Keywords": told["Keywords"] + ["one", "two"], "XResolution": 240})
        self.assertEqual(*[run("exiftool", "-b", "-XMP", path)[1] for path in (PHOTO, source)])
        self.assertEqual(self.shown(source)["settings"], self.shown(PHOTO)["settings"])
        self.assertEqual(run("tiffinfo", source)[0], 0)
        self.good("exif", PHOTO, block)
        self.assertEqual(exiftool(block, *tags), exiftool(PHOTO, *tags))

        self.assertIn("128 bytes", self.good("icc", source))
        self.good("icc", source, "--set", self.file("q.icc", icc + b"tail"))
        self.assertIn("132 bytes", self.good("icc", source))
        picture, out, new = self.file("in", pnm(b"P6", RGB, 255)), self.dir / "out.tif", self.dir / "new"
        self.good("tiff", picture, out, "--method", 4, "--set", "Boost=3", "--like", PHOTO)
        self.assertEqual(self.shown(out)["settings"]["Boost"], 3)
        for limit, stage in [(0, "header"), (100, "pixels"), (210, "directory")]:
            self.bad(stage, "tiff", picture, new, limit=limit)
        self.bad("no RGB profile", "tiff", picture, new, "--icc", gray)
        self.bad("profile entry", "icc", out, "--set", profile)
        self.bad("no ICC profile", "icc", out)
        self.bad("little-endian", "icc", picture)
        self.bad("cannot be created", "tiff", picture, self.dir / "none" / "out.tif")
        self.bad("65535", "tiff", picture, out, "--keyword", "x" * 65536)
        self.bad("no JPEG, TIFF or PSD", "tiff", picture, out, "--like", picture)

    def test_keywords_alone_and_the_exposure_of_a_description(self):
        tif, block = self.dir / "out.tif", self.dir / "block.bin"
        self.good("tiff", self.file("in", pnm(b"P6", RGB, 255)), tif, "--keyword", "abcd", "--keyword",
                  "efghijk")
        self.assertTrue(tif.read_bytes().endswith(b"\2\x19\0\4abcd\x1c\2\x19\0\7efghijk"))
        self.bad("nothing", "exif", tif, block)
        text = "-ImageDescription=a, b, c, d, e, f, g, 1/125s, R60 G60 B60"
        run("exiftool", "-q", "-overwrite_original", text, tif)
        self.good("exif", tif, block)
        self.assertEqual(exiftool(block, "-ExposureTime", "-ISO"), {"ExposureTime": "1/125", "ISO": 800})

    def test_brightness_of_a_picture(self):
        values = [(19 * r + 183 * g + 54 * b >> 8) * 2.0 ** (e - 136)
                  for row in ROWS for r, g, b, e in row if e]
        low, high = min(v for v in values if v), max(values)
        for data in [FLAT, NEW]:
            found = json.loads(self.good("hdr", "--json", self.file("in", data)))
            for value, wanted in zip(list(found.values())[1:], [
                    W, H, low, high, sum(values) / len(values), math.log2(high / low)], strict=True):
                self.assertAlmostEqual(value, wanted, delta=abs(wanted) * 1e-6)
        black = self.file("in", radiance([bytes(4 * W * H)]))
        self.assertIsNone(json.loads(self.good("hdr", "--json", black))["stops"])
        self.assertIn("black", self.good("hdr", black))


if __name__ == "__main__":
    unittest.main()
