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
import time

RESULTS, LFMETA, ALONE = pathlib.Path(sys.argv[1]), sys.argv[2], sys.argv[3]
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
    rows = [(f"24 Mpx, exponents {lowest} to {highest}", f"BM_Exponents/sse2:0/Mpx:24/from:{lowest}/to:{highest}")
            for lowest, highest in ((122, 135), (122, 141), (0, 255))]
    rows.append(("0.3 Mpx in the cache", "BM_InCache/sse2:0/width:640/from:122/to:133"))
    for what, name in rows:
        run = runs[name]
        yield (f"Brightness of {what}", "one read of the memory", run["per_read"],
               {"pixel by pixel": run["loop_per_read"]})


def seconds(command, folder):
    """Of the processor, and elapsed: the smallest of some runs."""
    runs = []
    for _ in range(3):
        before, start = resource.getrusage(resource.RUSAGE_CHILDREN), time.monotonic()
        subprocess.run(command, cwd=folder, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        elapsed, after = time.monotonic() - start, resource.getrusage(resource.RUSAGE_CHILDREN)
        runs.append((after.ru_utime - before.ru_utime + after.ru_stime - before.ru_stime, elapsed))
    return [min(column) for column in zip(*runs)]


def tool(count=5000, times=4):
    with tempfile.TemporaryDirectory(dir="/dev/shm") as folder:
        names = [f"{i}.jpg" for i in range(count)]
        for name in names:
            shutil.copy(ROOT / "examples/photo.jpg", os.path.join(folder, name))
        few, names = names[:count // 10], names * times
        read = [LFMETA, "read", "--json"]
        ours, elapsed = seconds(read + ["-j1"] + names, folder)
        limit = seconds([ALONE] + names, folder)[0]
        peers = {"exiv2": ["exiv2", "-q", "-PEkt"], "exiftool": ["exiftool", "-fast2", "-json"]}
        beside = {name: seconds(command + few, folder)[0] * (len(names) / len(few)) / limit
                  for name, command in peers.items()}
        yield f"lfmeta read --json -j1, {len(names)} photographs", "the library alone", ours / limit, beside
        yield "the same with -j2, elapsed", "-j1", seconds(read + ["-j2"] + names, folder)[1] / elapsed, {}


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
