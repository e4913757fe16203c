"""lfmeta tiff and hdr: pictures of every format in, judged by ImageMagick and plain arithmetic."""
import json, math, struct, subprocess, unittest, zlib

from support.photos import segment, tiff as tiff_structure
from support.tool import *


def half(value):  # struct refuses what rounds to infinity
    return struct.pack("<e", math.copysign(math.inf, value) if abs(value) >= 65520 else value)


def floats(values, order="<"):
    return b"".join(struct.pack(order + "f", value) for value in values)


def radiance(rows, size=(H, W)):
    return b"#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y %d +X %d\n" % size + b"".join(rows)


def run_lengths(width):  # one scanline of pixels 1, 2, 3, exponent 129
    runs = lambda value: b"".join(bytes([128 + min(127, width - x), value]) for x in range(0, width, 127))
    return radiance([bytes([2, 2, width >> 8, width & 255]) + b"".join(map(runs, (1, 2, 3, 129)))], (1, width))


def pfm(values, order):
    return b"Pf\n%d 1\n%s1.0\n" % (len(values), b"-" * (order == "<")) + floats(values, order)


PNG_START = b"\x89PNG\r\n\x1a\n"


def png_chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


# A picture of 9 x 9 in any kind and depth, with what a reader without opacity is to make of it.
def png(kind, depth, transparent):
    channels, size = {0: 1, 2: 3, 3: 1, 4: 2, 6: 4}[kind], 9
    value = lambda x, y, c: (x * 0x2B37 + y * 0x111B + c * 0x0705) % 2 ** depth
    rows = b""
    for y in range(size):
        bits = "".join(f"{value(x, y, c):0{depth}b}" for x in range(size) for c in range(channels))
        rows += bytes([0, *(int(bits[i:i + 8].ljust(8, "0"), 2) for i in range(0, len(bits), 8))])
    colors = [(i * 7 % 256, i * 3 % 256, 255 - i) for i in range(2 ** depth)] if kind == 3 else []
    chunks = [(b"IHDR", struct.pack(">2I5B", size, size, depth, kind, 0, 0, 0)), (b"zTXt", b"Comment\0\0damaged"),
              (b"PLTE", bytes(sum(colors, ())))][:3 if colors else 2]
    if transparent:
        chunks.append((b"tRNS", bytes(range(2 ** depth)) if colors else bytes([0, 1] * channels)))
    chunks += [(b"IDAT", zlib.compress(rows)), (b"IEND", b"")]
    shown = range(1 if kind in (0, 4) else 3)
    plain = [colors[value(x, y, 0)][c] if colors else value(x, y, c) for y in range(size) for x in range(size) for c in shown]
    wanted = struct.pack("<%dH" % len(plain), *plain) if depth == 16 else bytes(
        v if colors else v * 255 // (2 ** depth - 1) for v in plain)
    return PNG_START + b"".join(png_chunk(*chunk) for chunk in chunks), wanted


SIZES = {"double": 8, "envmap": 1, "int": 4, "m33d": 72, "m33f": 36, "m44d": 128, "m44f": 64, "rational": 8,
         "timecode": 8, "v2d": 16, "v2i": 8, "v3d": 24, "v3f": 12, "v3i": 12, "box2f": 16}


# Scanlines without packing. Values are a row's pixels, each with a value for each channel.
def exr(rows, channels="RGB", code="e", density=None, colors=None, window=(-3, 7), sampling=(1, 1), pixel_type=None):
    def attribute(name, kind, value):
        return name + b"\0" + kind + b"\0" + struct.pack("<I", len(value)) + value
    order = sorted(range(len(channels)), key=lambda c: channels[c])
    listed = b"".join(channels[c].encode() + b"\0" + struct.pack("<4I", pixel_type if pixel_type is not None else 1 + (
        code == "f"), 0, *sampling) for c in order)
    box = struct.pack("<4i", *window, window[0] + len(rows[0]) - 1, window[1] + len(rows) - 1)
    one = struct.pack("<f", 1)
    data = struct.pack("<2I", 20000630, 2) + b"".join(attribute(*all) for all in [
        (b"channels", b"chlist", listed + b"\0"), (b"compression", b"compression", b"\0"), (b"dataWindow", b"box2i", box),
        (b"displayWindow", b"box2i", box), (b"lineOrder", b"lineOrder", b"\0"), (b"pixelAspectRatio", b"float", one),
        (b"screenWindowCenter", b"v2f", bytes(8)), (b"screenWindowWidth", b"float", one), (b"comments", b"string", b"c" * 300), *(
            (kind.encode(), kind.encode(), bytes(size)) for kind, size in SIZES.items())])
    if colors: data += attribute(b"chromaticities", b"chromaticities", struct.pack("<8f", *colors))
    if density: data += attribute(b"xDensity", b"float", struct.pack("<f", density))
    data += b"\0"
    lines = [b"".join(struct.pack("<%d%s" % (len(row), code), *(pixel[c] for pixel in row)) for c in order) for row in rows]
    start, size = len(data) + 8 * len(rows), len(lines[0]) + 8
    return data + b"".join(struct.pack("<Q", start + size * y) for y in range(len(rows))) + b"".join(
        struct.pack("<iI", window[1] + y, len(line)) + line for y, line in enumerate(lines))


# One row of gray samples for each of two strips of `data`, which may be the same; a palette of 16 colours for 4 bits.
def tiff_strips(width, offsets, counts, bits=8, colors=(), data=b""):
    def whole(start):
        places = (4, 2, struct.pack("<2I", *(start + offset for offset in offsets)))
        palette = {320: (3, len(colors), struct.pack("<%dH" % len(colors), *colors))} if colors else {}
        return tiff_structure({256: width, 257: 2, 258: bits, 259: 1, 262: 3 if colors else 1, 273: places, 277: 1,
                               278: 1, 279: (4, 2, struct.pack("<2I", *counts)), **palette})
    return whole(len(whole(0))) + data


# A black JPEG picture of 8 x 8 whose three colours come one by one, again and again.
def jpeg_scans(count):
    return b"\xff\xd8" + segment(0xDB, bytes([0] + 64 * [1])) + segment(
        0xC0, bytes([8, 0, 8, 0, 8, 3, 1, 17, 0, 2, 17, 0, 3, 17, 0])) + b"".join(
            segment(0xC4, bytes([kind, 1] + 16 * [0])) for kind in (0, 16)) + b"".join(
                segment(0xDA, bytes([1, i % 3 + 1, 0, 0, 63, 0])) + b"\x3f" for i in range(count)) + b"\xff\xd9"


def convert(data, how):
    return subprocess.run(["convert", "-", *how.split()], input=data, capture_output=True).stdout


# Around every edge of the halves: ties to even, the largest, what becomes infinite, subnormals.
HALVES = [0.0, -0.0, 1.0, 0.1, 2049.0, 2051.0, 65504.0, 65519.0, -65520.0, 1e9, 2**-14 - 2**-26, 2**-24, 2**-25,
          2**-25 * 1.01, 3 * 2**-25, 6e-8, float("inf"), float("nan")]
RAMP = pfm([-1.0, 0.0, 0.5, 1.0, 7.0, float("nan"), 0.7 / 255, 0.3 / 65535], "<")
DEEP = pnm(b"P6", b"".join(bytes([v, v ^ 85]) for v in RGB), 65535)
# One picture in both kinds of scanlines: six equal pixels, then 128 others, one row of them black.
ROWS = [[b"\x09\x08\x07\x82"] * 6 + [RGB[3 * (y * W + x):][:3] + bytes([(y != 3) * (99 + x + y)]) for x in range(6, W)]
        for y in range(H)]
PIXELS = radiance(row[0] + b"\1\1\1\3\1\1\1\0" + b"".join(row[4:]) for row in ROWS)
PLANES = radiance(bytes([2, 2, 0, W]) + b"".join(bytes([134, row[0][c], 128, *(pixel[c] for pixel in row[6:])])
                                                 for c in range(4)) for row in ROWS)
LINEAR = floats([p[c] * 2.0 ** (p[3] - 136) * (p[3] > 0) for row in ROWS for p in row for c in range(3)])


class ToolPictures(ToolTest):
    def pixels(self, data, line="tiff in out.tif"):
        self.files(**{"in": data})
        self.good(line)
        tiff = (self.dir / "out.tif").read_bytes()
        return tiff[8:struct.unpack_from("<I", tiff, 4)[0]]

    def refuse(self, data, word="in: ", line="tiff in out.tif"):
        self.files(**{"in": data})
        self.bad(word, line)

    def test_every_kind_of_png(self):
        for kind, depths in {0: [1, 2, 4, 8, 16], 2: [8, 16], 3: [1, 2, 4, 8], 4: [8, 16], 6: [8, 16]}.items():
            for depth in depths:
                for transparent in (0, 1) if kind < 4 else (0,):
                    data, wanted = png(kind, depth, transparent)
                    self.assertEqual(self.pixels(data), wanted, (kind, depth, transparent))

    def test_decoders_and_depths(self):
        swapped, palette = b"".join(bytes([v ^ 85, v]) for v in RGB), convert(COLOR, "-colors 99 png8:-")
        pam = b"P7\nWIDTH 134\nHEIGHT 5\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n" + convert(COLOR, "rgba:-")
        for data, expected, *depth in [
                (COLOR, RGB), (pnm(b"P3", b" ".join(b"%d" % v for v in RGB)), RGB), (pam, RGB), (DEEP, RGB, "8"),
                (DEEP, swapped), (convert(DEEP, "png48:-"), swapped), (convert(COLOR, "-interlace PNG png32:-"), RGB),
                (convert(palette, "-interlace PNG png8:-"), convert(palette, "rgb:-")),
                (pnm(b"P5", RGB[::3]), RGB[::3]), (pnm(b"P2", b"0 2 4\n7", 7, (2, 2)), b"\0\x49\x92\xff"),
                (palette, convert(palette, "rgb:-")), (PHOTO, convert(PHOTO, "rgb:-")),
                (PIXELS, LINEAR), (PLANES, LINEAR), (pfm([0, 1, 7], ">"), floats([0, 1, 7])),
                (radiance([b"\4\5\6\x88\1\1\1\x57\1\1\1\2\7\5\6\x88\1\1\1\1"], (1, 602)),
                 floats([4, 5, 6] * 600 + [7, 5, 6] * 2)),
                (b"P1 3 2 # c\n010 101", b"\xff\0\xff\0\xff\0"), (b"P4 9 1 \x41\xff", b"\xff\0" + 5 * b"\xff" + b"\0\0"),
                (b"P4 8 2 \0\xff", 8 * b"\xff" + bytes(8)), (pam.replace(b"DEPTH 4", b"DEPTH 2").replace(b"H 134", b"H 268"),
                                                           convert(COLOR, "rgba:-")[::2]),
                (run_lengths(8), floats([p * 2.0 ** -7 for p in 8 * [1, 2, 3]])),
                (run_lengths(1000), floats([p * 2.0 ** -7 for p in 1000 * [1, 2, 3]])),
                (radiance(9 * [b"\2\2\xc8\x88"], (1, 9)), floats(9 * [2, 2, 200])),
                (jpeg_scans(100), 192 * b"\x80"), (jpeg_scans(4).replace(b"\xff\xda", b"\0\xff\xda", 1), 192 * b"\x80"),
                (b"PF\n1 2\n-1\n" + bytes(range(24)), bytes([*range(12, 24), *range(12)])),
                (RAMP, bytes([0, 0, 128, 255, 255, 0, 1, 0]), "8"),
                (RAMP, struct.pack("<8H", 0, 0, 32768, 65535, 65535, 0, 180, 0), "16"),
                (pfm(HALVES, ">"), b"".join(map(half, HALVES)), "half"),
                (COLOR, bytes(v for v in RGB for twice in (0, 1)), "16"),
                (COLOR, b"".join(half(v / 255) for v in RGB), "half"), (COLOR, floats(v / 255 for v in RGB), "float")]:
            self.assertEqual(self.pixels(data, "tiff in out.tif" + " --depth ".join(["", *depth])), expected,
                             (data[:20], depth))
            for cut in [] if depth or len(data) < 20 else [2, 9, len(data) // 2, len(data) - 4]:
                self.refuse(data[:cut])

    def test_tiff_pictures(self):
        def tiff(how, data=COLOR, copied=""):
            self.files(**{"made.tif": convert(data, how + " tif:-")})
            if copied: self.assertEqual(self.run_line("tiffcp %s made.tif copied.tif" % copied)[::2], (0, ""), copied)
            return (self.dir / ("copied.tif" if copied else "made.tif")).read_bytes()
        wide, gray = DEEP[-len(RGB) * 2:], convert(COLOR, "-depth 8 -colorspace gray gray:-")
        swapped = b"".join(wide[i + 1:i + 2] + wide[i:i + 1] for i in range(0, len(wide), 2))
        bits = convert(COLOR, "-monochrome gray:-")
        for data, expected in [
                (tiff("-compress none"), RGB), (tiff("-compress lzw"), RGB), (tiff("-compress zip -endian msb"), RGB),
                (tiff("-compress none", copied="-t -w 32 -l 16"), RGB), (tiff("", copied="-p separate"), RGB),
                (tiff("-compress zip -alpha on", copied="-t -w 16 -l 16 -p separate"), RGB), (tiff("-alpha on"), RGB),
                (tiff("-compress none -endian msb", DEEP), swapped), (tiff("-compress zip", DEEP, "-B -r 2"), swapped),
                (tiff("-compress none -interlace plane -endian msb", DEEP), swapped), (tiff("-colorspace gray"), gray),
                (tiff("-monochrome -compress group4"), bits), (tiff("-monochrome -depth 1", copied="-f lsb2msb -c none"), bits),
                (tiff("-monochrome -compress none -define quantum:polarity=min-is-white"), bytes(255 - v for v in bits)),
                (tiff("-type palette", palette := convert(COLOR, "-colors 15 png8:-")), convert(palette, "rgb:-")),
                (tiff("", PHOTO, "-c jpeg:99 -r 16"), None)]:
            found = self.pixels(data)
            if expected is None:  # the unpacker's own arithmetic
                self.run_line("tiffcp -c none copied.tif plain.tif")
                expected = self.pixels((self.dir / "plain.tif").read_bytes())
            self.assertEqual(found, expected, data[:8])
            for cut in [2, 9, len(data) // 2]:
                self.refuse(data[:cut])
        for depth, how in [("float", "-B"), ("float", "-c zip:3"), ("half", "-B"), ("half", "-c lzw"), ("16", "-c zip:2")]:
            written = self.pixels(RAMP, "tiff in out.tif --depth " + depth)
            self.assertEqual(self.run_line("tiffcp %s out.tif copied.tif" % how)[0], 0)
            self.assertEqual(self.pixels((self.dir / "copied.tif").read_bytes()), written, (depth, how))
        floating = "-depth 32 -define quantum:format=floating-point"
        opaque = self.pixels(tiff(floating))
        self.assertEqual((len(opaque), self.pixels(tiff(floating + " -alpha on"))), (12 * W * H, opaque))
        shared = bytes(range(250)) * 4
        self.assertEqual(self.pixels(tiff_strips(1000, [0, 0], [500, 500], 4, [0x1234 * i for i in range(12)] + 36 * [0x5678],
                                                 shared)), b"".join(
            bytes([(0x1234 * i >> 8) if i < 12 else 0x56, 0x56, 0x56]) for row in range(2) for b in shared[:500] for i in (b >> 4, b & 15)))
        self.assertEqual(self.pixels(tiff_strips(2, [0, 3], [3, 3], 12, data=b"\x12\x3f\xff\x00\x18\x01")), struct.pack(
            "<4H", *(round(v * 65535 / 4095) for v in (0x123, 0xFFF, 0x001, 0x801))))
        for data, word in [(tiff_strips(1000, [0, 0], [1000, 1000], data=shared), "more bytes"),
                           (tiff_strips(1, [0, 2], [2, 2], 16, [0] * (3 << 16), bytes(4)), "16 bits"),
                           (tiff_strips(500, [0, 500], [500, 499], data=shared), "ends before")]:
            self.refuse(data, word)
        for how, word in [("-colorspace cmyk", "CMYK"), ("-colorspace lab", "colours"), ("-compress webp", "packed"),
                          ("-depth 32", "32 bits"), ("-depth 8 -define quantum:format=signed", "8 bits"), ("-depth 64 -define quantum:format=floating-point", "64 bits")]:
            self.refuse(tiff(how), word)

    def test_openexr_pictures(self):
        rows = [[(x / 4, -y, 1000.0 * x) for x in range(5)] for y in range(3)]
        flat = [value for row in rows for pixel in row for value in pixel]
        gray = [[(pixel[2],) for pixel in row] for row in rows]
        for data, expected in [
                (exr(rows), struct.pack("<45e", *flat)), (exr(rows, code="f"), floats(flat)),
                (exr([[(9, *pixel) for pixel in row] for row in rows], "ARGB"), struct.pack("<45e", *flat)),
                (exr(gray, "Y"), struct.pack("<15e", *flat[2::3]))]:
            self.assertEqual(self.pixels(data), expected)
            for cut in [3, 50, len(data) // 2, len(data) - 1]:
                self.refuse(data[:cut])
        special = [(v,) for v in [0.0, -0.0, -0.1, 65504.0, 2**-14, 3 * 2**-24, math.inf, -math.inf, math.nan]]
        self.assertEqual(self.pixels(exr([special], "Y"), "tiff in out.tif --depth float"),
                         floats(struct.unpack("<e", struct.pack("<e", *v))[0] for v in special))
        for data, word in [(exr(gray, "Z"), "no channels"), (exr(rows, ["Y", "RY", "BY"]), "differences"),
                           (exr([[(1, 1, 1)]], code="I", pixel_type=0), "integer"),
                           *[(exr([[(0, 0, 0)] * 4] * 2, sampling=sampling, window=(0, 0)), "fewer samples")
                             for sampling in [(2, 1), (1, 2)]],
                           (exr([[(0, 0, 0)] * 200000], code="f")[:2000], "MiB"),
                           *[(exr(gray, "Y").replace(*change, 1), "header is damaged") for change in [
                               (b"compression\0\1", b"compression\0\2"), (b"v2f\0\x08", b"str\0\x08\xff\xff"),
                               (b"v2f\0\x08\0\0\0" + bytes(8), b"string\0\0\0\0\x40"), (b"Y\0\1", b"Y\7\1"),
                               (b"v2f\0\x08\0\0\0" + bytes(8), b"stringvector\0\x08\0\0\0\0\0\0\x40" + bytes(4))]]]:
            self.refuse(data, word)

    def test_what_a_picture_says_is_kept(self):
        profile = (b"\0\0\2\x0c" + bytes(8) + b"mntrRGB XYZ " + bytes(12) + b"acsp").ljust(0x20C, b"\0")
        self.files(profile=profile)
        self.good("tiff in tagged --icc profile --resolution 240")
        self.run_line("tiffset -s Orientation 6 tagged")
        self.good("tiff tagged out.tif")
        self.assertEqual(self.exiftool("out.tif", "-n -XResolution -Orientation"), {"XResolution": 240, "Orientation": 6})
        self.assertIn(profile, (self.dir / "out.tif").read_bytes())
        for code, layout in enumerate(["-Y 5 +X", "-Y 5 -X", "+Y 5 -X", "+Y 5 +X", "+X 5 -Y", "-X 5 -Y", "-X 5 +Y", "+X 5 +Y"], 1):
            self.pixels(PIXELS.replace(b"-Y 5 +X", layout.encode()))
            self.assertEqual(self.exiftool("out.tif", "-n -Orientation"), {"Orientation": code} if code > 1 else {"Orientation": 1})
        for data, expected in [(exr([[(1, 2, 3)]], density=123.4), 123), (exr([[(1, 2, 3)]], density=float("nan")), 300),
                               (convert(COLOR, "-units PixelsPerInch -density 96 png:-"), 96), (convert(COLOR, "-units PixelsPerInch -density 1 jpg:-"), 1),
                               (convert(COLOR, "-units PixelsPerCentimeter -density 100 tif:-"), 254),
                               (convert(COLOR, "-units PixelsPerCentimeter -density 100 jpg:-"), 254),
                               (convert(COLOR, "-units Undefined -density 100 jpg:-"), 300), (jpeg_scans(4), 300)]:
            self.pixels(data)
            self.assertEqual(self.exiftool("out.tif", "-n -XResolution")["XResolution"], expected)

    def test_chromaticities_become_a_profile(self):
        srgb = [0.64, 0.33, 0.3, 0.6, 0.15, 0.06, 0.3127, 0.329]
        self.pixels(exr([[(1, 2, 3)]], colors=srgb))
        told = self.exiftool("out.tif", "-ICC_Profile:all")
        for key, wanted in [("Red", (0.4361, 0.2225, 0.0139)), ("Green", (0.3851, 0.7169, 0.0971)),
                            ("Blue", (0.1431, 0.0606, 0.7141))]:
            found = [float(number) for number in told[key + "MatrixColumn"].split()]
            self.assertTrue(all(abs(a - b) < 3e-4 for a, b in zip(found, wanted)), (key, found))
        self.assertEqual([told[key] for key in ("ProfileDescription", "ProfileClass", "ProfileFileSignature")],
                         ["Linear RGB", "Display Device Profile", "acsp"])
        self.assertIn("Linear RGB", self.good("icc out.tif"))
        profile = self.run_line("exiftool -b -ICC_Profile out.tif")[1]
        jpeg, small = convert(COLOR, "jpg:-"), png(2, 8, 0)[0]
        for data in [small[:33] + png_chunk(b"iCCP", b"linear\0\0" + zlib.compress(profile)) + small[33:],
                     jpeg[:2] + b"\xff\xe2" + struct.pack(">H", len(profile) + 16) + b"ICC_PROFILE\0\1\1" + profile + jpeg[2:]]:
            self.pixels(data)
            self.assertEqual(self.run_line("exiftool -b -ICC_Profile out.tif")[1], profile)
        for broken in [[0.0] * 8, [0.3] * 8]:  # which span nothing
            self.pixels(exr([[(1, 2, 3)]], colors=broken))
            self.bad("no ICC profile", "icc out.tif")

    def test_memory_of_hostile_and_of_large_pictures(self):
        own = peak("tiff", "in", "out.tif", cwd=self.dir)
        COLOR_PNG = png(2, 8, 0)[0]
        blank = PNG_START + png_chunk(b"IHDR", struct.pack(">2I5B", 19000, 19000, 1, 0, 0, 0, 0))
        texts = png_chunk(b"zTXt", b"Comment\0\0" + zlib.compress(bytes(1 << 20))) * 500
        packed = zlib.compress(bytes(19000 * 2376), 9)
        runs = radiance([(bytes(4) + b"\1\1\1\xff" * 3) * 10], (10, 0xFFFFFF))
        for data, most in [(COLOR_PNG[:33] + texts + COLOR_PNG[33:], 8), (blank + png_chunk(b"IDAT", packed), 8),
                           (runs, 8), (pnm(b"P5", b"", 255, (60000, 60000)), 8), (jpeg_scans(303), 8)]:
            self.files(**{"in": data})
            self.assertLess(peak("tiff", "in", "out.tif", cwd=self.dir) - own, most << 20, data[:40])
        with open(self.dir / "in", "wb") as sparse:  # with values of 1 GiB that no picture needs
            sparse.write(b"II*\0\x08\0\0\0\3\0" + b"".join(struct.pack("<2H2I", *entry) for entry in [
                (256, 4, 1, 9), (257, 4, 1, 9), (700, 1, 1 << 30, 4096)]) + bytes(4))
            sparse.truncate((1 << 30) + 4096)
        self.assertLess(peak("tiff", "in", "out.tif", cwd=self.dir) - own, 80 << 20)
        (self.dir / "in").unlink()
        size, width, height = 3 * 4096 * 3000, 4096, 3000
        self.files(ppm=pnm(b"P6", bytes(size), 255, (width, height)))
        for words in ["ppm", "tif"], ["tif", "out.tif"]:
            self.assertLess(peak("tiff", *words, cwd=self.dir) - own, 1.2 * size)

    def test_malformed_pictures(self):
        row = bytes([2, 2, 0, W])
        for data, *word in [
                (b"GIF89a", "no PNG"), (pnm(b"P6", RGB, 0), "damaged"), (b"P2 1 1 70000 1", "at most 65535"),
                (pnm(b"P2", b"9 9", 8, (1, 2)), "above"), (b"P2 1 1 9 9x", '"9x"'), (b"P1 1 1 2", "no bit"), (b"P7\nWIDTH 1\nHEIGHT 1\nDEPTH 5\nMAXVAL 9\nENDHDR\nabcde", "at most 4"),
                (pnm(b"P5", b"", 255, (2**31 - 1, 2**31 - 1)), "MiB"), (pnm(b"P5", b"", 255, (9000, 9000)), "needs 78 MiB"),
                (pnm(b"P5", b"x", 255, (0, 1)), "no pixels"), (pnm(b"P5", b"x", 255, (1, 0)), "no pixels"), (COLOR[:-1],),
                (PIXELS[:-1],), (PLANES[:-1],), (RAMP[:-1],), (radiance([b"\1\1\1\1", bytes(4 * W * H)]), "run-length"),
                (radiance([b"\5\5\5\x09\1\1\1", row[3:]], (1, W)), "run-length"), (radiance([row, bytes(400)]), "run-length"),
                (radiance([row, b"\xff\1" * 40]), "run-length"), (PLANES.replace(row, b"\2\2\0\x87"), "width"),
                (PIXELS.replace(b"-Y", b"-Z"), "resolution line"), (PIXELS.replace(b"rgbe", b"xyze"), "RGB"),
                (PIXELS.replace(b" 134\n", b" 999999999\n"),), (PIXELS.replace(b"-Y 5", b"-Y 99999999"), "MiB")]:
            self.refuse(data, *word)
            self.refuse(data, line="hdr in")
        for line in ["--max-memory 1K", "--max-memory 900", "--max-memory 2K --depth float"]:
            self.refuse(COLOR, "--max-memory", "tiff in out.tif " + line)
        self.good("tiff in out.tif --depth float --max-memory 8K")
        self.refuse(jpeg_scans(101), "100 scans")

    def check_brightness(self, name, values, black, not_finite):
        found = json.loads(self.good("hdr --json " + name))
        self.assertEqual(floats(found.pop(key) for key in ("minimum", "maximum", "mean")),
                         floats([min(values), max(values), sum(values) / len(values)]))
        self.assertAlmostEqual(found.pop("stops"), math.log2(max(values) / min(values)))
        stops = [math.frexp(v)[1] - 1 for v in values]
        self.assertEqual(found, {**found, "file": name, "black": black, "notFinite": not_finite, "firstStop": min(stops),
                                 "pixelsOfStops": [stops.count(n) for n in range(min(stops), max(stops) + 1)]})

    def test_brightness_of_a_picture(self):
        values = [(19 * r + 183 * g + 54 * b >> 8) * 2.0 ** (e - 136) * (e > 0) for row in ROWS for r, g, b, e in row]
        black = values.count(0)
        self.files(planes=PLANES, dark=radiance([bytes(4 * W * H)]), ints=COLOR)
        self.check_brightness("planes", [v for v in values if v], black, 0)
        numbers = [0.0, -3.0, 1.0, 0.25, 1e-40, 3.0, 65504.0, float("inf"), float("nan")] + 60 * [0.26]
        shown = struct.unpack("<65f", floats([v for v in numbers if 0 < v < 1e30]))
        self.files(pfm=pfm(numbers, "<"), exr=exr([[(0.5, 2.0, 8.0), (4.0, 4.0, 4.0), (0.5, -0.5, 0.0)]]))
        self.check_brightness("pfm", shown, 2, 2)
        self.good("tiff exr exr.tif")
        for name in "exr", "exr.tif":
            self.check_brightness(name, [(19 * 0.5 + 183 * 2 + 54 * 8) / 256, 4.0], 1, 0)
        self.bad("integers", "hdr ints")
        dark = json.loads(self.good("hdr --json dark"))
        self.assertEqual((dark["stops"], dark["black"], dark["pixelsOfStops"]), (None, W * H, []))
        self.assertIn("All pixels are black", self.good("hdr dark --plot dark.png"))
        told = self.good("hdr pfm --plot plot.png").splitlines()
        self.assertEqual([line for line in told[8:] if "0.00 %" not in line], [  # the brightest stop first
            "  Stop  Brightness    Pixels", "   +15   3.277e+04    1.45 % #", "   ...", "    +1           2    1.45 % #",
            "    +0           1    1.45 % #", "    -2        0.25   88.41 % " + 44 * "#", "   ...",
            "  -133   9.184e-41    1.45 % #", "  black               2.90 %"])
        self.assertEqual([line for line in told if line.endswith(" ")], [])
        self.assertEqual((told[2], len(told)), ("  Not finite     2 pixels", 22))
        self.files(ramp=RAMP)
        self.assertIn("\n  Not finite     1 pixel\n", self.good("hdr ramp"))
        plot = (self.dir / "plot.png").read_bytes()
        self.assertEqual(run(LFMETA, "hdr", "pfm", "--plot", "-", cwd=self.dir), (0, plot, ""))
        for name, picture in ("pfm", 414028658), ("planes", 3048153496):  # as they were when a person looked at them
            plot = run(LFMETA, "hdr", name, "--plot", "-", cwd=self.dir)[1]
            self.assertEqual(zlib.crc32(convert(plot, "-depth 8 rgb:-")), picture)


if __name__ == "__main__":
    unittest.main()
