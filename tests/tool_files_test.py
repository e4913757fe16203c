"""lfmeta's command line, and how it reads and replaces files."""
import contextlib, json, os, pathlib, re, resource, shlex, signal, subprocess, time, unittest

from support.photos import tiff as structure
from support.tool import *


SIGNALS = [signal.SIGHUP, signal.SIGINT, signal.SIGQUIT, signal.SIGTERM, signal.SIGALRM, signal.SIGUSR1]


class ToolFiles(ToolTest):
    def test_command_line(self):
        for expected, line in [
                ("lfmeta: raed is no command, did you mean read?; see lfmeta --help", "raed photo.jpg"),
                ("did you mean brackets?", "brcaekts photo.jpg"), ("did you mean hdr?", "hrd"), ("command; see", "hxx in"),
                ("did you mean --json?", "read --jxxn in"), ("option; see", "read --jxxx in"),
                ("lfmeta: shwo is no command, did you mean show?; see lfmeta settings --help", "settings shwo in"),
                ("lfmeta: --rceursive is no option, did you mean --recursive?; see", "read --rceursive in"),
                ("lfmeta: -\\x1b[31mHI\\xff.jpg is no option; see lfmeta read --help", "read '-\x1b[31mHI\udcff.jpg'"),
                ("lfmeta: c is one argument too many; see lfmeta exif", "exif a b c"), ("OUT.tif is required", "tiff in"),
                ("needed: read, brackets", ""), ("show, write", "settings"), ("no command of lfmeta", "help foo"), ("standard input", "icc - --set in"),
                ("--depth: \\x1b[31m not in", "tiff in new --depth '\x1b[31m'"),
                ("--resolution: 0x10 is no whole number from 1 to 2147483;", "tiff in new --resolution 0x10"),
                ("no number of 0 or more", "brackets . --gap nan"), ("no number of 0 or more", "brackets . --gap 1e400"),
                ("no size such as", "tiff in new --max-memory -1"), ("no size such as", "tiff in new --max-memory 17179869184G"),
                ("./- is one of that name", "read --thumbnail - in"), ("from 1 to 256", "read in -j 0"), ("from 1 to 256", "read in -j 257"),
                ("from 1 to 99", "settings insert in --method 1 --number '[1]'")]:
            self.bad(expected, line, status=2)
        self.files(**{"[2021]": PHOTO, "[a,b]": PHOTO, "\x01x": PHOTO, "-r": PHOTO, "--": PHOTO})
        told = self.good("read --json -j 256 [2021] '[a,b]' -- '\x01x' -r --").splitlines()
        self.assertEqual([json.loads(line)["file"] for line in told], ["[2021]", "[a,b]", "\x01x", "-r", "--"])
        self.assertEqual(self.good("read -j 01 photo.jpg"), self.good("read photo.jpg"))
        self.assertEqual(self.good("read --csv --fields file,iso photo.jpg"), "file,iso\nphoto.jpg,100\n")
        self.good("tiff in [o] --resolution 010 --keyword [k,l]")
        self.assertEqual(self.exiftool("[o]", "-XResolution -Keywords"), {"XResolution": 10, "Keywords": "[k,l]"})
        self.assertRegex(self.good("-V"), r"^lfmeta \d+\.\d+\.\d+\n$")
        self.assertEqual(self.good("help"), self.good("--help"))
        self.assertEqual(self.good("help settings write"), self.good("settings write -h"))

    def test_completions_and_the_man_page_say_every_option(self):
        folder = pathlib.Path(LFMETA).parent / "described"
        self.assertEqual(run("mandoc", "-Tlint", "-Wwarning", folder / "lfmeta.1"), (0, b"", ""))
        page = re.sub(".\b", "", run("mandoc", "-Tascii", "-Owidth=400", folder / "lfmeta.1")[1].decode())
        self.assertEqual(run("zsh", "-n", folder / "_lfmeta"), (0, b"", ""))
        for line in ["'(-h --help)'{-h,--help}'[Show this help]'", "'*--fields[Only these fields, in this order (--json "
                     "and --csv)]:A,B,...: '", "'(--gap)--gap[Longest pause between two frames of a set, in seconds (2)]:"
                     "SECONDS: '", "'*:FILE:_files'"]:
            self.assertIn("\n    %s" % line, (folder / "_lfmeta").read_text())
        script = (folder / "lfmeta").read_text()

        def complete(*words):
            line = "COMP_WORDS=(lfmeta %s); COMP_CWORD=%d; _lfmeta 2>/dev/null; echo ${COMPREPLY[@]}"
            return run("bash", "-c", script + line % (shlex.join(words), len(words)))[1].decode().split()

        self.assertEqual((complete("tif"), complete("settings", "in"), complete("tiff", "in", "--dep"),
                          complete("tiff", "--depth", "f"), complete("read", "--jobs", ""), complete("help", "h")),
                         (["tiff"], ["insert"], ["--depth"], ["float"], [], ["hdr", "help"]))
        commands = [*complete("")] + ["settings " + name for name in complete("settings", "")]
        self.assertGreater(len(commands), 9)
        self.assertEqual(re.findall(r"^  (\w+) ", self.good("help").partition("Options:")[0], re.M), complete(""))
        self.assertRegex(page, r"\n   brackets\n +Find the exposure brackets among photographs.\n")
        self.assertRegex(page, r"\n +lfmeta settings write \[--force\] --method METHOD \[--set [^]]*\] OUT\n")
        self.assertIn(" [OPTIONS] --method METHOD OUT\n", self.good("help settings write"))
        self.assertIn("read [OPTIONS] [FILE...]\n", self.good("help read"))
        for command in commands:
            told = self.good("help " + command)
            self.assertIn("\nUsage: lfmeta %s [OPTIONS]" % command, told)
            self.assertLessEqual(max(map(len, told.splitlines())), 80, told)
            options = re.findall(r"^  (-[^ ,]+(?:, --[^ ]+)?)", told, re.M)
            names = {name for option in options for name in option.split(", ")}
            self.assertEqual({*complete(*command.split(), "-")}, names, command)
            for place in [r"\n +lfmeta %s [^-[]*[-[].*", r"\n   %s\n(?:     .*\n|\n)*"] if len(names) > 2 else []:
                said = re.search(place % command, page)[0]
                self.assertLessEqual(names - {"-h", "--help"}, {*re.findall(r"(?<![^ \[])--?[a-zA-Z][\w-]*", said)}, said)

    def test_what_comes_from_outside_is_printed_harmlessly(self):
        shown = b"~ \xc2\xa0\xc3\xbc\xed\x9f\xbf\xee\x80\x80\xe2\x80\x90\xf0\x9f\x98\x80\xf3\xa0\x82\x80\xf4\x8f\xbf\xbf"
        escaped = ["\x1f", "\x7f", "\x80", "\x9b", "\x9f", "\xad", "\u061c", "\u200b", "\u200f", "\u2028", "\u202e",
                   "\u2066", "\ufeff", "\U000e0001"]
        broken = b"\x9b \xff \xc1\x81 \xc3 \xe0\x9f\xbf \xed\xa0\x80 \xed\xbf\xbf \xf0\x8f\xbf\xbf \xf4\x90\x80\x80 \xf8 \xe2\x82"
        raw = [shown, *map(str.encode, escaped), broken]
        texts = [shown, *(re.sub(b"[^ ]", lambda c: b"\\x%02x" % ord(c[0]), text) for text in raw[1:])]
        names = [os.fsdecode(text) for text in raw]
        self.files(**dict.fromkeys(names, PHOTO))
        done = subprocess.run([LFMETA, "read", *names], cwd=self.dir, capture_output=True)
        told = [line.rpartition(b" (JPEG,")[0] for line in done.stdout.split(b"\n") if line.endswith(b" pixels)")]
        self.assertEqual(told, texts)
        done = subprocess.run([LFMETA, "read", "--json", *names], cwd=self.dir, capture_output=True)
        lines = done.stdout.splitlines()
        self.assertEqual([json.loads(line)["file"] for line in lines],
                         [text.decode(errors="replace") for text in raw])
        self.assertEqual([json.loads(line)["fileBytes"] is None for line in lines], [True] * (len(raw) - 1) + [False])
        self.files(**{names[-1]: b"Pf 1 1 -1 \0\0\0?"})
        done = subprocess.run([LFMETA, "hdr", "--json", names[-1]], cwd=self.dir, capture_output=True)
        self.assertEqual(json.loads(done.stdout)["fileBytes"], json.loads(lines[-1])["fileBytes"])
        for character, line in zip(escaped, lines[1:]):
            self.assertTrue(line.lower().startswith(b'{"file":' + json.dumps(character).encode()), line)

    def test_a_report_that_cannot_be_written_is_a_failure(self):
        for words in ["read", EXAMPLE], ["help"], ["exif", EXAMPLE, "-"]:
            for output, why in (">/dev/full", "No space left on device"), (">&-", "Bad file descriptor"):
                self.assertEqual(run("sh", "-c", '"$0" "$@" ' + output, LFMETA, *words),
                                 (1, b"", "lfmeta: standard output: cannot be written: %s\n" % why), words)

    def test_no_file_takes_the_place_of_a_closed_stream(self):
        self.run_line("exiftool -q -overwrite_original -EXIF:XPTitle=w photo.jpg")  # what is not taken is named
        words = "tiff in %s --like photo.jpg"
        run(LFMETA, *(words % "open").split(), cwd=self.dir)
        run("sh", "-c", '"$0" "$@" <&- >&- 2>&-', LFMETA, *(words % "closed").split(), cwd=self.dir)
        self.assertEqual((self.dir / "closed").read_bytes(), (self.dir / "open").read_bytes())

    def test_no_file_of_another_kind_is_replaced(self):
        self.good("settings write a.xmp --method 1")
        self.good("tiff in a.tif --method 4")
        self.good("exif photo.jpg a.bin")
        tiff, block = [(self.dir / name).read_bytes() for name in ["a.tif", "a.bin"]]
        raw = b"II*\0\x10\0\0\0CR\2\0" + bytes(4) + b"\1\0\0\1\3\0\1\0\0\0\5\0" + bytes(6)
        self.files(empty=b"", raw=raw, subs=structure({0x100: 5, 0x14A: 8}), one=b"x", big=b"MM\0*" + raw[4:], cut=tiff[:300],
                   side=b"<?xpacket begin=''?>\n" + (self.dir / "a.xmp").read_bytes())
        os.symlink("photo.jpg", self.dir / "link")
        writers = ["settings write %s --method 4", "tiff in %s", "exif photo.jpg %s"]
        allowed = [["a.xmp"], ["a.tif"], ["a.bin"]]
        for writer, fitting in zip(writers, allowed):
            pictures = {"a.tif", "photo.jpg", "link"}
            changed = {*fitting} | (pictures if writer == writers[0] else set())  # they get the settings
            for name in sorted(({"a.xmp", "a.bin", "raw", "subs", "one", "big", "cut", "side"} | pictures) - changed):
                with self.subTest(writer % name):
                    self.bad("; --force replaces it", writer % name)
            for name in ["empty", *fitting, "new"]:
                before = (self.dir / fitting[0]).read_bytes()
                self.good(writer % name)
                self.files(empty=b"", **{fitting[0]: before})
            (self.dir / "new").unlink()
        for line in ["exif a.bin a.bin", "tiff in a.tif --like a.tif", "tiff in a.tif --icc a.tif"]:
            self.bad("what the new file is made from", line)
        self.good("exif photo.jpg link --force")
        self.assertEqual((self.dir / "photo.jpg").read_bytes(), block)
        self.assertTrue((self.dir / "link").is_symlink())
        os.mkfifo(self.dir / "pipe")
        for line in ["exif a.tif pipe", "exif a.tif .", "exif pipe b", "exif . b", "tiff pipe b", "tiff in b --like pipe",
                     "tiff in b --icc pipe", "hdr pipe", "read pipe", "icc pipe",
                     "icc pipe --set in", "icc a.tif --set pipe", "settings show pipe", "settings insert pipe --method 1"]:
            done = run(LFMETA, *line.split(), cwd=self.dir, timeout=10)
            self.assertEqual((done[0], done[1], done[2].count("\n")), (1, b"", 1), (line, done))

    def test_standard_input_and_output(self):
        self.files(big=pnm(b"P6", bytes(range(250)) * 1080, size=(300, 300)))  # more than is copied at once
        for source, line in [("big", "tiff %s %s"), ("photo.jpg", "exif %s %s")]:
            self.good(line % (source, "named"))
            with open(self.dir / source, "rb") as stdin:
                done = subprocess.run([LFMETA, *(line % ("-", "-")).split()], cwd=self.dir, stdin=stdin, capture_output=True)
            self.assertEqual((done.returncode, done.stderr, done.stdout), (0, b"", (self.dir / "named").read_bytes()))
            (self.dir / "named").unlink()
        packet = run(LFMETA, "settings", "write", "-", "--method", "4")[1]
        for line, told in [("settings count -", b"1\n"), ("settings insert - --method 4", None)]:
            done = subprocess.run([LFMETA, *line.split()], cwd=self.dir, input=packet, capture_output=True)
            self.assertEqual((done.returncode, done.stderr, told or done.stdout), (0, b"", done.stdout), line)
        self.assertEqual(done.stdout.count(b"<lfst:Method>"), 2)
        self.assertEqual({*os.listdir(self.dir)}, {"photo.jpg", "in", "big"})

    @contextlib.contextmanager
    def waiting(self, target="new"):
        """lfmeta while it writes the target, of which a temporary file is there, and reads its standard input"""
        before = {*os.listdir(self.dir)}
        words = [LFMETA, "tiff", "-", target, "--force"]
        heard = lambda: [signal.signal(number, signal.SIG_DFL) for number in SIGNALS]  # by whomever this test is run
        with subprocess.Popen(words, cwd=self.dir, stdin=subprocess.PIPE, stderr=subprocess.DEVNULL, preexec_fn=heard) as tool:
            while not {*os.listdir(self.dir)} - before:
                self.assertIsNone(tool.poll())
                time.sleep(0.001)
            yield tool, *{*os.listdir(self.dir)} - before

    def test_temporary_files_do_not_outlive_the_tool(self):
        for number in SIGNALS:
            with self.waiting() as (tool, name):
                tool.send_signal(number)
            self.assertEqual((tool.returncode, {*os.listdir(self.dir)}), (-number, {"photo.jpg", "in"}))
        done = run(LFMETA, "tiff", "in", "new", cwd=self.dir,
                   preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (100, 100)))
        self.assertEqual((done[0], {*os.listdir(self.dir)}), (-signal.SIGXFSZ, {"photo.jpg", "in"}))

    def test_a_new_file_is_reached_through_no_name(self):
        self.files(victim=b"mine")
        with self.waiting() as (tool, name):
            (self.dir / name).unlink()
            (self.dir / name).symlink_to("victim")
            tool.communicate(COLOR)
        self.assertEqual((self.dir / "victim").read_bytes(), b"mine")

    def test_owner_group_and_permissions_of_a_replaced_file(self):
        root = os.geteuid() == 0
        write = [LFMETA, "settings", "write", "file", "--force", "--method", "4"]
        file = self.dir / "file"
        self.assertEqual(run(*write, cwd=self.dir, umask=0o027)[0], 0)
        self.assertEqual(file.stat().st_mode & 0o7777, 0o640)
        for mode, owner, group, more, expected in [  # owner and group only as root can give them
                (0o6775, None, None, {}, 0o775), (0o200, None, None, {}, 0o200), (0o3644, 12, 34, {}, (0o644, 12, 34)),
                (0o6664, 65534, 65534, dict(user=65534, group=65534, extra_groups=[]), (0o664, 65534, 65534)),
                (0o6664, 65534, 34, dict(user=65534, group=65534, extra_groups=[]), (0o604, 65534, 65534)),
                (0o6664, 65534, 34, dict(user=65534, group=65534, extra_groups=[34]), (0o664, 65534, 34)),
                (0o666, 12, 34, dict(user=65534, group=65534, extra_groups=[34]), (0o666, 65534, 34)),
                (0o200, 65534, 65534, dict(user=65534, group=65534, extra_groups=[]), (0o200, 65534, 65534))]:
            if owner is not None:
                if not root or (more and not os.access(LFMETA, os.X_OK)):
                    continue
                os.chown(self.dir, 65534, 65534)
                os.chown(file, owner, group)
            file.chmod(mode)
            with self.subTest(file=(oct(mode), owner, group), tool=more):
                self.assertEqual(run(*write, cwd=self.dir, **more), (0, b"", ""))
                now = file.stat()
                told = now.st_mode & 0o7777
                self.assertEqual((told, now.st_uid, now.st_gid) if owner else told, expected)


if __name__ == "__main__":
    unittest.main()
