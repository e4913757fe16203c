"""The examples, run on the sample photograph.   examples_test.py FOLDER, where they were built"""
import os, pathlib, subprocess, sys, tempfile, unittest

from support.photos import plain, profile

BUILT = sys.argv.pop(1)
ROOT = pathlib.Path(__file__).resolve().parents[1]
PHOTO = str(ROOT / "examples" / "photo.jpg")
TOLD = "Alpenglow M2, 1/250 s, f/5.6, ISO 100\n"


class Examples(unittest.TestCase):
    def test_print_what_they_say_they_do(self):
        icc = profile(b"RGB ", plain(b"sRGB IEC61966-2.1"))
        with tempfile.TemporaryDirectory() as folder:
            os.chdir(folder)
            pathlib.Path("srgb.icc").write_bytes(icc)
            for line, status, out, err in [
                    (["read", PHOTO], 0, TOLD, ""),
                    (["read", "none"], 1, "", "The photograph cannot be read (result -1).\n"),
                    (["settings", "a.xmp"], 0, "method 4, strength 72.5, white clip 0.604\n", ""),
                    (["settings", "no/a.xmp"], 1, "", "no/a.xmp cannot be written.\n"),
                    (["finished_tiff", PHOTO, "a.tif"], 0, "a.tif: 320 x 200 pixels, Alpenglow M2\n", ""),
                    (["finished_tiff", "none", "b.tif"], 1, "", "none cannot be read (result -1).\n"),
                    (["profile", "a.tif", "srgb.icc"], 1, "", "a.tif has no profile that could be replaced.\n"),
                    (["host", PHOTO, "b.tif"], 0, "Alpenglow M2: 1/250 s, ISO 100\n"
                     "b.tif: Alpenglow M2, method 4, strength 50.0\nb.tif: profile replaced\n", ""),
                    (["host", "none", "c.tif"], 1, "", "reading the photograph: result -1\n"),
                    (["profile", "b.tif", "srgb.icc"], 0, "b.tif: sRGB, %d bytes\n" % len(icc), ""),
                    (["brightness"], 0, "from 1 to 724992, mean 103659: 19.5 stops\n", "")]:
                line[0] = BUILT + "/example_" + line[0]
                done = subprocess.run(line, capture_output=True, text=True)
                self.assertEqual((done.returncode, done.stdout, done.stderr), (status, out, err), line)
            told = subprocess.run("exiftool -s3 -Model -ExposureTime -Keywords -BitsPerSample -XResolution a.tif".split(),
                                  capture_output=True, text=True).stdout.split("\n")
            self.assertEqual(told, ["Alpenglow M2", "1/250", "lake", "16 16 16", "300", ""])

    def test_the_readme_shows_the_first(self):
        program = (ROOT / "examples" / "read.c").read_text().split("\n", 1)[1]
        self.assertIn("```c\n" + program + "```\n", (ROOT / "README.md").read_text())


if __name__ == "__main__":
    unittest.main()
