"""docs/at-scale.md holds: its blocks are run in a folder of generated photographs, and print what it says."""
import os, pathlib, re, subprocess, unittest

from support.photos import app1, jpeg, tiff
from support.tool import LFMETA, FolderTest

PAGE = pathlib.Path(__file__).resolve().parents[1] / "docs" / "at-scale.md"


def photo(year, second, time, lens="16-35mm f/4 Wide", **more):
    exif = {0x829A: time, 0x9003: "%d:06:05 07:14:%02d" % (year, second), 0xA434: lens, **more}
    return jpeg(app1(tiff({0x110: "Alpenglow M2"}, exif)))


class AtScale(FolderTest):
    def test_every_block_prints_what_the_page_says(self):
        root = self.dir / "photos"
        for year, steps in (2021, (0, -2, 2)), (2022, (0, -4, 4)):
            (root / str(year)).mkdir(parents=True)
            for i, ev in enumerate(steps):
                time = (2 ** (ev + 4), 16 * 60)
                (root / str(year) / ("b%d.jpg" % i)).write_bytes(photo(year, 10 + i, time))
            for i in range(3 if year == 2022 else 1):
                lens = "85mm f/1.8" if year == 2022 else "16-35mm f/4 Wide"
                (root / str(year) / ("s%d.jpg" % i)).write_bytes(photo(year, 40 + i, (1, 60), lens))
        (root / "2022/cut.jpg").write_bytes(photo(2022, 1, (1, 60))[:20])
        (root / "notes.txt").write_text("no photograph")
        blocks = re.findall(r"^```sh\n(.*?)^```\n(?:```text\n(.*?)^```\n)?", PAGE.read_text(), re.S | re.M)
        self.assertEqual(len(blocks), 8)
        for script, expected in blocks:
            done = subprocess.run(["bash", "-euo", "pipefail", "-c", script], cwd=self.dir, capture_output=True, text=True,
                                  env=os.environ | {"PATH": "%s:%s" % (os.path.dirname(LFMETA), os.environ["PATH"]),
                                                    "LC_ALL": "C.UTF-8", "HOME": str(self.dir)})
            self.assertEqual((done.returncode, done.stdout), (0, expected), script + done.stderr)


if __name__ == "__main__":
    unittest.main()
