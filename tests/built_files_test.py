"""What the built and installed files themselves say: they are hardened, look for libraries beside themselves
only, and name no folder of the machine that they were built on.   built_files_test.py FOLDER_NEVER_NAMED FILE..."""
import re, subprocess, sys

folder, *files = sys.argv[1:]
assert files


def told(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True, env={"LC_ALL": "C"}).stdout


for file in files:
    said = told("readelf", "-Wldn", file)
    symbols = told("nm", "-D", file)
    data = open(file, "rb").read()
    for path in re.findall(r"\((?:RUNPATH|RPATH)\).*\[(.*)\]", said):
        assert all(re.fullmatch(r"\$ORIGIN(/.*)?", element) for element in path.split(":")), (file, path)
    assert re.search(r"\(FLAGS_1\).*\bNOW\b", said), f"{file}: lazy relocations"
    assert re.search(r"^ *GNU_RELRO ", said, re.M), f"{file}: writable relocations"
    assert re.search(r"^ *GNU_STACK .* RW +0x", said, re.M), f"{file}: executable stack"
    assert not re.search(r"^ *LOAD .* RWE +0x", said, re.M), f"{file}: writable code"
    # (Debian 12's start-up files have none and so unmark every program, but calls land on those of ours.)
    assert data.count(b"\xf3\x0f\x1e\xfa") > 30, f"{file}: no landing pads"
    assert "__stack_chk_fail" in symbols, f"{file}: no stack protector"
    assert re.search(r" U __\w+_chk@", symbols.replace("__stack_chk_fail", "")), f"{file}: unchecked calls"
    assert folder.encode() not in data, f"{file}: names {folder}"
