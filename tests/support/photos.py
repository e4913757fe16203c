"""Photographs made tag by tag, for what no camera at hand has written."""
import struct

XMP = b"http://ns.adobe.com/xap/1.0/\0"
FRAME = bytes.fromhex("ffc0000b08 00f0 0140 01011100")  # 320 x 240
SCAN = bytes.fromhex("ffda000801010000003f00 00 ffd9")
LENS = b'<x xmlns:aux="http://ns.adobe.com/exif/1.0/aux/" aux:Lens="In the packet"/>'


def value(what, order):  # -> type, count, bytes
    if isinstance(what, str):
        what = what.encode() + b"\0"
    if isinstance(what, bytes):
        return 2, len(what), what
    if isinstance(what, int):
        return (3, 1, struct.pack(order + "H", what)) if what < 65536 else (4, 1, struct.pack(order + "I", what))
    if len(what) == 3:  # as it is
        return what
    return 10 if what[0] < 0 else 5, 1, struct.pack(order + ("ii" if what[0] < 0 else "II"), *what)


def directory(entries, at, order, following=0):
    """A TIFF directory and its values behind it, the first byte at offset `at`."""
    head, tail = struct.pack(order + "H", len(entries)), b""
    behind = at + 6 + 12 * len(entries)
    for tag, what in sorted(entries.items()):
        kind, count, data = value(what, order)
        if len(data) > 4:
            place, tail = behind + len(tail), tail + data + bytes(len(data) % 2)
            data = struct.pack(order + "I", place)
        head += struct.pack(order + "HHI", tag, kind, count) + data.ljust(4, b"\0")
    return head + struct.pack(order + "I", following) + tail


def tiff(first=None, exif=None, second=None, order="<"):
    """The first directory, its EXIF directory and the second (the thumbnail's)."""
    first = dict(first or {})
    if exif is not None:
        first[0x8769] = 4, 1, bytes(4)
    size = len(directory(first, 8, order))
    exif_data = b"" if exif is None else directory(exif, 8 + size, order)
    second_data = b"" if second is None else directory(second, 8 + size + len(exif_data), order)
    if exif is not None:
        first[0x8769] = 4, 1, struct.pack(order + "I", 8 + size)
    following = 8 + size + len(exif_data) if second is not None else 0
    return ((b"II" if order == "<" else b"MM") + struct.pack(order + "HI", 42, 8)
            + directory(first, 8, order, following) + exif_data + second_data)


def segment(code, data, fill=1):
    return b"\xff" * fill + struct.pack(">BH", code, len(data) + 2) + data


def jpeg(*segments):
    return b"\xff\xd8" + b"".join(segments) + FRAME + SCAN


def app1(exif, fill=1):
    return segment(0xE1, b"Exif\0\0" + exif, fill)


def resource(number, data, name=b""):
    name = bytes([len(name)]) + name
    return (b"8BIM" + struct.pack(">H", number) + name + bytes(len(name) % 2)
            + struct.pack(">I", len(data)) + data + bytes(len(data) % 2))


def psd(*resources, channels=3, mode=3):
    whole = b"".join(resources)
    return (b"8BPS\0\1" + bytes(6) + struct.pack(">HIIHHII", channels, 240, 320, 8, mode, 0, len(whole))
            + whole + bytes(4))


def profile(space, tag, kind=b"mntr"):  # an ICC profile of one tag, its description
    body = bytes(4) + b"lcms\2\x10\0\0" + kind + space + b"XYZ " + bytes(12) + b"acsp" + bytes(88) + struct.pack(
        ">I4sII", 1, b"desc", 144, len(tag)) + tag
    return struct.pack(">I", len(body)) + body[4:]


def plain(text, utf16=""):
    return b"desc" + struct.pack(">II", 0, len(text) + 1) + text + b"\0" + struct.pack(
        ">II", 0, len(utf16) + 1) + (utf16 + "\0").encode("utf-16-be") + bytes(70)
