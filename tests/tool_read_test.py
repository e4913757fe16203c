"""lfmeta read, run as a user runs it. The judge of what a photograph says is ExifTool. Needs LFMETA,
the tool to run."""
import json, os, pathlib, pty, shutil, subprocess, tempfile, unittest

LFMETA = os.environ["LFMETA"]
PHOTO = pathlib.Path(__file__).resolve().parent.parent / "examples" / "photo.jpg"


def run(*words):
    done = subprocess.run([str(word) for word in words], capture_output=True)
    return done.returncode, done.stdout, done.stderr.decode()


class ToolRead(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.folder)

    def test_says_of_the_example_what_exiftool_says(self):
        status, out, err = run(LFMETA, "read", "--json", PHOTO)
        self.assertEqual((status, err, out.count(b"\n")), (0, "", 1))
        ours = json.loads(out)
        told = json.loads(run("exiftool", "-json", "-n", "-all", PHOTO)[1])[0]
        same = {"model": "Model", "lens": "Lens", "dateTimeOriginal": "DateTimeOriginal",
                "exposureTime": "ExposureTime", "fNumber": "FNumber", "iso": "ISO",
                "focalLength": "FocalLength", "focalLength35mm": "FocalLengthIn35mmFormat",
                "orientation": "Orientation", "thumbOffset": "ThumbnailOffset",
                "focalPlaneXResolution": "FocalPlaneXResolution",
                "focalPlaneResolutionUnit": "FocalPlaneResolutionUnit",
                "thumbLength": "ThumbnailLength"}
        self.assertEqual({ours_: ours[ours_] for ours_ in same},
                         {ours_: told[theirs] for ours_, theirs in same.items()})
        for ours_, theirs in [("latitude", "GPSLatitude"), ("longitude", "GPSLongitude"),
                              ("altitude", "GPSAltitude")]:
            self.assertAlmostEqual(ours["gps"][ours_], told[theirs], 9)
        self.assertEqual(ours["gps"]["gpsDateStamp"], told["GPSDateStamp"])
        self.assertEqual(ours["MetadataBuf"]["exposureTime"], [100, 24999])
        photo = PHOTO.read_bytes()
        iptc = photo[ours["iptcOffset"]:][:ours["iptcLength"]]
        self.assertEqual(iptc, run("exiftool", "-b", "-IPTC", PHOTO)[1])
        self.assertTrue(photo[ours["xmpOffset"]:].startswith(b"<?xpacket begin"))
        person = run(LFMETA, "read", PHOTO)[1].decode()
        for text in ["Alpenglow M2, 16-35mm f/4 Wide", "1/250 s, f/5.6, ISO 100", "24 mm, 36 mm",
                     "-50.942389, -73.407028", "Tone Balancer (method 4)", "2021:06:05 07:14:59"]:
            self.assertIn(text, person)

    def test_goes_on_behind_a_file_that_fails_and_keeps_the_order(self):
        shutil.copy(PHOTO, self.folder / "a.txt")  # a photograph by its signature, not its name
        (self.folder / "b.jpg").write_bytes(b"no photograph")
        (self.folder / "c.jpg").write_bytes(PHOTO.read_bytes()[:3000])
        (self.folder / "sub").mkdir()
        shutil.copy(PHOTO, self.folder / "sub" / "bad\x1b\n.jpg")
        os.mkfifo(self.folder / "pipe")
        named = [self.folder / name
                 for name in ["c.jpg", "a.txt", "b.jpg", "missing", "pipe", "sub"]]
        status, out, err = run(LFMETA, "read", "--json", "-j", 4, *named)
        self.assertEqual(status, 1)
        told = [json.loads(line) for line in out.splitlines()]  # what had been read of c.jpg, too
        self.assertEqual([(t["file"], t["iso"], t["damage"] is None) for t in told],
                         [(str(named[0]), 100, False), (str(named[1]), 100, True)])
        lines = err.splitlines()
        for line, name, text in zip(lines, ["c.jpg", "b.jpg", "missing", "pipe", "sub"],
                                    ["ends before", "no JPEG, TIFF or PSD", "No such file",
                                     "not a regular file", "-r"]):
            self.assertIn(name, line)
            self.assertIn(text, line)
        self.assertEqual(len(lines), 5, err)
        (self.folder / "c.jpg").unlink()
        status, out, err = run(LFMETA, "read", "-r", "--json", self.folder)
        self.assertEqual((status, err, out.count(b"\n")), (0, "", 2))
        for count in (1, 3):  # more files than one stretch, with and without helpers
            status, out, _ = run(LFMETA, "read", "--json", "-j", count, *[PHOTO, named[1]] * 300)
            files = [json.loads(line)["file"] for line in out.splitlines()]
            self.assertEqual(files, [str(PHOTO), str(named[1])] * 300)
        self.assertNotIn(b"\x1b", run(LFMETA, "read", "-r", self.folder)[1])

    def test_shows_what_is_broken_as_far_as_it_means_something(self):
        broken = self.folder / "broken.jpg"
        photo = PHOTO.read_bytes()
        for whole, part in [(b"Alpenglow M2", b"\x1b]0;\xff\xc2\x9bM2!\n\0"),
                            (b"\0\0\0\x32" + b"\0\0\0\1", b"\0\0\0\x32" + b"\0\0\0\0"),
                            (b"\0\0\x0c\xce", b"\x7f\0\x0c\xce")]:
            self.assertEqual(photo.count(whole), 1, whole)
            photo = photo.replace(whole, part)
        broken.write_bytes(photo)
        status, out, _ = run(LFMETA, "read", "--json", "--thumbnail", self.folder, broken)
        told = json.loads(out)
        self.assertEqual((status, told["thumbLength"], os.listdir(self.folder)),
                         (1, 0x7F000CCE, ["broken.jpg"]))
        self.assertEqual((told["gps"]["latitude"], told["gps"]["gpsLatitude"][:2]), (None, [50, 0]))
        self.assertEqual(told["model"], "\x1b]0;\ufffd\x9bM2!\n")
        person = run(LFMETA, "read", broken)[1]
        self.assertIn(b"Camera       ?]0;\xff??M2!?,", person)
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
        (self.folder / "photo.jpg").write_bytes(b"mine")
        self.assertEqual(run(LFMETA, "read", "--thumbnail", self.folder, PHOTO, PHOTO)[0], 0)
        self.assertEqual({path.name: path.read_bytes() for path in self.folder.iterdir()},
                         {"photo.jpg": b"mine", "photo-2.jpg": thumbnail, "photo-3.jpg": thumbnail})


if __name__ == "__main__":
    unittest.main()
