"""lfmeta's command line, and how it reads and replaces files."""
import json, os, re, unittest

from support.tool import *


class ToolFiles(ToolTest):
    def test_command_line(self):
        for expected, line in [
                ("lfmeta: raed is no command, did you mean read?; see lfmeta --help", "raed photo.jpg"),
                ("lfmeta: shwo is no command, did you mean show?; see lfmeta settings --help", "settings shwo in"),
                ("lfmeta: --rceursive is no option, did you mean --recursive?; see", "read --rceursive in"),
                ("lfmeta: -\\x1b[31mHI\\xff.jpg is no option; see lfmeta read --help", "read '-\x1b[31mHI\udcff.jpg'"),
                ("lfmeta: c is one argument too many; see lfmeta exif", "exif a b c"), ("OUT.tif is required", "tiff in"),
                ("needed: read, settings", ""), ("show, write", "settings"), ("no command of lfmeta", "help foo"),
                ("--depth: \\x1b[31m not in", "tiff in new --depth '\x1b[31m'"),
                ("--resolution: 0x10 is no whole number from 1 to 2147483;", "tiff in new --resolution 0x10"),
                ("from 1 to 256", "read in -j 0"), ("from 1 to 256", "read in -j 257"),
                ("from 1 to 99", "settings insert in --method 1 --number '[1]'")]:
            self.bad(expected, line, status=2)
        self.files(**{"[2021]": PHOTO, "[a,b]": PHOTO, "\x01x": PHOTO, "-r": PHOTO})
        told = self.good("read --json [2021] '[a,b]' -- '\x01x' -r").splitlines()
        self.assertEqual([json.loads(line)["file"] for line in told], ["[2021]", "[a,b]", "\x01x", "-r"])
        self.good("tiff in [o] --resolution 010 --keyword [k,l]")
        self.assertEqual(self.exiftool("[o]", "-XResolution -Keywords"), {"XResolution": 10, "Keywords": "[k,l]"})
        self.assertRegex(self.good("-V"), r"^lfmeta \d+\.\d+\.\d+\n$")
        self.assertEqual(self.good("help"), self.good("--help"))
        self.assertEqual(self.good("help settings write"), self.good("settings write -h"))
        for line in ["", "read", "settings", "settings insert", "tiff", "icc", "exif", "hdr", "help"]:
            told = self.good("help " + line)
            self.assertIn("\nUsage: lfmeta %s" % line, told)
            self.assertLessEqual(max(map(len, told.splitlines())), 80, told)

    def test_what_comes_from_outside_is_printed_harmlessly(self):
        shown = b"~ \xc2\xa0\xc3\xbc\xed\x9f\xbf\xee\x80\x80\xe2\x80\x90\xf0\x9f\x98\x80\xf3\xa0\x82\x80\xf4\x8f\xbf\xbf"
        escaped = ["\x1f", "\x7f", "\x80", "\x9b", "\x9f", "\xad", "\u061c", "\u200b", "\u200f", "\u2028", "\u202e",
                   "\u2066", "\ufeff", "\U000e0001"]
        broken = b"\x9b \xff \xc1\x81 \xc3 \xe0\x9f\xbf \xed\xa0\x80 \xf0\x8f\xbf\xbf \xf4\x90\x80\x80 \xf8 \xe2\x82"
        raw = [shown, *map(str.encode, escaped), broken]
        texts = [shown, *(re.sub(b"[^ ]", lambda c: b"\\x%02x" % ord(c[0]), text) for text in raw[1:])]
        names = [os.fsdecode(text) for text in raw]
        self.files(**dict.fromkeys(names, PHOTO))
        done = subprocess.run([LFMETA, "read", *names], cwd=self.dir, capture_output=True)
        told = [line[:-7] for line in done.stdout.split(b"\n") if line.endswith(b" (JPEG)")]
        self.assertEqual(told, texts)
        done = subprocess.run([LFMETA, "read", "--json", *names], cwd=self.dir, capture_output=True)
        lines = done.stdout.splitlines()
        self.assertEqual([json.loads(line)["file"] for line in lines],
                         [text.decode(errors="replace") for text in raw])
        for character, line in zip(escaped, lines[1:]):
            self.assertTrue(line.lower().startswith(b'{"file":' + json.dumps(character).encode()), line)

    def test_a_report_that_cannot_be_written_is_a_failure(self):
        with open("/dev/full", "wb") as full:
            done = subprocess.run([LFMETA, "read", EXAMPLE], stdout=full, stderr=subprocess.PIPE)
        self.assertEqual((done.returncode, done.stderr),
                         (1, b"lfmeta: standard output: cannot be written: No space left on device\n"))


if __name__ == "__main__":
    unittest.main()
