"""lfmeta run as a user runs it, in a folder of its own that holds photo.jpg (the example) and in (a small colour
picture). Needs LFMETA, the tool to run."""
import json, os, pathlib, shlex, shutil, subprocess, sys, tempfile, unittest

LFMETA = os.environ["LFMETA"]
EXAMPLE = pathlib.Path(__file__).resolve().parents[2] / "examples" / "photo.jpg"
PHOTO = EXAMPLE.read_bytes()
W, H = 134, 5
RGB = bytes((x * 19 + y * 7 + c * 83) & 255 for y in range(H) for x in range(W) for c in range(3))
TAGS = ("-Model -ExposureTime -FNumber -ISO -DateTimeOriginal -FocalLength -GPSLatitude -GPSLongitude -GPSAltitude#"
        " -GPSTimeStamp -GPSDateStamp -IFD0:Orientation# ")


def pnm(magic, samples, maximum=255, size=(W, H)):
    return b"%s # c\n%d %d\n%d\n" % (magic, *size, maximum) + samples


COLOR = pnm(b"P6", RGB)


def run(*words, **more):
    done = subprocess.run([word if isinstance(word, bytes) else str(word) for word in words], capture_output=True, **more)
    return done.returncode, done.stdout, done.stderr.decode()


def peak(*words, **more):  # bytes of memory, of this interpreter at least
    code = "import resource as r, subprocess as s, sys; s.run(sys.argv[1:]); print(r.getrusage(r.RUSAGE_CHILDREN).ru_maxrss)"
    # What is freed is given back, also where the address sanitizer would keep it for a while.
    more["env"] = {**os.environ, "ASAN_OPTIONS": "quarantine_size_mb=1"}
    return int(run(sys.executable, "-c", code, LFMETA, *words, **more)[1].split()[-1]) << 10


class FolderTest(unittest.TestCase):
    def setUp(self):
        self.dir = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.dir)


class ToolTest(FolderTest):
    def setUp(self):
        super().setUp()
        self.files(**{"photo.jpg": PHOTO, "in": COLOR})

    def files(self, **contents):
        for name, data in contents.items():
            (self.dir / name).write_bytes(data)

    def run_line(self, line):
        return run(*shlex.split(line), cwd=self.dir)

    def good(self, line):
        status, out, err = run(LFMETA, *shlex.split(line), cwd=self.dir)
        self.assertEqual((status, err), (0, ""), line)
        return out.decode()

    def bad(self, expected, line, prefix="", status=1):  # and nothing in the folder has changed
        before = {path: path.read_bytes() for path in self.dir.iterdir()}
        done, out, err = run(*shlex.split(prefix), LFMETA, *shlex.split(line), cwd=self.dir)
        self.assertEqual((done, out, err.count("\n"), expected in err), (status, b"", 1, True), (line, err))
        self.assertEqual({path: path.read_bytes() for path in self.dir.iterdir()}, before)

    def exiftool(self, name, tags=TAGS):
        told = json.loads(self.run_line("exiftool -json %s %s" % (tags, name))[1])[0]
        return {tag: value for tag, value in told.items() if tag != "SourceFile"}
