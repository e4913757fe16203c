"""lfmeta read, run as a user runs it. The judge of what a photograph says is ExifTool."""
import json, os, pty, resource, select, shutil, struct, subprocess, unittest

from support import photos
from support.photos import app1, jpeg, psd, segment, tiff
from support.tool import EXAMPLE as PHOTO, LFMETA, FolderTest, peak, run

# Our names that differ from ExifTool's by more than the first letter, and those that do not.
NAMES = {"iso": "ISO", "focalLength35mm": "FocalLengthIn35mmFormat", "width": "ImageWidth", "height": "ImageHeight",
         "thumbOffset": "ThumbnailOffset", "thumbLength": "ThumbnailLength"}
for name in ["make", "model", "lens", "dateTimeOriginal", "exposureTime", "fNumber", "focalLength",
             "orientation", "focalPlaneXResolution", "focalPlaneResolutionUnit"]:
    NAMES[name] = name[0].upper() + name[1:]

# Whose every value is one that a reader may take for another.
TOLD = tiff({0x10F: "Alpenglow  ", 0x110: b"Alpenglow M2", 0x112: 6},
            {0x9003: "2021:06:05 07:14:59", 0x9201: (8, 1), 0x9202: (5, 1), 0x9204: (-5, 3), 0x9291: "25 ",
             0xA402: 2, 0xA431: "A17", 0xA434: "16-35mm\x1b", 0xA215: (400, 1)}, {0x112: 8})
TOLD_TEXT = """\
{} ({})
  Camera       Alpenglow M, 16-35mm\\x1b
  Exposure     1/256 s, f/5.66, ISO 400, -1.67 EV, automatic bracket
  Taken        2021:06:05 07:14:59.25
  Orientation  8 (turned left)
  Notice       the orientation is that of the thumbnail; the picture's own is 6
  Notice       the model is cut; the file says "Alpenglow M2"
  Notice       the exposure time is computed from the shutter speed value
  Notice       the lens stands in the EXIF data only, where the library does not look
"""

CUT = "is damaged, or ends before its structure does"
NO_HEADER = "has EXIF data without a TIFF header"
SIZE = ", 320 x 240 pixels"
NO_EXIF = "{}\n  EXIF         no EXIF data\n"
ISO = tiff({}, {0x8827: 50})
ISO_TOLD = "JPEG%s\n  Exposure     ISO 50\n" % SIZE
FILLED = ISO_TOLD + "  Notice       fill bytes stand between its segments: a Photoshop block is not read\n"


def unread(kind, why):
    return NO_EXIF.format(kind + SIZE) + "  Notice       its EXIF data is not read: %s\n" % why


NOT_RGB = unread("PSD", "it is not an RGB picture")
NAMED = unread("PSD", "an image resource with a name stands before its EXIF data")
# What a file is -> its exit status, the text below its name, and the message.
OUTCOMES = {
    "without EXIF": (jpeg(), NO_EXIF.format("JPEG" + SIZE), None),
    "a PSD without EXIF": (psd(photos.resource(1, b"abc")), NO_EXIF.format("PSD" + SIZE), None),
    "a gray PSD without EXIF": (psd(channels=1, mode=1), NO_EXIF.format("PSD" + SIZE), None),
    "a TIFF without EXIF": (tiff({0x100: 7, 0x101: 5}), NO_EXIF.format("TIFF, 7 x 5 pixels"), None),
    "fill bytes": (jpeg(app1(ISO), segment(0xFE, b"", 3)), FILLED, None),
    "a fill byte": (jpeg(app1(ISO), segment(0xFE, bytes(254), 2)), FILLED, None),
    "five fill bytes": (jpeg(app1(ISO, 5)), unread("JPEG", "five fill bytes or more stand before its EXIF data"), None),
    "four fill bytes": (jpeg(app1(ISO, 4)), FILLED, None),
    "XMP first": (jpeg(segment(0xE1, photos.XMP + photos.LENS), app1(ISO)),
                  unread("JPEG", "another APP1 segment stands before its EXIF data"), None),
    "a PSD with a name": (psd(photos.resource(1, b"", b"ab"), photos.resource(0x422, ISO)), NAMED, None),
    "a PSD of one channel": (psd(photos.resource(0x422, ISO), channels=1), NOT_RGB, None),
    "EXIF and frame far behind": (jpeg(segment(0xFE, bytes(20000)), app1(ISO), segment(0xFE, bytes(20000))), ISO_TOLD, None),
    "a CMYK PSD": (psd(photos.resource(0x422, ISO), channels=4, mode=4), NOT_RGB, None),
    "a PSD without padding": (psd(photos.resource(1, b"abc")[:-1]), NO_EXIF.format("PSD" + SIZE), None),
    "a PSD cut in its data": (psd(photos.resource(1, bytes(99)))[:-60], None, CUT),
    "a marker without FF": (jpeg(app1(ISO), segment(0xFE, b"")[1:]), "JPEG\n  Exposure     ISO 50\n",
                            "has a damaged segment behind its EXIF data"),
    "a cut directory": (jpeg(app1(b"II*\0\x08\0\0\0\xff\xff")), None, "cannot be read, or its EXIF data is damaged"),
    "a PSD": (psd(photos.resource(1, b"abc"), photos.resource(0x422, ISO)), "PSD%s\n  Exposure     ISO 50\n" % SIZE, None),
    "not a TIFF header": (jpeg(app1(b"MM\0\x2b" + ISO[4:])), None, NO_HEADER),
    "no byte order": (psd(photos.resource(0x422, b"XX" + ISO[2:])), None, NO_HEADER),
    "64-bit offsets": (b"II+\0\x08\0\0\0" + bytes(16), None, "is a TIFF of 64-bit offsets, which are not supported"),
    "cut before its frame": (jpeg(app1(ISO))[:60], "JPEG\n  Exposure     ISO 50\n", CUT),
    "cut in its EXIF": (jpeg(app1(ISO))[:20], None, CUT),
    "an invalid length": (jpeg(segment(0xFE, b"")[:2] + b"\0\1"), None, CUT),
    "no marker": (jpeg(app1(ISO), b"\0"), "JPEG\n  Exposure     ISO 50\n", "has a damaged segment behind its EXIF data"),
    "a cut PSD": (psd(photos.resource(1, b"abc"))[:45], None, CUT),
    "a PSD of other resources": (psd(b"8BIX" + bytes(8)), None, CUT),
    "no photograph": (b"II+", None, "is no JPEG, TIFF or PSD image"),
    "nothing": (b"", None, "is no JPEG, TIFF or PSD image"),
}


def read(*words, **more):
    status, out, err = run(LFMETA, "read", "--json", *words, **more)
    return status, [json.loads(line) for line in out.splitlines()], err


class ToolRead(FolderTest):
    def file(self, name, data):
        (self.dir / name).write_bytes(data)
        return self.dir / name

    def test_says_of_the_example_what_exiftool_says(self):
        status, [ours], err = read(PHOTO)
        self.assertEqual((status, err), (0, ""))
        told = json.loads(run("exiftool", "-json", "-n", "-all", PHOTO)[1])[0]
        self.assertEqual({name: ours[name] for name in NAMES}, {name: told[theirs] for name, theirs in NAMES.items()})
        for name in ["latitude", "longitude", "altitude"]:
            self.assertAlmostEqual(ours["gps"][name], told["GPS" + name.title()], 9)
        self.assertEqual(
            [ours["gps"]["gpsDateStamp"], *ours["MetadataBuf"].values(), ours["exposureText"], ours["method"]],
            [told["GPSDateStamp"], [100, 24999], [559, 100], [2400, 100], [256000, 100], "1/250", 4])
        photo = PHOTO.read_bytes()
        self.assertEqual(photo[ours["iptcOffset"]:][:ours["iptcLength"]], run("exiftool", "-b", "-IPTC", PHOTO)[1])
        self.assertTrue(photo[ours["xmpOffset"]:].startswith(b"<?xpacket begin"))
        self.assertEqual(run(LFMETA, "read", PHOTO)[1].decode(), """\
%s (JPEG, 720 x 480 pixels)
  Camera       Alpenglow M2, 16-35mm f/4 Wide
  Exposure     1/250 s, f/5.6, ISO 100
  Focal length 24 mm, 36 mm on 35 mm film
  Taken        2021:06:05 07:14:59
  Orientation  1 (upright)
  Position     -50.942389, -73.407028, 214.5 m, 2021:06:05 11:14:59 UTC
  Thumbnail    3278 bytes at 694
  IPTC         69 bytes at 4002
  XMP          1331 bytes at 4105
  Settings     Tone Balancer (method 4)
""" % PHOTO)

    def test_says_where_other_readers_say_something_else(self):
        swapped = tiff({0x110: "Alpenglow M2"}, {0x829A: (10, 8), 0x829D: (19, 20), 0x9204: (1, 3)}, order=">")
        for kind, data in [("TIFF", TOLD), ("JPEG" + SIZE, jpeg(app1(TOLD))),
                           ("PSD" + SIZE, psd(photos.resource(0x422, TOLD)))]:
            path = self.file("told", data)
            self.assertEqual(run(LFMETA, "read", path), (0, TOLD_TEXT.format(path, kind).encode(), ""), kind)
        told = read(path)[1][0]
        self.assertEqual([told[name] for name in ["exposureBias", "exposureMode", "subseconds", "serialNumber", "make"]],
                         [-1.6666666, 2, "25", "A17", "Alpenglow"])
        self.assertEqual(run(LFMETA, "read", "--csv", "--fields", "notices,make", path)[1].decode(),
                         'notices,make\n"%s",Alpenglow\n' % "; ".join(told["notices"]).replace('"', '""'))
        empty = {name for name, value in told.items() if value is None}
        self.assertEqual(empty, {"fileBytes", "damage", "focalLength", "focalLength35mm", "focalPlaneXResolution",
                                 "focalPlaneResolutionUnit", "thumbWidth", "thumbHeight", "thumbRowBytes", "thumbOffset",
                                 "thumbLength", "thumbnailFile", "iptcOffset", "iptcLength", "xmpOffset", "xmpLength",
                                 "method"})
        self.assertEqual(set(map(str, told["gps"].values())), {"None"})
        path = self.file("swapped", jpeg(app1(swapped)))
        self.assertEqual(run(LFMETA, "read", path)[1].decode().split("\n")[1:3],
                         ["  Camera       Alpenglow M2", "  Exposure     1.25 s, f/0.95, +0.333 EV"])
        packet = self.file("packet", tiff({0x112: 3, 700: (7, len(photos.LENS), photos.LENS)}, {0xA434: "Not this"}))
        self.assertEqual([read(packet)[1][0][name] for name in ["lens", "orientation", "notices"]],
                         ["In the packet", 3, None])

    def test_takes_tags_of_the_right_kind_within_bounds(self):
        described = ", ".join("abcdefg") + ", 1/125s, R60 G60 B60"
        for first, exif, name, value in [
                ({0x10F: "m" * 5000}, {}, "make", "m" * 255), ({0x10F: 7}, {}, "make", None),
                ({0x10F: "abc"}, {}, "make", "abc"), ({0x10F: "Sony"}, {}, "make", "Sony"),
                ({0x100: 70000}, {}, "width", 70000), ({0x101: 5}, {}, "height", 5), ({0x101: "5"}, {}, "height", None),
                ({0x112: (4, 1, b"\6\0\0\0")}, {}, "notices", None), ({}, {0x829A: (1, 2)}, "exposureText", "0.5"),
                ({}, {0x9204: (5, 0)}, "exposureBias", None), ({}, {0x9204: (-2, 1)}, "exposureBias", -2), ({}, {0x829A: (0, 1), 0x9201: (8, 1)}, "notices", [
                    "the exposure time is computed from the shutter speed value"]),
                ({270: described}, {}, "exposureText", "1/125"), ({270: described}, {}, "notices", None),
                ({270: described}, {0x829A: (1, 50)}, "exposureText", "1/50")]:
            self.assertEqual(read(self.file("tags", tiff(first, exif)))[1][0][name], value, (first, exif))
        drawn = photos.resource(0x40C, struct.pack(">6I2H", 1, 160, 120, 480, 57600, 50, 24, 1) + bytes(50))
        self.assertIn(b"  Thumbnail    50 bytes at 114, 160 x 120 pixels\n", run(LFMETA, "read", self.file(
            "drawn", jpeg(app1(ISO), segment(0xED, b"Photoshop 3.0\0" + drawn))))[1])
        path = self.file("described", tiff({270: described}, {0x9204: (0, 1), 0x9291: "25"}))
        self.assertEqual(run(LFMETA, "read", path)[1].decode(),
                         "%s (TIFF)\n  Exposure     1/125 s, ISO 800, from the image description\n" % path)

    def test_fails_for_what_is_wrong_and_for_nothing_else(self):
        for name, (data, text, message) in OUTCOMES.items():
            path = self.file("file", data)
            self.assertEqual(run(LFMETA, "read", path),
                             (0 if message is None else 1,
                              b"" if text is None else ("%s (%s" % (path, text.replace("\n", ")\n", 1))).encode(),
                              "" if message is None else "lfmeta: %s: %s\n" % (path, message)), name)
        for name in ["a PSD", "without EXIF", "four fill bytes"]:
            self.file(name, OUTCOMES[name][0])
        self.file("file", b"notes")
        self.assertEqual([read("-r", self.dir)[i] for i in (0, 2)], [0, ""])

    def test_goes_on_behind_a_file_that_fails_and_keeps_the_order(self):
        cut, good, none, missing, pipe, sub = named = [
            self.dir / name for name in ["c.jpg", "a.txt", "b.jpg", "missing", "pipe", "sub"]]
        cut.write_bytes(PHOTO.read_bytes()[:3000])
        shutil.copy(PHOTO, good)  # a photograph by its signature, not its name
        none.write_bytes(b"no photograph")
        os.mkfifo(pipe)
        sub.mkdir()
        odd = os.fsencode(sub) + b"/b\xe4d\\\x1b\n.jpg"
        shutil.copy(PHOTO, odd)
        status, told, err = read("-j", 4, *named)
        self.assertEqual([(t["file"], t["iso"], t["damage"] is None) for t in told],
                         [(str(cut), 100, False), (str(good), 100, True)])  # and what had been read
        self.assertEqual((status, err), (1, "".join("lfmeta: %s: %s\n" % one for one in [
            (cut, CUT), (none, "is no JPEG, TIFF or PSD image"), (missing, "cannot be opened: No such file or directory"),
            (pipe, "is not a regular file"), (sub, "is a folder, not a file; -r reads what is below it")])))
        status, [broken, empty, right], err = read("--errors-as-json", cut, "", good, "--fields", "iso,file")
        self.assertEqual((status, broken, right, empty["file"], err),
                         (1, {"iso": 100, "file": str(cut), "error": CUT},
                          {"iso": 100, "file": str(good), "error": None}, None, ""))
        names = [str(cut), str(good)] * 3  # whose lines and failures are told together
        told = read("--files0-from", "-", input="\0".join(names).encode())[1]
        self.assertEqual([t["file"] for t in told], names)
        cut.unlink()
        (self.dir / "sub.d").symlink_to("nowhere")
        status, told, err = read("-r", self.dir, "--fields", "file,fileBytes")
        self.assertEqual((status, told, err), (1, [
            {"file": str(good), "fileBytes": None},
            {"file": "%s/b\ufffdd\\\x1b\n.jpg" % sub, "fileBytes": "%s/b\\xe4d\\x5c\\x1b\\x0a.jpg" % sub}],
            "lfmeta: %s/sub.d: cannot be opened: No such file or directory\n" % self.dir))
        self.assertEqual(run(LFMETA, "read", "-", preexec_fn=lambda: os.close(0)),
                         (1, b"", "lfmeta: -: cannot be read: Bad file descriptor\n"))
        if run("grep", "-q", "__ubsan", LFMETA)[0]:  # not where a sanitizer needs files of its own
            told = run(LFMETA, "read", PHOTO, preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_NOFILE, (5, 5)))
            self.assertEqual(told, (1, b"", "lfmeta: %s: cannot be opened: Too many open files\n" % PHOTO))
        self.file("ab", PHOTO.read_bytes())  # whose name comes letter by letter, and without an end
        self.assertEqual(run("sh", "-c", '(printf a; sleep 0.2; printf b) | "$0" read --csv --fields iso --files0-from -',
                             LFMETA, cwd=self.dir), (0, b"iso\n100\n", ""))
        for count in (1, 3):  # with and without helpers
            told = read("-j", count, *[PHOTO, good] * 300)[1]
            self.assertEqual([t["file"] for t in told], [str(PHOTO), str(good)] * 300)
        self.assertNotIn(b"\x1b", run(LFMETA, "read", "-r", self.dir)[1])

    def test_lists_folders_however_deep_and_names_those_it_cannot(self):
        here = os.getcwd()
        self.addCleanup(os.chdir, here)
        for name, depth in [("d", 1300), ("x" * 250, 17)]:
            os.chdir(self.dir)
            for _ in range(depth):
                os.mkdir(name)
                os.chdir(name)
            if name == "d":
                shutil.copy(PHOTO, "photo.jpg")
        os.chdir(self.dir)
        status, told, err = read("-r", ".", "-j", 2, preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_NOFILE, (16, 16)))
        self.assertEqual((status, [t["file"] for t in told]), (1, ["./" + "d/" * 1300 + "photo.jpg"]))
        self.assertRegex(err, r"\Alfmeta: ./(x{250}/)+: cannot be listed: File name too long\n\Z")
        self.assertEqual(run("rm", "-rf", *self.dir.iterdir())[0], 0)

    def test_shows_what_is_broken_as_far_as_it_means_something(self):
        photo = PHOTO.read_bytes()
        for whole, part in [(b"Alpenglow M2", b"\x1b]0;\xff\xc2\x9bM2!\n\0"),
                            (b"\0\0\0\x32" + b"\0\0\0\1", b"\0\0\0\x32" + b"\0\0\0\0"),
                            (b"\0\0\0\x0b\0\0\0\1", b"\0\0\0\x09\0\0\0\1"), (b"\0\0\x01\xad\0\0\0\2", b"\0\0\0\x09\0\0\0\2"),
                            (b"\0\0\0\x0e\0\0\0\1", b"\0\0\0\x0a\0\0\0\1"), (b"\0\5\0\1\0\0\0\1\0", b"\0\5\0\1\0\0\0\1\1"),
                            (b"\0\0\x0c\xce", b"\x7f\0\x0c\xce")]:
            self.assertEqual(photo.count(whole), 1, whole)
            photo = photo.replace(whole, part)
        broken = self.file("broken.jpg", photo)
        status, [told], _ = read("--thumbnail", self.dir, broken)
        self.assertEqual((status, os.listdir(self.dir), told["thumbLength"], told["model"],
                          told["gps"]["latitude"], told["gps"]["gpsLatitude"][:2]),
                         (1, ["broken.jpg"], 0x7F000CCE, "\x1b]0;\ufffd\x9bM2!\n", None, [50, 0]))
        person = run(LFMETA, "read", broken)[1]
        self.assertIn(rb"Camera       Alpenglow \x1b]0;\xff\xc2\x9bM2!\x0a,", person)
        self.assertIn(b"Position     -4.5 m, 2021:06:05 09:10:59 UTC\n", person)

    def test_takes_names_and_photographs_from_standard_input(self):
        names = b"\0".join([os.fsencode(PHOTO), b"", b"missing", os.fsencode(PHOTO)])
        status, told, err = read("--files0-from", "-", "--fields", "iso", input=names)
        self.assertEqual((status, told), (1, [{"iso": 100}] * 2))
        self.assertEqual(err.count("\n"), 2)
        for more in [{"input": PHOTO.read_bytes()}, {"stdin": self.enterContext(PHOTO.open("rb"))}]:
            status, out, err = run(LFMETA, "read", "--csv", "--fields", "file,gps.latitude,model,MetadataBuf", "-", **more)
            self.assertEqual((status, out.decode(), err), (0, """\
file,gps.latitude,model,MetadataBuf.exposureTime,MetadataBuf.fNumber,MetadataBuf.focalLength,\
MetadataBuf.focalPlaneXResolution
-,-50.942389,Alpenglow M2,100 24999,559 100,2400 100,256000 100
""", ""))
        self.assertEqual(run(LFMETA, "read", PHOTO, "--json", "--fields", "gps.latitude,iso,gps.altitude,iso")[1],
                         b'{"gps":{"latitude":-50.942389,"altitude":214.5},"iso":100}\n')
        # An engine hands over one name and waits for its line.
        with subprocess.Popen([LFMETA, "read", "--json", "--files0-from", "-"], stdin=subprocess.PIPE,
                              stdout=subprocess.PIPE) as engine:
            for _ in range(2):
                engine.stdin.write(os.fsencode(PHOTO) + b"\0")
                engine.stdin.flush()
                self.assertTrue(select.select([engine.stdout], [], [], 60)[0])
                self.assertEqual(json.loads(engine.stdout.readline())["iso"], 100)
            engine.stdin.close()
        for words, message in [(["read"], "needs a FILE"), (["read", "-", "--files0-from", "-"], "not both"),
                               (["read", PHOTO, "--fields", "iso"], "needs --json or --csv"),
                               (["read", PHOTO, "--json", "--fields", "ios"], "ios is no field; the fields are file, ")]:
            status, out, err = run(LFMETA, *words)
            self.assertEqual((status, out, err.count("\n"), message in err), (2, b"", 1, True), err)
        for names, message in [(b"\0", "lfmeta: a name in the list is empty\n"), (b"x" * 65536, "lfmeta: standard input: holds a name of "
                                "more than 65536 bytes; names must end in NUL\n")]:
            self.assertEqual(run(LFMETA, "read", "--files0-from", "-", input=names), (1, b"", message))

    def test_gives_rows_that_a_spreadsheet_reads(self):
        odd = self.file('a,"b".jpg', jpeg(app1(tiff({0x110: "M\n2..."}, {0x829A: (30, 1)}))))
        self.assertEqual(run(LFMETA, "read", "--csv", odd, "--fields",
                             "exposureTime,file,model,exposureTime,exposureText,gps.altitude"),
                         (0, b'exposureTime,file,model,exposureTime,exposureText,gps.altitude\n30,"%s",M\\x0a,30,30,\n'
                          % os.fsencode(odd).replace(b'"', b'""'), ""))

    def test_output_lines_stay_whole_in_one_pipe(self):
        reader, writer = os.pipe()
        lists = self.file("list", b"\0".join([os.fsencode(PHOTO)] * 400))
        words = [LFMETA, "read", "--json", "--files0-from", lists]
        running = [subprocess.Popen(words, stdout=writer) for _ in range(4)]
        os.close(writer)
        with open(reader, "rb") as lines:
            self.assertEqual([json.loads(line)["iso"] for line in lines], [100] * 1600)
        self.assertEqual([one.wait() for one in running], [0] * 4)

    def test_memory_is_bounded_whatever_a_file_announces_and_however_many_there_are(self):
        most = peak("read", "--json", "missing") + (20 << 20)
        for what in (tiff({700: (2, 2 ** 31 - 9999, b"12345")}), tiff({270: (2, 2 ** 31 - 9999, b"12345")}),
                     tiff({}, {}, {0x201: 9, 0x202: (4, 1, b"\0\0\0\x7f")})):
            sparse = [self.file("%d.tif" % i, what) for i in range(4)]
            for path in sparse:
                os.truncate(path, 2 ** 31)
            self.assertLess(peak("read", "--json", "-j", 4, "--thumbnail", self.dir, *sparse), most)
        many = self.file("many", b"missing\0" * 100 + b"README.md\0" * 20000)
        self.assertLess(peak("read", "--json", "-j", 2, "--files0-from", many), most)

    def test_shows_progress_where_a_person_waits(self):
        for alone, progress in (True, b"\r256 files\r\x1b[K"), (False, b""):  # where the reports go elsewhere
            terminal, far = pty.openpty()
            with subprocess.Popen([LFMETA, "read", "-j", "1", "--csv", "--fields", "iso", *[PHOTO] * 257, "missing"],
                                  stdout=subprocess.DEVNULL if alone else far, stderr=far) as reading:
                os.close(far)
                shown = b""
                with self.assertRaises(OSError):  # the terminal's end
                    while True:
                        shown += os.read(terminal, 4096)
            os.close(terminal)
            self.assertEqual(reading.returncode, 1)
            self.assertEqual(shown.replace(b"iso\r\n", b"").replace(b"100\r\n", b""), progress +
                             b"lfmeta: missing: cannot be opened: No such file or directory\r\n")

    def test_writes_thumbnails_under_the_photographs_paths(self):
        thumbnail = run("exiftool", "-b", "-ThumbnailImage", PHOTO)[1]
        for folder in ["in/a", "in/b"]:
            (self.dir / folder).mkdir(parents=True)
            shutil.copy(PHOTO, self.dir / folder / "photo.jpg")
        shutil.copy(PHOTO, self.dir / "in/photo.tif")
        words = [LFMETA, "read", "--csv", "--fields", "thumbnailFile", "-r", "a", "../in", "--thumbnail", "../out/small"]
        for again in range(2):
            status, out, err = run(*words, cwd=self.dir / "in")
            files = {"out/small/" + name: thumbnail
                     for name in ["a/photo.jpg", "up/in/a/photo.jpg", "up/in/b/photo.jpg", "up/in/photo.tif.jpg"]}
            self.assertEqual((status, err, out.decode().split()),
                             (0, "", ["thumbnailFile", *["../" + name for name in files]]))
            self.assertEqual({str(path.relative_to(self.dir)): path.read_bytes()
                              for path in self.dir.glob("out/**/*") if path.is_file()}, files)
        (self.dir / "out/small/a/photo.jpg").write_bytes(b"mine")
        status, out, err = run(*words, cwd=self.dir / "in")
        self.assertEqual((status, err.count("\n"), "out/small/a/photo.jpg: is there with another content" in err),
                         (1, 1, True))
        self.assertEqual((self.dir / "out/small/a/photo.jpg").read_bytes(), b"mine")
        self.file("none.jpg", jpeg(app1(ISO)))
        self.assertEqual(run(LFMETA, "read", "--thumbnail", self.dir / "out", self.dir / "none.jpg")[2], "")
        (self.dir / "out").rename(self.dir / "mine")
        for start in b"\xff\xc0", b"\xff":  # no start of an image, and less than that
            place = tiff({}, {}, {0x201: (4, 1, struct.pack("<I", 62)), 0x202: (4, 1, struct.pack("<I", len(start)))})
            self.assertEqual(len(place), 62)
            odd = self.file("odd.tif", place + start)
            self.assertRegex(run(LFMETA, "read", "--thumbnail", self.dir / "t", odd)[2],
                             r"\Alfmeta: .*/odd.tif: has no JPEG stream where its thumbnail should be\n\Z")
        self.file("out", b"")
        self.assertIn("cannot be made: Not a directory", run(*words, cwd=self.dir / "in")[2])


if __name__ == "__main__":
    unittest.main()
