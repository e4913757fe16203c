"""Seconds of processor time that lfmeta, exiftool and exiv2 take for the same jobs on 2,000 photographs: the table in
the README. Run it as: python3 benchmarks/tools.py LFMETA [WORD OF A JOB ...]"""

import os
import pathlib
import resource
import shutil
import statistics
import struct
import subprocess
import sys
import tempfile

LFMETA, WORDS = os.path.abspath(sys.argv[1]), sys.argv[2:]
PHOTO = (pathlib.Path(__file__).resolve().parents[1] / "examples/photo.jpg").read_bytes()
COUNT, BYTES = 2000, 500_000
NAMESPACE = "http://ns.lumenforge.org/lumenforge_settings01"
CONFIG = """%Image::ExifTool::UserDefined = ('Image::ExifTool::XMP::Main' => {
  lfst => { SubDirectory => { TagTable => 'Image::ExifTool::UserDefined::lfst' } } });
%Image::ExifTool::UserDefined::lfst = (GROUPS => { 0 => 'XMP', 1 => 'XMP-lfst' },
  NAMESPACE => { 'lfst' => 'URI' }, WRITABLE => 'string', Boost => { });
"""
JOBS = {
    "all metadata, as text for programs": [
        "LFMETA read -r --json .", "exiftool -fast2 -r -json .", "exiv2 -q -PEIXkt *.jpg"],
    "model, ISO speed and exposure": [
        "LFMETA read -r --csv --fields file,model,iso,exposureText .",
        "exiftool -fast2 -r -csv -Model -ISO -ExposureTime .",
        "exiv2 -q -Pt -g Image.Model -g Photo.ISO -g Photo.ExposureTime *.jpg"],
    "thumbnails into a folder": [
        "LFMETA read -r --csv --fields file --thumbnail ../out .",
        "exiftool -r -b -ThumbnailImage -w ../out/%f.jpg .", "exiv2 -q -et -l ../out *.jpg"],
    "exposure brackets": ["LFMETA brackets ."],
    "one setting changed": [
        "LFMETA settings edit --set Boost=3 *.jpg",
        "exiftool -config ../config -r -overwrite_original -XMP-lfst:Boost=3 .",
        "exiv2 -q -M 'reg lfst URI' -M 'set Xmp.lfst.Boost 3' mo *.jpg"],
    "a photograph's metadata into a TIFF": [
        "for f in *.jpg; do LFMETA tiff ../in.ppm ../out/${f%jpg}tif --like $f; done",
        "exiftool -q -overwrite_original -r -ext tif -tagsFromFile %d%f.jpg -all:all ."],
    "a profile into a TIFF": [
        "LFMETA icc --set ../p.icc *.tif",
        "exiftool -q -overwrite_original -r -ext tif '-ICC_Profile<=../p.icc' .",
        "for f in *.tif; do ln -s ../p.icc ${f%tif}icc; done; exiv2 -q -iC in *.tif"],
}


def photographs(folder, job):
    folder.mkdir()
    (folder.parent / "out").mkdir()
    scan = PHOTO[:-2].ljust(BYTES - 2, b"\x55") + PHOTO[-2:]
    for i in range(COUNT):
        second, step = divmod(i, 3)
        photo = scan.replace(b"07:14:59", b"%02d:%02d:%02d" % (second // 360, second // 6 % 60, second % 6 * 10), 1)
        exposure = bytes.fromhex("00000001 0000") + (250, 1000, 63)[step].to_bytes(2, "big")
        photo = photo.replace(bytes.fromhex("00000001 000000fa"), exposure, 1)
        (folder / f"{i:04}.jpg").write_bytes(photo)
        if "TIFF" in job:
            shutil.copy(folder.parent / "in.tif", folder / f"{i:04}.tif")


def seconds(job, command, folder):
    photographs(folder, job)
    command = command.replace("LFMETA", LFMETA).replace("URI", NAMESPACE)
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    subprocess.run(command, cwd=folder, shell=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    shutil.rmtree(folder)
    shutil.rmtree(folder.parent / "out")
    return after.ru_utime - before.ru_utime + after.ru_stime - before.ru_stime


with tempfile.TemporaryDirectory(dir="/dev/shm") as place:
    pathlib.Path(place, "config").write_text(CONFIG.replace("URI", NAMESPACE))
    profile = struct.pack(">I4xI4s4s4s12x4s92x", 132, 0x02400000, b"mntr", b"RGB ", b"XYZ ", b"acsp")
    pathlib.Path(place, "p.icc").write_bytes(profile)
    pathlib.Path(place, "in.ppm").write_bytes(b"P6 400 400 255\n" + bytes(480000))
    subprocess.run([LFMETA, "tiff", "in.ppm", "in.tif"], cwd=place, check=True)
    for job, commands in JOBS.items():
        if WORDS and not any(word in job for word in WORDS):
            continue
        for command in commands:
            median = statistics.median(seconds(job, command, pathlib.Path(place, "photos")) for _ in range(3))
            print(f"{job:36} {median:8.2f} s  {command}", flush=True)
