"""One table of ratios from the results of the benchmark programs, and of lfmeta beside other tools."""

import json
import os
import pathlib
import platform
import resource
import shutil
import subprocess
import sys
import tempfile

RESULTS, LFMETA = pathlib.Path(sys.argv[1]), sys.argv[2]
ROOT = pathlib.Path(__file__).resolve().parent.parent


def results(program):
    """What a program has measured: a name without its settings -> time and counters."""
    runs = json.loads((RESULTS / f"{program}.json").read_text())["benchmarks"]
    failed = [run["name"] for run in runs if run.get("error_occurred")]
    if failed:
        sys.exit(f"{program}: {failed[0]} failed")
    return {run["name"].split("/iterations")[0].replace("/manual_time", ""): run for run in runs}


def reading():
    ours, peers = results("reading_bench"), results("reading_peers_bench")
    for kind, what in (("jpeg_5MB", "a JPEG of 5 MB"), ("tiff_6MB", "a TIFF of 6 MB"), ("psd_8MB", "a PSD of 8 MB")):
        beside = {library: peers[name]["ratio"] for library in ("libexif", "exiv2")
                  if (name := f"readPhoto/{kind}_{library}") in peers}
        yield f"Metadata of {what}", "open, one read, close", ours[f"readPhoto/{kind}"]["ratio"], beside


def settings():
    ours, peers = results("settings_bench"), results("settings_peers_bench")
    for size, what in ((4096, "4 KB"), (65536, "64 KB"), (4194304, "4 MB")):
        limit = ours[f"oneMemchr/{size}"]["cpu_time"]
        beside = {library: peers[f"compare/{library}/{size}"]["ratio"] for library in ("pugixml", "expat")}
        yield f"Settings from a packet of {what}", "one memchr", ours[f"readRecord/{size}"]["cpu_time"] / limit, beside
    limit = ours["toCharsPerValue"]["cpu_time"]
    yield ("Settings packet measured and written", "one to_chars a value",
           ours["embedMeasureAndWrite"]["cpu_time"] / limit,
           {"one snprintf a line": ours["snprintfPerLine"]["cpu_time"] / limit})


def tiff():
    for name, run in results("tiff_bench").items():
        channels, bits, narrow = (part.split(":")[1] for part in name.split("/")[1:4])
        what = f"{channels} x 16 to 8 bits" if narrow == "1" else f"{channels} x {bits} bits"
        ours = run["per_write"]
        yield (f"TIFF file of 24 Mpx, {what}", "write calls of 1 MiB", ours,
               {"libtiff, strips of 1 MiB": ours / run["per_libtiff_strips"],
                "libtiff, one strip": ours / run["per_libtiff_one_strip"]})


def hdr():
    runs = results("hdr_bench")
    for lowest, highest in ((122, 135), (122, 141), (0, 255)):
        run = runs[f"BM_Exponents/sse2:0/Mpx:24/from:{lowest}/to:{highest}"]
        yield (f"Brightness of 24 Mpx, exponents {lowest} to {highest}", "one read of the memory", run["per_read"],
               {"pixel by pixel": run["loop_per_read"]})


def processor_seconds(command, folder):
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    subprocess.run(command, cwd=folder, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return after.ru_utime - before.ru_utime + after.ru_stime - before.ru_stime


def tool(count=2000):
    with tempfile.TemporaryDirectory() as folder:
        names = [f"{i}.jpg" for i in range(count)]
        for name in names:
            shutil.copy(ROOT / "examples/photo.jpg", os.path.join(folder, name))
        commands = {"": ["cat"], "lfmeta": [LFMETA, "read", "--json"], "exiv2": ["exiv2", "-q", "-PEkt"],
                    "exiftool": ["exiftool", "-fast2", "-json"]}
        seconds = {name: min(processor_seconds(command + names, folder) for _ in range(3))
                   for name, command in commands.items()}
    limit, ours = seconds.pop(""), seconds.pop("lfmeta")
    beside = {name: time / limit for name, time in seconds.items()}
    yield f"lfmeta read --json, {count} photographs", "cat", ours / limit, beside


def number(ratio):
    return f"{ratio:.2f}" if ratio < 10 else f"{ratio:.0f}"


def processor():
    for line in open("/proc/cpuinfo"):
        if line.startswith("model name"):
            return line.split(":")[1].strip()
    return platform.machine()


print(f"{processor()}, {os.cpu_count()} cores, Linux {platform.release()}\n")
print("| work | 1.00 is | here | others |\n|---|---|---|---|")
for part in (reading, settings, tiff, hdr, tool):
    for work, limit, ours, beside in part():
        others = ", ".join(f"{name} {number(ratio)}" for name, ratio in beside.items())
        print(f"| {work} | {limit} | {number(ours)} | {others} |")
