"""The manual in the public header, and the reference made from it.   reference_test.py HEADER [REFERENCE]"""
import pathlib, re, subprocess, sys

HEADER = pathlib.Path(sys.argv[1]).read_text()
FUNCTIONS = re.findall(r"/\*((?:(?!\*/).)*)\*/\n((?:LUMENFORGE_API [^;]*;\n)+)", HEADER, re.S)
NAMES = re.findall(r"^LUMENFORGE_API [\w ]+?(\w+)\(", HEADER, re.M)
assert len(NAMES) == 31, NAMES

# Every negative result that a function lists stands in the table by number, and the other way round.
listed = set()
for comment, declarations in FUNCTIONS:
    results = re.sub(r"with selector -1|for -1:", "", comment[comment.rfind("Returns"):])
    listed |= {(re.search(r"(\w+)\(", declarations)[1], int(number))
               for number in re.findall(r"(?<![-\w])-\d+", results)}
table = re.search(r"Negative results, by number.*?\n \*\n(.*?)\n \*\n", HEADER, re.S)[1]
stated = {(name, int(number)) for row in re.split(r"\n(?= \* {2,5}-)", table)
          for number in re.findall(r"-\d+", row) for name in NAMES if re.search(r"\b%s\b" % name, row)}
assert listed == stated, listed ^ stated

if len(sys.argv) > 2:  # Doxygen was there, and had nothing to warn of
    pages = "".join(page.read_text() for page in pathlib.Path(sys.argv[2], "html").glob("group__*.html"))
    for name in NAMES:
        assert re.search(r'<h2 class="memtitle">.*?</span>%s\(\)' % name, pages), name
        page = pathlib.Path(sys.argv[2], "man", "man3", name + ".3")
        shown = subprocess.run(["mandoc", "-Tascii", page.parents[1] / page.read_text().split()[1]],
                               capture_output=True, text=True).stdout
        assert len(re.findall(r"\b%s\b" % name, re.sub(".\b", "", shown))) >= 2, name
    written = [re.sub(r"\W+", "", text) for comment, _ in FUNCTIONS for text in comment.split("\n")]
    shown = re.sub(r"\W+", "", re.sub(r"<[^>]*>|&\w+;", "", pages))
    assert all(text in shown for text in written if len(text) > 40 and "<" not in text)
