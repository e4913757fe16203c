"""Holds the header and the built library against the committed description of the ABI.
boundary_test.py ABI HEADER_DIRECTORY LIBRARY TABLE_OF_CALLS SOURCES"""
import pathlib, re, subprocess, sys

abi_file, include, library, calls, sources = sys.argv[1:]
checks = ["#include <LumenforgeMetaLib.h>"]
abi = open(abi_file).read()
for number, line in enumerate(abi.splitlines()):
    if line.startswith("int ") or line.startswith("unsigned "):
        checks.append(line)  # a prototype that differs from the header's does not compile
    elif field := re.fullmatch(r"(\w+) (\d+) (\w+) (\w+)(\[\d+\])?", line):
        record, offset, type_, name, array = field.groups(default="")
        checks.append(f"typedef {type_} type_{number}{array}; static {record} in_{number};")
        checks.append(f"type_{number} *const at_{number} = &in_{number}.{name};")
        checks.append(f"typedef char check_{number}[offsetof({record}, {name}) == {offset} ? 1 : -1];")
    elif size := re.fullmatch(r"(\w+) (\d+)", line):
        checks.append(f"typedef char check_{number}[sizeof({size[1]}) == {size[2]} ? 1 : -1];")
    elif line and not line.startswith("#") and not line.startswith("soname"):
        sys.exit(f"what is {line!r}?")
for compiler in "cc -std=c99 -xc", "c++ -std=c++20 -xc++":
    subprocess.run(f"{compiler} -Wall -Wextra -Wpedantic -Werror -fsyntax-only".split() +
                   ["-I", include, "-"], input="\n".join(checks), text=True, check=True)

functions = sorted(re.findall(r"(\w+)\(", abi))
symbols = subprocess.run(["nm", "-D", "--defined-only", library], capture_output=True, text=True).stdout
assert re.findall(r" T (\w+)", symbols) == functions and symbols.count("\n") == 31, symbols
assert sorted(re.findall(r'^    \{"(\w+)"', open(calls).read(), re.M)) == functions
dynamic = subprocess.run(["readelf", "-d", library], capture_output=True, text=True).stdout
assert re.search(r"SONAME.*\[(.+)\]", dynamic)[1] == re.search(r"^soname (.+)", abi, re.M)[1]

# CONTRIBUTING.md tells which file holds which function.
told = {(path, function) for path, cell in re.findall(r"^\| `(src/.+?)` \| (.+) \|$",
                                                      open(sources + "/CONTRIBUTING.md").read(), re.M)
        for function in re.findall(r"\w+", cell)}
assert sorted(function for _, function in told) == functions
for path, function in told:
    assert re.search(rf"^\w.* \**{function}\(", open(f"{sources}/{path}").read(), re.M), (path, function)

# Arrows go one way, as docs/architecture.md draws them.
wings = dict.fromkeys(["reading", "tiff", "settings", "hdr"], {"base", "format"})
roads = {("reading", "settings/packet.h"), ("tiff", "settings/packet.h"), ("tiff", "reading/tag_lookup.h")}
tool = {"commands": {"base", "photos", "pictures"}, "photos": {"base"}, "pictures": {"base"}, "base": set()}
for top, arrows in ("src", {**wings, "format": {"base"}, "base": set()}), ("tools/lfmeta", tool):
    for path in pathlib.Path(sources, top).glob("*/*.*"):
        folder = path.parent.name
        for file, other in re.findall(r'^#include "((\w+)/.+)"', path.read_text(), re.M):
            assert other == folder or other in arrows[folder] or (folder, file) in roads, (path, file)
