"""lfmeta tiff --like, exif and icc: metadata into finished files. Judges are ExifTool and libtiff's tools."""
import json, struct, subprocess, unittest

from support.photos import plain, profile, tiff
from support.tool import *

UPWARD = b"#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n+Y %d +X %d\n" % (H, W) + b"".join(
    RGB[i:i + 3] + b"\x80" for i in range(0, len(RGB), 3))


def localized(*texts):
    records, data = b"", b""
    for language, text in texts:
        records += struct.pack(">2s2sII", language, b"XX", len(text.encode("utf-16-be")),
                               16 + 12 * len(texts) + len(data))
        data += text.encode("utf-16-be")
    return b"mluc" + struct.pack(">III", 0, len(texts), 12) + records + data


ICC = profile(b"RGB ", plain(b"Alpine RGB"))


class ToolMetadata(ToolTest):
    def test_profiles_of_tiff_files(self):
        longer = profile(b"RGB ", localized((b"de", "Bergsee"), (b"en", "Lake \U0001d11e")))
        self.files(icc=ICC, longer=longer, gray=profile(b"GRAY", plain(b"", "Grau ü")), readme=b"# " + bytes(500),
                   cut=ICC[:-1], tail=ICC + b"\0", link=profile(b"RGB ", plain(b"x"), b"link"),
                   **{"gray.pgm": pnm(b"P5", RGB[::3])})
        self.good("tiff in rgb.tif --icc icc")
        self.good("tiff gray.pgm gray.tif --icc gray")
        subprocess.run("convert -quiet rgb.tif -strip -define tiff:endian=msb msb.tif; convert -quiet rgb.tif -strip"
                       " lsb.tif; convert -quiet rgb.tif -strip tiff64:big.tif", shell=True, cwd=self.dir)
        for file, described, space in [("rgb.tif", "Alpine RGB", "RGB"), ("gray.tif", "Grau ü", "GRAY")]:
            told = json.loads(self.good("icc --json " + file))["profile"]
            self.assertEqual([*told.values()][:4], [described, "2.1.0", "mntr", space])
        self.assertIn("Alpine RGB\n  Kind     RGB, mntr, version 2.1.0\n  Size     %d bytes" % len(ICC),
                      self.good("icc rgb.tif"))
        for file in ["msb.tif", "lsb.tif", "rgb.tif", "gray.tif"]:  # the first two have none before
            icc = "gray" if file == "gray.tif" else "longer"
            before, pixels = (self.dir / file).read_bytes(), self.run_line("convert -quiet %s rgb:-" % file)[1]
            for twice in range(2):  # the same once more: nothing to do
                self.good("icc %s --set %s" % (file, icc))
                after = (self.dir / file).read_bytes()
                self.assertEqual((after[:4], after[8:len(before)]), (before[:4], before[8:]))
                self.assertLess(len(after) - len(before), len(longer) + 400)
                self.assertEqual(int.from_bytes(after[4:8], "big" if after[:2] == b"MM" else "little") % 2, 0)
            self.assertEqual(self.run_line("exiftool -b -ICC_Profile " + file)[1], (self.dir / icc).read_bytes())
            self.assertEqual((self.run_line("convert -quiet %s rgb:-" % file)[1], self.run_line("tiffinfo " + file)[0]),
                             (pixels, 0))
        self.assertIn("Lake \U0001d11e", self.good("icc msb.tif"))
        self.files(short=tiff({0x106: 2, 0x8773: (7, 12, b"x" * 12)}))  # which ends before its class
        told = json.loads(self.good("icc --json short"))["profile"]
        self.assertEqual([*told.values()], ["", "120.7.8", "", "", 12])
        for expected, line in [
                ("is no ICC profile", "icc rgb.tif gray.tif --set readme"), ("cut short", "icc rgb.tif --set cut"),
                ("other bytes", "icc rgb.tif --set tail"), ("a class", "icc rgb.tif --set link"),
                ("for GRAY, and the image is RGB", "icc rgb.tif --set gray"), ("for RGB, and", "icc gray.tif --set icc"),
                ("the picture is RGB", "tiff in new --icc gray"), ("picture is gray", "tiff gray.pgm new --icc icc"),
                ("BigTIFF", "icc big.tif --set icc"), ("no TIFF", "icc photo.jpg --set icc"), ("no TIFF", "icc in"),
                ("no ICC profile", "tiff in new --icc readme")]:
            self.bad(expected, line)
        status, out, _ = run(LFMETA, *"icc --json rgb.tif in gray.tif".split(), cwd=self.dir)
        self.assertEqual((status, [json.loads(line)["file"] for line in out.splitlines()]), (1, ["rgb.tif", "gray.tif"]))

    def test_profiles_set_at_once_and_without_room(self):
        profiles = {str(i): profile(b"RGB ", plain(b"%d" % i * 20000)) for i in range(8)}
        self.files(**profiles)
        self.good("tiff in in.tif")
        started = [subprocess.Popen([LFMETA, "icc", "in.tif", "--set", name], cwd=self.dir) for name in profiles]
        self.assertEqual([one.wait() for one in started], [0] * 8)
        self.assertIn(self.run_line("exiftool -b -ICC_Profile in.tif")[1], profiles.values())
        self.assertEqual(len([name for name, icc in profiles.items() if icc in (self.dir / "in.tif").read_bytes()]), 8)
        size = (self.dir / "in.tif").stat().st_size
        self.files(icc=ICC)
        self.bad("as it was", "icc in.tif --set icc", "env --ignore-signal=XFSZ prlimit --fsize=%d " % (size + 100))

    def test_finished_tiff(self):
        self.files(icc=ICC, up=UPWARD)
        self.good("tiff in in.tif --like photo.jpg --keyword one --keyword two --icc icc --resolution 240")
        told = self.exiftool("photo.jpg", TAGS + "-Keywords")
        self.assertEqual(self.exiftool("in.tif", TAGS + "-Keywords -XResolution"),
                         {**told, "Keywords": told["Keywords"] + ["one", "two"], "XResolution": 240})
        packets = [self.run_line("exiftool -b -XMP " + name)[1] for name in ("photo.jpg", "in.tif")]
        made = packets[1].replace(b"</rdf:Description>\n\n<rdf:Description rdf:about=''\nxmlns:tiff='http://ns.adobe.com/"
                                  b"tiff/1.0/'>\n<tiff:Make>Alpenglow</tiff:Make>\n", b"")
        self.assertEqual(made, packets[0])
        self.assertEqual(self.run_line("tiffinfo in.tif")[0], 0)
        self.assertIn("Alpine RGB", self.good("icc in.tif"))
        self.good("tiff up up --force --method 4 --set Boost=3 --like photo.jpg --depth half")
        self.good("exif up block.bin")
        self.assertEqual(self.exiftool("block.bin"), {**self.exiftool("photo.jpg"), "Orientation": 4})
        self.assertIn("Boost                       3", self.good("settings show up"))
        self.assertEqual(self.exiftool("up", "-IFD0:Orientation# -Software -SampleFormat# -BitsPerSample"), {
            "Orientation": 4, "Software": "Lumenforge Merge To 32-bit HDR", "SampleFormat": "3 3 3",
            "BitsPerSample": "16 16 16"})
        for limit, stage in [(0, "header"), (100, "pixels"), (2020, "directory")]:
            self.bad(stage, "tiff in new", "env --ignore-signal=XFSZ prlimit --fsize=%d " % limit)
        for expected, line in [
                ("no ICC profile", "icc up"), ("cannot be created", "tiff in none/up"),
                ("no JPEG, TIFF or PSD", "tiff in up --like in")]:
            self.bad(expected, line)
        self.bad("65535", "tiff in up --keyword " + "x" * 65536, status=2)

    def test_takes_all_that_a_photograph_says(self):
        exif = {"Make": "Other", "Artist": "Zoë & <Co>", "Copyright": "(c) 2021", "ImageDescription": "an image",
                "Orientation": 6, "Software": "Raw 2", "LensModel": "50 mm f/2", "LensInfo": "50 50 2 2",
                "ExposureCompensation": -2 / 3, "Flash": 25, "DateTimeOriginal": "2021:06:05 07:14:59",
                "SubSecTimeOriginal": "37", "OffsetTimeOriginal": "+02:00", "UserComment": "hello", "MeteringMode": 5,
                "SerialNumber": "0042", "GPSImgDirection": 12.5, "GPSImgDirectionRef": "T", "XPTitle": "w",
                "ExposureTime": 0.01, "Model": "M", "GPSLatitude": 1.5, "GPSLatitudeRef": "S"}
        words = ["-EXIF:%s=%s" % item for item in exif.items()] + [
            "-XMP-dc:Title=Lake", "-XMP:Rating=4", "-XMP-rdf:About=uuid:1", "-XMP-dc:Description=kept", "-IPTC:Keywords=lake"]
        expected = {"Make": "Other", "Creator": "Zoë & <Co>", "Rights": "(c) 2021", "Description": "kept", "Rating": 4,
                    "CreatorTool": "Raw 2", "LensModel": "50 mm f/2", "Lens": "50 mm f/2", "LensInfo": "50 50 2 2",
                    "ExposureCompensation": -2 / 3, "FlashFired": True, "FlashMode": 3, "FlashReturn": 0,
                    "DateTimeOriginal": "2021:06:05 07:14:59.37+02:00", "UserComment": "hello", "MeteringMode": 5,
                    "SerialNumber": "0042", "GPSImgDirection": 12.5, "GPSImgDirectionRef": "T", "Title": "Lake", "About": "uuid:1",
                    "FlashFunction": False, "FlashRedEyeMode": False, "XMPToolkit": "Image::ExifTool 12.57"}
        for name in ["a.jpg", "a.tif", "a.psd", "bare.jpg", "turned.jpg"]:
            self.run_line("convert -size 8x8 xc:red -strip " + name)
        for name in ["a.jpg", "a.tif", "a.psd"]:
            status, _, err = run("exiftool", "-q", "-overwrite_original", "-n", *words, name, cwd=self.dir)
            self.assertEqual(status, 0, err)
            _, _, err = run(LFMETA, *("tiff in %s.tif --like %s --keyword zürich --keyword x" % (name, name)).split(),
                            cwd=self.dir)
            self.assertEqual(err, "lfmeta: %s: not taken: Windows title\n" % name)
            told = self.exiftool(name + ".tif", "-n -XMP:all")
            self.assertAlmostEqual(told.pop("ExposureCompensation"), expected["ExposureCompensation"], 4)
            self.assertEqual({**told, "ExposureCompensation": -2 / 3, "XMPToolkit": expected["XMPToolkit"]}, expected)
            self.assertNotIn(b"rdf:about=''", (self.dir / (name + ".tif")).read_bytes())
            self.assertEqual(
                self.exiftool(name + ".tif", "-IFD0:Orientation# -Keywords -CodedCharacterSet -EXIF:GPSLatitude#"),
                {"Orientation": 6, "Keywords": ["lake", "zürich", "x"], "CodedCharacterSet": "UTF8", "GPSLatitude": 1.5})
        self.run_line("exiftool -q -overwrite_original -XMP-dc:Title=%s -IPTC:Keywords=lake bare.jpg" % ("Lake" * 50))
        self.good("tiff in bare.tif --like bare.jpg")
        self.assertEqual(self.exiftool("bare.tif", "-XMP:Title -Keywords"), {"Title": "Lake" * 50, "Keywords": "lake"})
        self.run_line("exiftool -q -overwrite_original -charset exif=latin -n -Orientation=3 -EXIF:Artist='<Zoë' turned.jpg"
                      " -EXIF:XPKeywords=a -EXIF:TargetPrinter=b")
        done = run(LFMETA, *"tiff turned.jpg new.tif --like turned.jpg --method 14".split(), cwd=self.dir)
        self.assertEqual(done, (0, b"", "lfmeta: turned.jpg: not taken: 0x0151, Windows keywords\n"))
        self.assertEqual(self.exiftool("new.tif", "-n -IFD0:Orientation -XMP:Creator -XMP:Method"),
                         {"Orientation": 3, "Creator": "<Zoë", "Method": "Average"})
        self.files(huge=tiff({0x13B: "m" * 65536}))
        self.assertEqual(run(LFMETA, "tiff", "in", "new.tif", "--like", "huge", cwd=self.dir), (0, b"", "lfmeta: huge: not taken: dc:creator\n"))
        run(LFMETA, *"tiff in other.tif --like a.jpg --method 13".split(), cwd=self.dir)
        self.assertEqual(self.exiftool("other.tif", "-n -XMP:Title -XMP:Method"), {"Title": "Lake", "Method": "Fusion/2 images"})
        self.good("tiff in upright.tif")
        run(LFMETA, *"tiff upright.tif new.tif --like a.jpg".split(), cwd=self.dir)  # the photograph's orientation counts
        self.assertEqual(self.exiftool("new.tif", "-n -IFD0:Orientation"), {"Orientation": 6})
        self.good("tiff in old.tif --like photo.jpg --method 1")  # other settings than the photograph's
        told = json.loads(self.good("settings show --json old.tif"))
        self.assertEqual((told["sets"], told["method"]), ([1], 1))

    def test_announces_the_character_set_of_keywords(self):
        def iptc(*datasets):
            return b"".join(b"\x1c" + bytes(where) + struct.pack(">H", len(data)) + data for where, data in datasets)
        utf8, keyword, version = ((1, 90), b"\x1b%G"), ((2, 25), "zürich".encode()), ((2, 0), b"\0\2")
        for i, (present, word, expected) in enumerate([
                ([], "zürich", [utf8, version, keyword]),
                ([((1, 0), b"\0\4"), version], "zürich", [((1, 0), b"\0\4"), utf8, version, keyword]),
                ([utf8, version], "zürich", [utf8, version, keyword]),
                ([version, ((2, 5), "ü".encode())], "zürich", [utf8, version, ((2, 5), "ü".encode()), keyword]),
                ([version, ((2, 5), b"\xfc")], "a", [version, ((2, 5), b"\xfc"), ((2, 25), b"a")]),
                ([version, ((2, 5), b"\xfc")], "zürich", None), ([((1, 90), b"\x1b.A"), version], "zürich", None)]):
            block = iptc(*present)
            self.files(iptc=block)
            self.run_line("convert -size 1x1 xc:red a.tif")
            if present:
                self.run_line("exiftool -q -overwrite_original '-IPTC<=iptc' a.tif")
            line = "tiff in %d.tif --like a.tif --keyword %s" % (i, word)
            if expected is None:
                self.bad("another character set", line)
                continue
            self.good(line)
            self.assertIn(iptc(*expected), (self.dir / ("%d.tif" % i)).read_bytes())
        self.assertEqual(run(LFMETA, "tiff", "in", "new.tif", "--keyword", b"\xfc", cwd=self.dir)[0], 2)

    def test_keywords_alone_and_the_exposure_of_a_description(self):
        self.good("tiff in in --force --keyword abcd --keyword efghijk")
        self.assertTrue((self.dir / "in").read_bytes().endswith(b"\2\x19\0\4abcd\x1c\2\x19\0\7efghijk"))
        self.bad("nothing", "exif in block.bin")
        self.run_line("exiftool -overwrite_original in '-ImageDescription=a, b, c, d, e, f, g, 1/125s, R60 G60 B60'")
        self.good("exif in block.bin")
        self.assertEqual(self.exiftool("block.bin", "-ExposureTime -ISO"), {"ExposureTime": "1/125", "ISO": 800})

if __name__ == "__main__":
    unittest.main()
