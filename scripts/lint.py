#!/usr/bin/env python3
"""clang-tidy over the sources of the library and the tool, as many at a time as there are processors.

lint.py BUILD [--all]

Without --all: the sources that differ from upstream, or include a header that does; on upstream's tip
what its last commit touched. Where no history tells, all. BUILD has been built with Ninja and has
compile_commands.json.
"""
import concurrent.futures
import json
import os
import pathlib
import subprocess
import sys

root = pathlib.Path(__file__).resolve().parent.parent
build = pathlib.Path(sys.argv[1]).resolve()


def lines(*command):
    done = subprocess.run(command, cwd=root, capture_output=True, text=True)
    return done.stdout.splitlines() if done.returncode == 0 else None


def touched():
    """The files that differ, or None where that cannot be told."""
    try:
        base = lines("git", "merge-base", "HEAD", "origin/HEAD") or lines("git", "rev-parse", "HEAD")
        if base and base == lines("git", "rev-parse", "HEAD"):
            base = lines("git", "rev-parse", "--verify", "-q", "HEAD~1")
        if not base:
            return None
        changed = lines("git", "diff", "--name-only", "--no-renames", base[0])
        new = lines("git", "ls-files", "--others", "--exclude-standard")
    except FileNotFoundError:  # no git
        return None
    return None if changed is None or new is None else {(root / name).resolve() for name in changed + new}


def included():
    """Source -> all files that it includes, as the last build noted them."""
    notes = subprocess.run(["ninja", "-C", build, "-t", "deps"], capture_output=True, text=True, check=True).stdout
    for note in notes.split("\n\n"):
        files = [(build / line.strip()).resolve() for line in note.splitlines()[1:]]
        if files:
            yield files[0], set(files)


sources = {pathlib.Path(entry["file"]).resolve() for entry in json.loads((build / "compile_commands.json").read_text())}
sources = {source for source in sources if source.is_relative_to(root / "src") or source.is_relative_to(root / "tools")}
changed = None if "--all" in sys.argv[2:] else touched()
if changed is not None and not any(file.name in (".clang-tidy", "CMakeLists.txt") for file in changed):
    sources &= {source for source, files in included() if files & changed}


def tidy(source):
    return subprocess.run(["clang-tidy", "-quiet", "-p", build, source], capture_output=True, text=True)


print(f"{len(sources)} files")
with concurrent.futures.ThreadPoolExecutor(len(os.sched_getaffinity(0))) as pool:
    faults = [done.stdout + done.stderr for done in pool.map(tidy, sorted(sources)) if done.returncode]
print("".join(faults))
sys.exit(bool(faults))
