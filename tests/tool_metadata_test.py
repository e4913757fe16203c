"""lfmeta tiff --like, exif and icc: metadata into finished files. Judges are ExifTool and libtiff's tools."""
import unittest

from support.tool import *

UPWARD = b"#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n+Y %d +X %d\n" % (H, W) + b"".join(
    RGB[i:i + 3] + b"\x80" for i in range(0, len(RGB), 3))


class ToolMetadata(ToolTest):
    def test_finished_tiff(self):
        icc = bytes(16) + b"RGB " + bytes(108)
        self.files(icc=icc, longer=icc + b"tail", gray=icc.replace(b"RGB ", b"GRAY"), up=UPWARD)
        self.good("tiff in in.tif --like photo.jpg --keyword one --keyword two --icc icc --resolution 240")
        told = self.exiftool("photo.jpg", TAGS + "-Keywords")
        self.assertEqual(self.exiftool("in.tif", TAGS + "-Keywords -XResolution"),
                         {**told, "Keywords": told["Keywords"] + ["one", "two"], "XResolution": 240})
        self.assertEqual(*[self.run_line("exiftool -b -XMP " + name)[1] for name in ("photo.jpg", "in.tif")])
        self.assertEqual(self.run_line("tiffinfo in.tif")[0], 0)
        self.assertIn("128 bytes", self.good("icc in.tif"))
        self.good("icc in.tif --set longer")
        self.assertIn("132 bytes", self.good("icc in.tif"))
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
                ("no RGB profile", "tiff in new --icc gray"), ("profile entry", "icc up --set icc"),
                ("no ICC profile", "icc up"), ("little-endian", "icc in"), ("cannot be created", "tiff in none/up"),
                ("no JPEG, TIFF or PSD", "tiff in up --like in")]:
            self.bad(expected, line)
        self.bad("65535", "tiff in up --keyword " + "x" * 65536, status=2)

    def test_keywords_alone_and_the_exposure_of_a_description(self):
        self.good("tiff in in --force --keyword abcd --keyword efghijk")
        self.assertTrue((self.dir / "in").read_bytes().endswith(b"\2\x19\0\4abcd\x1c\2\x19\0\7efghijk"))
        self.bad("nothing", "exif in block.bin")
        self.run_line("exiftool -overwrite_original in '-ImageDescription=a, b, c, d, e, f, g, 1/125s, R60 G60 B60'")
        self.good("exif in block.bin")
        self.assertEqual(self.exiftool("block.bin", "-ExposureTime -ISO"), {"ExposureTime": "1/125", "ISO": 800})

if __name__ == "__main__":
    unittest.main()
