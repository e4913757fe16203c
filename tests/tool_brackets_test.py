"""lfmeta brackets on generated folders: what a photographer would call the sets in them."""
import json, os, unittest

from support.photos import app1, jpeg, tiff
from support.tool import LFMETA, FolderTest, run


class Camera:
    """Takes frames one after the other, half a second apart, and remembers what it should be told to have taken."""

    def __init__(self, folder, model="Alpenglow M2", clock=36000.0, subseconds=True, prefix="IMG", **more):
        self.folder, self.model, self.clock, self.subseconds, self.prefix = folder, model, clock, subseconds, prefix
        self.count, self.more = 0, more
        folder.mkdir(exist_ok=True)

    def frame(self, ev, bias=None, mode=None, pause=0.5, aperture=8, iso=100, **more):
        time = 2.0 ** ev / 60
        self.count += 1
        day, second = divmod(self.clock, 86400)
        exif = {0x829A: (round(time * 1000000), 1000000), 0x829D: (aperture, 1), 0x8827: iso, 0x920A: (24, 1),
                0x9003: "2021:06:%02d %02d:%02d:%02d" % (5 + day, second // 3600, second // 60 % 60, second % 60)}
        if self.subseconds:
            exif[0x9291] = "%02d" % min(round(second % 1 * 100), 99)
        if bias is not None:
            exif[0x9204] = round(bias * 3), 3
        if mode is not None:
            exif[0xA402] = mode
        exif.update(more.get("exif", {}))
        path = self.folder / ("%s_%04d.%s" % (self.prefix, self.count, more.get("kind", "jpg")))
        path.write_bytes(jpeg(app1(tiff({0x110: self.model, **self.more}, exif))))
        self.clock += time + pause
        return path.name

    def bracket(self, *evs, base=0, wait=0, **more):
        self.clock += wait
        more.setdefault("mode", 2)
        return [self.frame(base + ev, bias=ev, **more) for ev in evs]


class ToolBrackets(FolderTest):
    def told(self, *words):
        status, out, err = run(LFMETA, "brackets", "--json", *(words or [self.dir]), cwd=self.dir)
        self.assertEqual((status, err), (0, ""))
        return [json.loads(line) for line in out.splitlines()]

    def files(self, *words):
        return [[os.path.basename(frame["file"]) for frame in one["frames"]] for one in self.told(*words)]

    def test_finds_what_a_photographer_took(self):
        def days(camera):  # each of them: what the camera does, and the sets that are to be found
            yield [camera.bracket(0, -2, 2), camera.bracket(0, -2, 2), camera.bracket(0, -2, 2)]  # back to back
            yield [camera.bracket(-2, -1, 0, 1, 2), camera.bracket(0, -1, 1, -2, 2, -3, 3)]
            first = camera.bracket(-2, 0, 2)
            camera.frame(0.7, bias=0)  # a single in between, by the same finger
            yield [first, camera.bracket(-2, 0, 2)]
            first = camera.bracket(0, -2, 2, mode=None)  # a camera that does not say so, in another light
            camera.frame(1.4, bias=0)
            yield [first, camera.bracket(0, -2, 2, base=1, mode=None)]
            for ev in 0, 0, 0:  # a burst
                camera.frame(ev, bias=0)
            yield []
            yield [[camera.frame(ev) for ev in (-2, 0, 2)]]  # by hand, in manual mode
            yield [[camera.frame(0, iso=iso) for iso in (100, 200, 400)]]
            yield [camera.bracket(0, -1 / 3, 1 / 3, mode=None)]
            camera.clock = camera.clock // 1 + 0.6  # whole seconds make the pauses longer than they are
            yield [camera.bracket(5, 5.5, 6, pause=1.9)]
            camera.frame(0)
            camera.frame(0.3)
            camera.frame(0.6)  # a cloud
            yield []
            first = camera.bracket(0, -1, 1)
            camera.bracket(0, -1, 1, kind="tif")  # the same again, as another kind of file
            yield [first, ["%s_%04d.tif" % (camera.prefix, camera.count - 2 + i) for i in range(3)]]
            camera.clock += 86400 - camera.clock % 86400 - 0.7  # across midnight
            yield [camera.bracket(0, -2, 2)]
            yield [camera.bracket(0, 5, 9)]  # 8.5 s: the pause counts from its end
            yield [camera.bracket(0, -2, 2), camera.bracket(-1, 1, exif={0x920A: (35, 1)})]  # zoomed meanwhile
            camera.bracket(0)
            camera.clock += 9  # a camera that notes the end of an exposure, which is 8.5 s
            first = camera.frame(0, bias=0, mode=2)
            camera.clock += 2.0 ** 9 / 60 - 0.25
            yield [[first, camera.frame(9, bias=9, mode=2)]]
            camera.clock = camera.clock // 1 + 0.63  # the second of three begins with the last frame of a second
            yield [camera.bracket(0, -4, 4, pause=0.02) for _ in range(3)]
            yield [camera.bracket(0, 1, 2)]

        for subseconds in True, False:
            expected = []
            camera = Camera(self.dir / ("exact" if subseconds else "whole"), subseconds=subseconds)
            for sets in days(camera):
                expected += sets
                camera.clock += 60
            self.assertEqual(self.files(camera.folder), expected)
        references = [os.path.basename(one["reference"]) for one in self.told("exact")]
        self.assertEqual(references[3:5] + references[-1:], ["IMG_0012.jpg", "IMG_0015.jpg", expected[-1][0]])

    def test_cameras_lenses_and_folders_do_not_mix(self):
        one, other = Camera(self.dir / "a"), Camera(self.dir / "a", "Alpenglow M3", prefix="DSC")
        again = Camera(self.dir / "b", prefix="ZZZ")
        twin = Camera(self.dir / "a", prefix="TWIN")
        expected = [[], [], [], []]
        for ev in 0, -2, 2:
            for i, (camera, exif) in enumerate([(one, {}), (other, {}), (again, {}), (twin, {0xA431: "77"})]):
                expected[i].append(camera.frame(ev + i / 2, exif=exif))
        for name in expected[0]:  # the same, as another kind of file
            (self.dir / "a" / name).with_suffix(".tif").write_bytes((self.dir / "a" / name).read_bytes())
            (self.dir / "a" / ("Copy of " + name)).write_bytes((self.dir / "a" / name).read_bytes())
        expected.append([name.replace("jpg", "tif") for name in expected[0]])
        expected.append(["Copy of " + name for name in expected[0]])
        self.assertEqual(sorted(self.files()), sorted(expected))

    def test_says_why_a_set_is_odd(self):
        camera = Camera(self.dir)
        for _ in range(2):
            camera.bracket(-2, 0, 2, wait=60)
        camera.bracket(-2, 2, wait=60)
        camera.bracket(-3, 0, 1, wait=60)
        camera.clock += 60
        for ev, aperture, iso in (0, 8, 100), (-2, 11, 100), (2, 8, 400):
            camera.frame(ev, bias=ev, aperture=aperture, iso=iso)
        camera.clock += 60
        camera.bracket(0, 1, 2, mode=0, exif={0x9204: (0, 1)})  # a cloud
        camera.bracket(0, 1, 2, mode=1, exif={0x9204: (0, 1)}, wait=60)
        camera.bracket(0, 1, 2, mode=0, wait=60)
        sets = self.told()
        self.assertEqual([one["steps"] for one in sets[:6]], [[2, 2], [2, 2], [4], [3, 1], [2.92, 4], [1, 1]])
        self.assertEqual([one["odd"] for one in sets], [
            None, None, ["2 frames, where most sets of this camera have 3"],
            ["its steps are uneven: a frame may be missing, or not belong to it"],
            ["its steps are uneven: a frame may be missing, or not belong to it", "the aperture changes",
             "the ISO speed changes"],
            ["each exposure was metered, without a bias: the light may have changed"], None, None])
        lonely = Camera(self.dir / "lonely")
        lonely.bracket(0, 1)
        self.assertEqual(self.told("lonely")[0]["odd"], ["2 frames, an even number"])

    def test_text_and_json_say_the_same_and_failures_are_named(self):
        camera = Camera(self.dir, more=1)
        camera.more = {0x10F: "Alpenglow"}
        camera.bracket(0, -2, 5 / 3, pause=0.25, exif={0xA434: "16-35mm"})
        camera.frame(3)
        (self.dir / "undated.jpg").write_bytes(jpeg(app1(tiff({}, {0x829A: (1, 60)}))))
        (self.dir / "timeless.jpg").write_bytes(jpeg(app1(tiff({}, {0x9003: "2021:06:05 10:00:00"}))))
        (self.dir / "notes").write_bytes(b"")
        told = self.told(".")[0]
        self.assertEqual({name: told[name] for name in told if name != "frames"}, {
            "set": 1, "count": 3, "range": 3.67, "steps": [2, 1.67], "gaps": [0.253, 0.246], "odd": None,
            "automaticBracket": True, "make": "Alpenglow", "model": "Alpenglow M2", "serialNumber": None,
            "lens": "16-35mm", "taken": "2021:06:05 10:00:00.00", "reference": "./IMG_0001.jpg"})
        self.assertEqual(told["frames"][1], {
            "file": "./IMG_0002.jpg", "fileBytes": None, "ev": -2, "exposureTime": 0.004167, "exposureText": "1/240",
            "fNumber": 8, "iso": 100, "exposureBias": -2})
        self.assertEqual(run(LFMETA, "brackets", ".", "missing", "notes", "undated.jpg", cwd=self.dir), (1, b"""\
Set 1: 3 frames from 2021:06:05 10:00:00.00, steps of 2, 1.67 EV, gaps of 0.253, 0.246 s
  Alpenglow M2, 16-35mm
  0 EV      1/60 s, f/8, ISO 100      ./IMG_0001.jpg
  -2 EV     1/240 s, f/8, ISO 100     ./IMG_0002.jpg
  +1.67 EV  1/19 s, f/8, ISO 100      ./IMG_0003.jpg
1 set of 3 photographs; 4 in none, 3 of them without capture or exposure time
""", "lfmeta: missing: cannot be opened: No such file or directory\n"
            "lfmeta: notes: is no JPEG, TIFF or PSD image\n"))
        self.assertEqual(self.told(".", "--gap", 0.1), [])
        Camera(self.dir / "bare").bracket(0, 2, iso=0, aperture=0)
        self.assertEqual(run(LFMETA, "brackets", "bare", cwd=self.dir), (0, b"""\
Set 1: 2 frames from 2021:06:05 10:00:00.00, steps of 2 EV, gaps of 0.503 s
  Alpenglow M2
  0 EV      1/60 s                    bare/IMG_0001.jpg
  +2 EV     1/15 s                    bare/IMG_0002.jpg
  odd: 2 frames, an even number
1 set of 2 photographs; 0 in none
""", ""))


if __name__ == "__main__":
    unittest.main()
