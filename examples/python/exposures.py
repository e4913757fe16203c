#!/usr/bin/env python3
"""Lists the exposures of the photographs in a folder: exposures.py FOLDER"""
import pathlib, sys
import lumenforge

library = lumenforge.load()
kinds = {".jpg": lumenforge.JPEG, ".jpeg": lumenforge.JPEG, ".tif": lumenforge.TIFF, ".psd": lumenforge.PSD}
for photo in sorted(pathlib.Path(sys.argv[1]).iterdir()):
    kind, info = kinds.get(photo.suffix.lower()), lumenforge.ExifInfo()
    if kind is not None and library.getExifData(bytes(photo), kind, info) == 1 and info.exposureTime > 0:
        print(f"{photo.name!a}  {info.exposureTime:.3g} s  f/{info.fNumber:.3g}  ISO {info.iso}")
