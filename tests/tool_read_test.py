"""lfmeta read, run as a user runs it. The judge of what a photograph says is ExifTool."""
import json, os, pathlib, pty, shutil, subprocess, tempfile, unittest

from support.tool import EXAMPLE as PHOTO, LFMETA, run

# Our names that differ from ExifTool's by more than the first letter, and those that do not.
NAMES = {"iso": "ISO", "focalLength35mm": "FocalLengthIn35mmFormat",
         "thumbOffset": "ThumbnailOffset", "thumbLength": "ThumbnailLength"}
for name in ["model", "lens", "dateTimeOriginal", "exposureTime", "fNumber", "focalLength",
             "orientation", "focalPlaneXResolution", "focalPlaneResolutionUnit"]:
    NAMES[name] = name[0].upper() + name[1:]


def read(*words):
    status, out, err = run(LFMETA, "read", "--json", *words)
    return status, [json.loads(line) for line in out.splitlines()], err


class ToolRead(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.dir = pathlib.Path(folder.name)

    def test_says_of_the_example_what_exiftool_says(self):
        status, [ours], err = read(PHOTO)
        self.assertEqual((status, err), (0, ""))
        told = json.loads(run("exiftool", "-json", "-n", "-all", PHOTO)[1])[0]
        self.assertEqual({name: ours[name] for name in NAMES},
                         {name: told[theirs] for name, theirs in NAMES.items()})
        for name in ["latitude", "longitude", "altitude"]:
            self.assertAlmostEqual(ours["gps"][name], told["GPS" + name.title()], 9)
        self.assertEqual((ours["gps"]["gpsDateStamp"], ours["MetadataBuf"]["exposureTime"]),
                         (told["GPSDateStamp"], [100, 24999]))
        photo = PHOTO.read_bytes()
        self.assertEqual(photo[ours["iptcOffset"]:][:ours["iptcLength"]],
                         run("exiftool", "-b", "-IPTC", PHOTO)[1])
        self.assertTrue(photo[ours["xmpOffset"]:].startswith(b"<?xpacket begin"))
        person = run(LFMETA, "read", PHOTO)[1].decode()
        for text in ["Alpenglow M2, 16-35mm f/4 Wide", "1/250 s, f/5.6, ISO 100", "24 mm, 36 mm",
                     "-50.942389, -73.407028", "Tone Balancer (method 4)", "2021:06:05 07:14:59"]:
            self.assertIn(text, person)

    def test_goes_on_behind_a_file_that_fails_and_keeps_the_order(self):
        cut, good, none, missing, pipe, sub = named = [
            self.dir / name for name in ["c.jpg", "a.txt", "b.jpg", "missing", "pipe", "sub"]]
        cut.write_bytes(PHOTO.read_bytes()[:3000])
        shutil.copy(PHOTO, good)  # a photograph by its signature, not its name
        none.write_bytes(b"no photograph")
        os.mkfifo(pipe)
        sub.mkdir()
        shutil.copy(PHOTO, sub / "bad\x1b\n.jpg")
        status, told, err = read("-j", 4, *named)
        self.assertEqual([(t["file"], t["iso"], t["damage"] is None) for t in told],
                         [(str(cut), 100, False), (str(good), 100, True)])  # and what had been read
        self.assertEqual(status, 1)
        self.assertRegex(err, r"\A.*c.jpg.*ends before.*\n.*b.jpg.*no JPEG, TIFF or PSD.*\n"
                         r".*missing.*No such file.*\n.*pipe.*not a regular file.*\n.*sub.*-r.*\n\Z")
        cut.unlink()
        status, told, err = read("-r", self.dir)
        self.assertEqual((status, len(told), err), (0, 2, ""))
        for count in (1, 3):  # more files than one stretch, with and without helpers
            told = read("-j", count, *[PHOTO, good] * 300)[1]
            self.assertEqual([t["file"] for t in told], [str(PHOTO), str(good)] * 300)
        self.assertNotIn(b"\x1b", run(LFMETA, "read", "-r", self.dir)[1])

    def test_shows_what_is_broken_as_far_as_it_means_something(self):
        photo, broken = PHOTO.read_bytes(), self.dir / "broken.jpg"
        for whole, part in [(b"Alpenglow M2", b"\x1b]0;\xff\xc2\x9bM2!\n\0"),
                            (b"\0\0\0\x32" + b"\0\0\0\1", b"\0\0\0\x32" + b"\0\0\0\0"),
                            (b"\0\0\x0c\xce", b"\x7f\0\x0c\xce")]:
            self.assertEqual(photo.count(whole), 1, whole)
            photo = photo.replace(whole, part)
        broken.write_bytes(photo)
        status, [told], _ = read("--thumbnail", self.dir, broken)
        self.assertEqual((status, os.listdir(self.dir), told["thumbLength"], told["model"],
                          told["gps"]["latitude"], told["gps"]["gpsLatitude"][:2]),
                         (1, ["broken.jpg"], 0x7F000CCE, "\x1b]0;\ufffd\x9bM2!\n", None, [50, 0]))
        person = run(LFMETA, "read", broken)[1]
        self.assertIn(rb"Camera       \x1b]0;\xff\xc2\x9bM2!\x0a,", person)
        self.assertIn(b"Position     214.5 m", person)

    def test_shows_progress_where_a_person_waits(self):
        terminal, far = pty.openpty()
        subprocess.run([LFMETA, "read", *[PHOTO] * 301], stdout=subprocess.DEVNULL, stderr=far)
        os.close(far)
        shown = b""
        with self.assertRaises(OSError):  # the terminal's end
            while True:
                shown += os.read(terminal, 4096)
        os.close(terminal)
        self.assertEqual(shown, b"\r128 of 301 files\r256 of 301 files\r\x1b[K")

    def test_writes_thumbnails_and_no_file_over_another(self):
        thumbnail = run("exiftool", "-b", "-ThumbnailImage", PHOTO)[1]
        (self.dir / "photo.jpg").write_bytes(b"mine")
        self.assertEqual(read("--thumbnail", self.dir, PHOTO, PHOTO)[0], 0)
        self.assertEqual({path.name: path.read_bytes() for path in self.dir.iterdir()},
                         {"photo.jpg": b"mine", "photo-2.jpg": thumbnail, "photo-3.jpg": thumbnail})


if __name__ == "__main__":
    unittest.main()
