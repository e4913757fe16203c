"""LumenforgeMetaLib from Python: its records and functions as the C header has them.

    library = lumenforge.load()
    info = lumenforge.ExifInfo()
    if library.getExifData(b"photo.jpg", lumenforge.JPEG, info) == 1:
        print(info.model.decode(), info.exposureTime)

Records are passed as they are, texts and buffers to be read as bytes, buffers to be written as
ctypes.create_string_buffer(size), numbers to be written as ctypes.byref(number). What each function
does and returns stands in LumenforgeMetaLib.h.
"""
from ctypes import (CDLL, POINTER, Structure, c_char, c_char_p, c_float, c_int, c_int32, c_long,
                    c_uint, c_uint8, c_uint32, c_void_p)

TIFF, JPEG, PSD = 0, 1, 2
SELECT_METHOD, SELECT_LENS = -1, 100


def fields(text):
    """The fields of a record from their declarations in C."""
    types = {"float": c_float, "char": c_char, "uint8_t": c_uint8, "int32_t": c_int32,
             "uint32_t": c_uint32}
    for declaration in text.split(";"):
        type_, name = declaration.split()
        name, _, size = name.rstrip("]").partition("[")
        yield name, types[type_] * int(size) if size else types[type_]


class ExifInfo(Structure):
    _fields_ = list(fields("""
        int32_t valueSource; float exposureTime; float fNumber; uint32_t iso; uint32_t reserved;
        float focalLength; uint32_t focalLength35mm; float focalPlaneXResolution;
        uint32_t focalPlaneResolutionUnit; char model[65]; char dateTimeOriginal[20];
        uint32_t thumbWidth; uint32_t thumbHeight; uint32_t thumbRowBytes; uint32_t thumbLength;
        uint32_t thumbOffset; uint32_t orientation; uint32_t iptcLength; uint32_t iptcOffset;
        char gpsLatitudeRef; uint32_t gpsLatitude[6]; char gpsLongitudeRef; uint32_t gpsLongitude[6];
        uint8_t gpsAltitudeRef; uint32_t gpsAltitude[2]; uint32_t gpsTimeStamp[6];
        char gpsDateStamp[11]; uint32_t xmpLength; uint32_t xmpOffset; char lens[256]"""))


class MetadataBuf(Structure):
    _fields_ = list(fields("""
        int32_t exposureTime[2]; int32_t fNumber[2]; uint32_t unused4; uint32_t iso;
        int32_t valueSource; uint32_t unused7[3]; int32_t focalLength[2]; uint32_t focalLength35mm;
        int32_t focalPlaneXResolution[2]; uint32_t focalPlaneResolutionUnit; uint32_t thumbOffset;
        uint32_t thumbLength; uint32_t iptcOffset; uint32_t iptcLength; uint32_t orientation;
        uint32_t xmpOffset; uint32_t xmpLength; char model[64]; char dateTimeOriginal[20];
        char lens[64]"""))


class GpsBuf(Structure):
    _fields_ = list(fields("""
        uint32_t latitude[6]; uint32_t longitude[6]; uint32_t altitude[2]; uint32_t timeStamp[6];
        char latitudeRef; char longitudeRef; uint8_t altitudeRef; uint8_t reserved83;
        char dateStamp[11]; uint8_t reserved95"""))


class TifImageInfo(Structure):
    _fields_ = list(fields("""
        int32_t width; int32_t height; int32_t channels; int32_t bitsPerSample; int32_t resolution;
        int32_t unused6; int32_t iccLength; int32_t conversion; int32_t unused9[2];
        int32_t orientation"""))


SettingsParams = c_float * 60

EXIF, META, GPS, IMAGE = map(POINTER, (ExifInfo, MetadataBuf, GpsBuf, TifImageInfo))
INT, FLOAT = POINTER(c_int), POINTER(c_float)  # one or more, read or written
BYTES = FILE = c_void_p
TEXT = c_char_p

# The arguments of each function.
FUNCTIONS = {
    "getExifData": (TEXT, c_int, EXIF),
    "get_exif_data": (TEXT, c_int, META, GPS),
    "metadataBufFromExifInfo": (EXIF, META, GPS),
    "time_from_datetime": (TEXT, c_long, FLOAT),
    "get_profile_name": (c_int, BYTES, TEXT),
    "init_exifInfo": (EXIF,),
    "parse_exif_data": (FILE, c_int, c_int, c_int, EXIF),
    "parse_gps_data": (FILE, c_int, c_int, c_int, EXIF),
    "parse_photoshop_data": (FILE, c_int, EXIF),
    "read_iptc": (TEXT, c_int, c_int, BYTES),
    "parse_image_description": (FILE, c_int, EXIF),
    "fgetm2": (FILE,),
    "fgetm4": (FILE,),
    "fgetmi2": (FILE, c_int),
    "fgetmi4": (FILE, c_int),
    "def_param": (c_int, FLOAT),
    "searchForTag": (c_int, TEXT, c_int, BYTES, c_int, c_int, INT, FLOAT),
    "get_settings_from_xmp": (c_int, c_int, BYTES, TEXT, FLOAT),
    "extract_xmp": (TEXT, c_int, c_int, BYTES),
    "read_xmp": (TEXT, c_int, FLOAT),
    "lfsettings_occurences_in_xmp": (c_int, BYTES),
    "embed_xmp": (c_int, c_int, FLOAT, c_int, TEXT, TEXT),
    "write_xmp": (TEXT, c_int, FLOAT),
    "insert_xmp": (c_int, c_int, FLOAT, c_int, c_int, TEXT),
    "get_exif_count": (META, INT, INT, GPS, *[INT] * 7, TEXT),
    "write_exif_buf": (*[c_int] * 9, META, GPS, TEXT, BYTES),
    "add_iptc_keyword": (c_int, BYTES, c_int, BYTES, BYTES),
    "buf2tif": (BYTES, IMAGE, c_int, BYTES, META, GPS, c_int, BYTES, c_int, FLOAT, c_int, BYTES,
                TEXT),
    "get_tif_tag": (FILE, c_int, INT, INT),
    "update_tif_profile": (c_int, BYTES, TEXT),
    "hdrMinMax": (c_int, c_int, BYTES, FLOAT),
}


def load(path="libLumenforgeMetaLib.so.1"):
    """The library, by its path or where the system finds it."""
    library = CDLL(path)
    for name, arguments in FUNCTIONS.items():
        function = getattr(library, name)
        function.argtypes = arguments
        function.restype = c_uint if name.startswith("fget") else c_int
    return library
