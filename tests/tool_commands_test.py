"""The subcommands of lfmeta that write, measure and convert, run as a user runs them. Judges are ExifTool, libtiff's
tools, ImageMagick and plain arithmetic. Needs LFMETA, the tool to run."""
import json, math, os, pathlib, shlex, shutil, struct, subprocess, tempfile, unittest

LFMETA = os.environ["LFMETA"] + " "
PHOTO = pathlib.Path(__file__).resolve().parents[1].joinpath("examples", "photo.jpg").read_bytes()
W, H = 134, 5
RGB = bytes((x * 19 + y * 7 + c * 83) & 255 for y in range(H) for x in range(W) for c in range(3))
TAGS = ("-Model -ExposureTime -FNumber -ISO -DateTimeOriginal -FocalLength -GPSLatitude -GPSLongitude -GPSAltitude#"
        " -GPSTimeStamp -GPSDateStamp -IFD0:Orientation# ")


def half(value):  # struct refuses what rounds to infinity
    return struct.pack("<e", math.copysign(math.inf, value) if abs(value) >= 65520 else value)


def floats(values, order="<"):
    return b"".join(struct.pack(order + "f", value) for value in values)


def radiance(rows, size=(H, W)):
    return b"#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y %d +X %d\n" % size + b"".join(rows)


def pnm(magic, samples, maximum=255, size=(W, H)):
    return b"%s # c\n%d %d\n%d\n" % (magic, *size, maximum) + samples


def pfm(values, order):
    return b"Pf\n%d 1\n%s1.0\n" % (len(values), b"-" * (order == "<")) + floats(values, order)


def convert(data, how):
    return subprocess.run(["convert", "-", *how.split()], input=data, capture_output=True).stdout


# Around every edge of the halves: ties to even, the largest, what becomes infinite, subnormals.
HALVES = [0.0, -0.0, 1.0, 0.1, 2049.0, 2051.0, 65504.0, 65519.0, -65520.0, 1e9, 2**-14 - 2**-26, 2**-24, 2**-25,
          2**-25 * 1.01, 3 * 2**-25, 6e-8, float("inf"), float("nan")]
RAMP = pfm([-1.0, 0.0, 0.5, 1.0, 7.0, float("nan"), 0.7 / 255, 0.3 / 65535], "<")
COLOR, DEEP = pnm(b"P6", RGB), pnm(b"P6", b"".join(bytes([v, v ^ 85]) for v in RGB), 65535)
# One picture in both kinds of scanlines: six equal pixels, then 128 others, one row of them black.
ROWS = [[b"\x09\x08\x07\x82"] * 6 + [RGB[3 * (y * W + x):][:3] + bytes([(y != 3) * (99 + x + y)]) for x in range(6, W)]
        for y in range(H)]
PIXELS = radiance(row[0] + b"\1\1\1\3\1\1\1\0" + b"".join(row[4:]) for row in ROWS)
PLANES = radiance(bytes([2, 2, 0, W]) + b"".join(bytes([134, row[0][c], 128, *(pixel[c] for pixel in row[6:])])
                                                 for c in range(4)) for row in ROWS)
LINEAR = floats([p[c] * 2.0 ** (p[3] - 136) * (p[3] > 0) for row in ROWS for p in row for c in range(3)])


class ToolCommands(unittest.TestCase):
    def setUp(self):
        self.dir = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.dir)
        self.files(**{"photo.jpg": PHOTO, "in": COLOR})

    def files(self, **contents):
        for name, data in contents.items():
            (self.dir / name).write_bytes(data)

    def run_line(self, line):
        done = subprocess.run(shlex.split(line), cwd=self.dir, capture_output=True)
        return done.returncode, done.stdout, done.stderr.decode()

    def good(self, line):
        status, out, err = self.run_line(LFMETA + line)
        self.assertEqual((status, err), (0, ""), line)
        return out.decode()

    def bad(self, expected, line, prefix=""):  # and nothing in the folder has changed
        before = {path: path.read_bytes() for path in self.dir.iterdir()}
        status, out, err = self.run_line(prefix + LFMETA + line)
        self.assertEqual((status, out, err.count("\n"), expected in err), (1, b"", 1, True), (line, err))
        self.assertEqual({path: path.read_bytes() for path in self.dir.iterdir()}, before)

    def exiftool(self, name, tags=TAGS):
        told = json.loads(self.run_line("exiftool -json %s %s" % (tags, name))[1])[0]
        return {tag: value for tag, value in told.items() if tag != "SourceFile"}

    def test_settings(self):
        self.good("settings write a.xmp --method 'details enhancer' --set Smoothing=Low --set SmoothingMode=Light --set"
                  " Strength=+12.5 --set IsPano360=Yes --set BrightnessIndividualColors=1,2,3,4,5,6,7,-8")
        shown = json.loads(self.good("settings show --json a.xmp"))
        self.assertEqual((shown["method"], shown["methodName"]), (1, "Details Enhancer"))
        self.assertEqual({k: v for k, v in shown["settings"].items() if v not in (0, [0] * 8)},
                         {"Strength": 12.5, "WhiteClip": 0.25, "SmoothingMode": "Light", "Smoothing": "Low",
                          "Microsmoothing": 2, "IsPano360": "Yes", "BrightnessIndividualColors": [*range(1, 8), -8]})
        for expected, method, *assignments in [
                ("13 \"Fusion/2 images\"", 12, "Strength=1"), ("are Strength, Tone", 1, "Gamma=2", "Strength"),
                ("Lighting, Boost", 4, "Version=6"), ("a number", 4, "Boost=1x", "Boost=", "Boost=nan", "Boost=2e39"),
                ("No, Yes", 4, "IsPano360=yes"), ("8 numbers", 1, "SaturationIndividualColors=1,2,3"),
                ("Medium, Very Low", 1, "SmoothingMode=Light --set Smoothing=Lowest")]:
            for assignment in assignments:
                self.bad(expected, "settings write new --method %s --set %s" % (method, assignment))
                self.bad(expected, "settings insert a.xmp --method %s --set %s" % (method, assignment))

    def test_insertion_replaces_a_packet_only_when_it_is_complete(self):
        file = self.dir / "packet"
        self.good("settings write packet --method 15")
        first = file.read_bytes()
        text = b"<?xpacket begin='' id='x'?>\n" + first + b" " * 300 + b"\n<?xpacket?>"
        file.chmod(0o640)
        for packet in [first, text]:
            self.files(packet=packet)
            self.good("settings insert packet --method 10 --set Sharpness=4")
            new = file.read_bytes()
            start = new.index(b"<rdf:Description")
            block = new[start:start + len(new) - len(packet)]
            self.assertEqual(new[:start] + new[start + len(block):], packet)
            self.assertTrue(b"settings02" in block and b"Sharpness>4.0<" in block, block)
            self.assertEqual(file.stat().st_mode & 0o777, 0o640)
            self.assertEqual(self.good("settings count packet"), "2\n")
        for data in [b"", b"x" * 500, text.replace(b"<rdf:RDF", b"<rdf:RDX")]:
            self.files(bad=data)
            self.bad("x:xmpmeta", "settings insert bad --method 1")
        self.bad("is an image", "settings insert photo.jpg --method 1")
        self.bad("not a regular file", "settings write . --method 1")
        self.bad("no settings", "settings show in")

    def test_decoders_and_depths(self):
        swapped, palette = b"".join(bytes([v ^ 85, v]) for v in RGB), convert(COLOR, "-colors 99 png8:-")
        pam = b"P7\nWIDTH 134\nHEIGHT 5\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n" + convert(COLOR, "rgba:-")
        for data, expected, *depth in [
                (COLOR, RGB), (pnm(b"P3", b" ".join(b"%d" % v for v in RGB)), RGB), (pam, RGB), (DEEP, RGB, "8"),
                (DEEP, swapped), (convert(DEEP, "png48:-"), swapped), (convert(COLOR, "-interlace PNG png32:-"), RGB),
                (pnm(b"P5", RGB[::3]), RGB[::3]), (pnm(b"P2", b"0 2 4\n7", 7, (2, 2)), b"\0\x49\x92\xff"),
                (palette, convert(palette, "rgb:-")), (PHOTO, convert(PHOTO, "rgb:-")),
                (PIXELS, LINEAR), (PLANES, LINEAR), (pfm([0, 1, 7], ">"), floats([0, 1, 7])),
                (radiance([b"\4\5\6\x88\1\1\1\x57\1\1\1\2\7\5\6\x88\1\1\1\1"], (1, 602)),
                 floats([4, 5, 6] * 600 + [7, 5, 6] * 2)),
                (b"PF\n1 2\n-1\n" + bytes(range(24)), bytes([*range(12, 24), *range(12)])),
                (RAMP, bytes([0, 0, 128, 255, 255, 0, 1, 0]), "8"),
                (RAMP, struct.pack("<8H", 0, 0, 32768, 65535, 65535, 0, 180, 0), "16"),
                (pfm(HALVES, ">"), b"".join(map(half, HALVES)), "half"),
                (COLOR, bytes(v for v in RGB for twice in (0, 1)), "16"),
                (COLOR, b"".join(half(v / 255) for v in RGB), "half"), (COLOR, floats(v / 255 for v in RGB), "float")]:
            self.files(**{"in": data})
            self.good("tiff in out.tif" + " --depth ".join(["", *depth]))
            tiff = (self.dir / "out.tif").read_bytes()
            self.assertEqual(tiff[8:struct.unpack_from("<I", tiff, 4)[0]], expected, (data[:20], depth))
            for cut in [] if depth else [2, 9, len(data) // 2, len(data) - 4]:
                self.files(**{"in": data[:cut]})
                self.bad("in: ", "tiff in out.tif")

    def test_malformed_pictures(self):
        row = bytes([2, 2, 0, W])
        for data in [b"GIF89a", pnm(b"P6", RGB, 0), pnm(b"P6", RGB, 70000), pnm(b"P2", b"9 9", 8, (1, 2)),
                     pnm(b"P5", b"", 255, (2**31 - 1, 2**31 - 1)), pnm(b"P5", b"x", 255, (0, 1)), COLOR[:-1],
                     PIXELS[:-1], PLANES[:-1], RAMP[:-1], radiance([b"\1\1\1\1", bytes(4 * W * H)]),
                     radiance([b"\5\5\5\x09\1\1\1", row[3:]], (1, W)), radiance([row, bytes(400)]),
                     radiance([row, b"\xff\1" * 40]), PLANES.replace(row, b"\2\2\0\x87"),
                     PIXELS.replace(b"-Y", b"-Z"), PIXELS.replace(b"rgbe", b"xyze"),
                     PIXELS.replace(b" 134\n", b" 999999999\n"), PIXELS.replace(b"-Y 5", b"-Y 99999999")]:
            self.files(**{"in": data})
            for line in ["tiff in out.tif", "hdr in"]:
                self.bad("in: ", line)

    def test_finished_tiff(self):
        icc = bytes(16) + b"RGB " + bytes(108)
        self.files(icc=icc, longer=icc + b"tail", gray=icc.replace(b"RGB ", b"GRAY"), up=PIXELS.replace(b"-Y", b"+Y"))
        self.good("tiff in in.tif --like photo.jpg --keyword one --keyword two --icc icc --resolution 240")
        told = self.exiftool("photo.jpg", TAGS + "-Keywords")
        self.assertEqual(self.exiftool("in.tif", TAGS + "-Keywords -XResolution"),
                         {**told, "Keywords": told["Keywords"] + ["one", "two"], "XResolution": 240})
        self.assertEqual(*[self.run_line("exiftool -b -XMP " + name)[1] for name in ("photo.jpg", "in.tif")])
        self.assertEqual(self.run_line("tiffinfo in.tif")[0], 0)
        self.assertIn("128 bytes", self.good("icc in.tif"))
        self.good("icc in.tif --set longer")
        self.assertIn("132 bytes", self.good("icc in.tif"))
        self.good("tiff up up --method 4 --set Boost=3 --like photo.jpg --depth half")
        self.good("exif up block.bin")
        self.assertEqual(self.exiftool("block.bin"), {**self.exiftool("photo.jpg"), "Orientation": 4})
        self.assertIn("Boost                       3", self.good("settings show up"))
        self.assertEqual(self.exiftool("up", "-IFD0:Orientation# -Software -SampleFormat# -BitsPerSample"), {
            "Orientation": 4, "Software": "Lumenforge Merge To 32-bit HDR", "SampleFormat": "3 3 3",
            "BitsPerSample": "16 16 16"})
        for limit, stage in [(0, "header"), (100, "pixels"), (2020, "directory")]:
            self.bad(stage, "tiff in new", "env --ignore-signal=XFSZ prlimit --fsize=%d " % limit)
        for expected, line in [
                ("no RGB profile", "tiff in new --icc gray"), ("profile entry", "icc up --set icc"),
                ("no ICC profile", "icc up"), ("little-endian", "icc in"), ("cannot be created", "tiff in none/up"),
                ("65535", "tiff in up --keyword " + "x" * 65536), ("no JPEG, TIFF or PSD", "tiff in up --like in")]:
            self.bad(expected, line)

    def test_keywords_alone_and_the_exposure_of_a_description(self):
        self.good("tiff in in --keyword abcd --keyword efghijk")
        self.assertTrue((self.dir / "in").read_bytes().endswith(b"\2\x19\0\4abcd\x1c\2\x19\0\7efghijk"))
        self.bad("nothing", "exif in block.bin")
        self.run_line("exiftool -overwrite_original in '-ImageDescription=a, b, c, d, e, f, g, 1/125s, R60 G60 B60'")
        self.good("exif in block.bin")
        self.assertEqual(self.exiftool("block.bin", "-ExposureTime -ISO"), {"ExposureTime": "1/125", "ISO": 800})

    def test_brightness_of_a_picture(self):
        values = [(19 * r + 183 * g + 54 * b >> 8) * 2.0 ** (e - 136) for row in ROWS for r, g, b, e in row if e]
        low, high = min(filter(None, values)), max(values)
        self.files(planes=PLANES, black=radiance([bytes(4 * W * H)]))
        found = json.loads(self.good("hdr --json planes")).values()
        wanted = [W, H, low, high, sum(values) / len(values), math.log2(high / low)]
        self.assertEqual(floats([*found][1:]), floats(wanted))
        self.assertIsNone(json.loads(self.good("hdr --json black"))["stops"])
        self.assertIn("black", self.good("hdr black"))


if __name__ == "__main__":
    unittest.main()
