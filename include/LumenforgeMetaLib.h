/*
 * LumenforgeMetaLib: the image metadata of an HDR merging and tone-mapping application.
 *
 * Reads the metadata of JPEG, TIFF and PSD photographs into fixed records, keeps tone-mapping
 * settings in XMP, writes finished images as TIFF with all their metadata, replaces ICC profiles in
 * place and measures HDR buffers.
 *
 * Conventions
 *   - Every function returns a 32-bit integer: non-negative on success, a negative code on failure.
 *     Each function lists its codes; below, they stand by number.
 *   - Every record and buffer belongs to the caller; the library keeps none, and frees what it
 *     allocates before it returns. Every file that a call opens is closed when it returns, and on
 *     exec meanwhile. A call needs less than 32 KiB of stack.
 *   - No global state, no threads, no callbacks: calls may run at the same time as long as they
 *     share no output record, buffer or file.
 *   - Pointers must not be null unless a comment says that they may be.
 *   - Files are hostile until checked: whatever a file holds, a call reads within it, and its time
 *     and memory are bounded by the file's size. A value that the file ends before leaves its field
 *     as it was; a signature that the file ends before does not match.
 *   - The host's locale does not matter and is never changed.
 */
#ifndef LUMENFORGE_META_LIB_H
#define LUMENFORGE_META_LIB_H

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <time.h>

#if defined(LUMENFORGE_BUILDING_LIBRARY)
#define LUMENFORGE_API __attribute__((visibility("default")))
#else
#define LUMENFORGE_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------
 * Names of numbers
 * ------------------------------------------------------------------------------------------ */

/* The version of this header. The major number is that of the shared library's SONAME. */
#define LUMENFORGE_VERSION_MAJOR 1
#define LUMENFORGE_VERSION_MINOR 0
#define LUMENFORGE_VERSION_PATCH 0
#define LUMENFORGE_VERSION_STRING "1.0.0"

/*
 * Negative results, by number: what they mean, and where.
 *
 *    -1  cannot be opened or read, or ends too soon: getExifData, read_iptc, extract_xmp, read_xmp,
 *        parse_image_description (or no memory), get_tif_tag (or has no such tag); cannot be opened
 *        or created: write_xmp, buf2tif (or no memory for the directory), update_tif_profile (or no
 *        size); nothing that is asked for: time_from_datetime, get_profile_name, write_exif_buf; a
 *        block without room for more, or damaged: insert_xmp, add_iptc_keyword
 *    -2  wrong signature or byte order: getExifData, read_iptc, get_tif_tag; too few bytes:
 *        read_xmp; a method without a name: write_xmp; a keyword that is too long:
 *        add_iptc_keyword; cannot be written: buf2tif (the header), update_tif_profile
 *    -3  a variant that is not supported: getExifData; a text that does not end in NUL:
 *        get_settings_from_xmp, extract_xmp, lfsettings_occurences_in_xmp; a stream that cannot be
 *        seeked: get_tif_tag; cannot be written: buf2tif (the pixels), write_xmp
 *    -4  no memory: parse_photoshop_data (or a negative length), read_xmp, write_xmp, buf2tif,
 *        hdrMinMax
 *    -5  no settings method, another one, or none that can be asked for: get_settings_from_xmp,
 *        extract_xmp, read_xmp, insert_xmp
 *    -6  an image that cannot be written: buf2tif
 *   -10  no FF where a marker should start: getExifData
 *   -12  the directory cannot be written: buf2tif
 *   -34, -130  a packet that is too short: insert_xmp, which for one without its elements returns
 *        the packet's length, negative
 *
 * Those that mean the same in several functions:
 */
enum {
  LUMENFORGE_OK = 1,
  LUMENFORGE_CANNOT_READ = -1,
  LUMENFORGE_WRONG_SIGNATURE = -2, /* or no byte-order mark */
  LUMENFORGE_UNSUPPORTED = -3,
  LUMENFORGE_NO_MEMORY = -4,
  LUMENFORGE_OTHER_METHOD = -5 /* no settings method, or another */
};

/* Results of single functions that a host may want to tell apart. */
enum {
  LUMENFORGE_NOT_TERMINATED = -3,        /* settings: the text does not end in NUL */
  LUMENFORGE_NO_MARKER = -10,            /* getExifData: no FF where a marker should start */
  LUMENFORGE_TOO_SHORT_FOR_PACKET = -34, /* insert_xmp */
  LUMENFORGE_TOO_SHORT_FOR_TAG = -130,   /* insert_xmp */
  LUMENFORGE_HEADER_NOT_WRITTEN = -2,    /* buf2tif, by the stage that failed */
  LUMENFORGE_PIXELS_NOT_WRITTEN = -3,
  LUMENFORGE_UNSUPPORTED_IMAGE = -6,
  LUMENFORGE_DIRECTORY_NOT_WRITTEN = -12,
  LUMENFORGE_NO_PROFILE_ENTRY = 0, /* update_tif_profile: nothing to update */
  LUMENFORGE_PROFILE_NOT_UPDATED = -2
};

/* The kinds of file that getExifData reads. */
enum { LUMENFORGE_TIFF = 0, LUMENFORGE_JPEG = 1, LUMENFORGE_PSD = 2 };

/* What to read from a packet, where not the settings of a method. */
enum { LUMENFORGE_SELECT_METHOD = -1, LUMENFORGE_SELECT_LENS = 100 };

/* Settings methods. Added to one: its block without the packet around it (embed_xmp). */
enum {
  LUMENFORGE_UNKNOWN_METHOD = 0,
  LUMENFORGE_DETAILS_ENHANCER = 1,
  LUMENFORGE_TONE_COMPRESSOR = 2,
  LUMENFORGE_CONTRAST_OPTIMIZER = 3,
  LUMENFORGE_TONE_BALANCER = 4,
  LUMENFORGE_FUSION_NATURAL = 10,
  LUMENFORGE_FUSION_INTENSIVE = 11,
  LUMENFORGE_METHOD_TWELVE = 12, /* has defaults and no name */
  LUMENFORGE_FUSION_2_IMAGES = 13,
  LUMENFORGE_AVERAGE = 14,
  LUMENFORGE_FUSION_INTERIOR = 15,
  LUMENFORGE_WITHOUT_WRAPPER = 200
};

/* The kinds of value that searchForTag reads. */
enum { LUMENFORGE_NUMBER = 0, LUMENFORGE_YES_NO = 1, LUMENFORGE_LIST = 20 };

/* TifImageInfo.bitsPerSample of 16-bit floating point, beside 8, 16 and 32. */
enum { LUMENFORGE_HALF_FLOAT = 3216 };

/* ---------------------------------------------------------------------------------------------
 * Records
 * ------------------------------------------------------------------------------------------ */

/*
 * What the reading functions learn about one image file. 0 or an empty text means: not found.
 * Every text ends in NUL within its array. Offsets count from the start of the file.
 */
typedef struct ExifInfo {
  int32_t valueSource;         /* 2: exposureTime and iso come from an image description; else 0 */
  float exposureTime;          /* seconds */
  float fNumber;               /* e.g. 5.6 */
  uint32_t iso;                /* ISO speed */
  uint32_t reserved;           /* 0 */
  float focalLength;           /* millimetres */
  uint32_t focalLength35mm;    /* millimetres, 35 mm film equivalent */
  float focalPlaneXResolution; /* pixels per focalPlaneResolutionUnit */
  uint32_t focalPlaneResolutionUnit; /* EXIF code: 2 inch, 3 centimetre */
  char model[65];                    /* camera model, at most 63 characters */
  char dateTimeOriginal[20];         /* YYYY:MM:DD HH:MM:SS as stored */
  uint32_t thumbWidth;               /* Photoshop thumbnail: pixels */
  uint32_t thumbHeight;              /* Photoshop thumbnail: pixels */
  uint32_t thumbRowBytes;            /* Photoshop thumbnail: the resource's width in bytes */
  uint32_t thumbLength;              /* bytes of the thumbnail's JPEG stream */
  uint32_t thumbOffset;              /* position of that stream */
  uint32_t orientation;              /* TIFF orientation code, 1 to 8, as stored */
  uint32_t iptcLength;               /* bytes of the IPTC-NAA block */
  uint32_t iptcOffset;               /* its position, as the file gives it */
  char gpsLatitudeRef;               /* 'N' or 'S' as stored */
  uint32_t gpsLatitude[6];           /* degrees, minutes, seconds: numerator, denominator each */
  char gpsLongitudeRef;              /* 'E' or 'W' as stored */
  uint32_t gpsLongitude[6];          /* as gpsLatitude */
  uint8_t gpsAltitudeRef;            /* 0 above, 1 below sea level, as stored */
  uint32_t gpsAltitude[2];           /* metres: numerator, denominator */
  uint32_t gpsTimeStamp[6]; /* hours, minutes, seconds (UTC): numerator, denominator each */
  char gpsDateStamp[11];    /* YYYY:MM:DD */
  uint32_t xmpLength;       /* JPEG: the XMP segment's length field; TIFF: the packet's bytes */
  uint32_t xmpOffset;       /* position of the XMP packet, as the file gives it */
  char lens[256];           /* aux:Lens of a JPEG's XMP packet, at most 63 characters */
} ExifInfo;

/*
 * Sixty 32-bit words: the host's flat form of ExifInfo. Fractions are numerator, denominator. The
 * unused words are neither read nor written by the library.
 */
typedef struct MetadataBuf {
  int32_t exposureTime[2];           /* words 0-1: seconds */
  int32_t fNumber[2];                /* words 2-3 */
  uint32_t unused4;                  /* word 4 */
  uint32_t iso;                      /* word 5 */
  int32_t valueSource;               /* word 6: as ExifInfo.valueSource */
  uint32_t unused7[3];               /* words 7-9 */
  int32_t focalLength[2];            /* words 10-11: millimetres */
  uint32_t focalLength35mm;          /* word 12 */
  int32_t focalPlaneXResolution[2];  /* words 13-14 */
  uint32_t focalPlaneResolutionUnit; /* word 15 */
  uint32_t thumbOffset;              /* word 16 */
  uint32_t thumbLength;              /* word 17 */
  uint32_t iptcOffset;               /* word 18 */
  uint32_t iptcLength;               /* word 19 */
  uint32_t orientation;              /* word 20 */
  uint32_t xmpOffset;                /* word 21 */
  uint32_t xmpLength;                /* word 22 */
  char model[64];                    /* words 23-38 */
  char dateTimeOriginal[20];         /* words 39-43 */
  char lens[64];                     /* words 44-59 */
} MetadataBuf;

/* The GPS companion of MetadataBuf, 96 bytes. The reserved bytes are neither read nor written. */
typedef struct GpsBuf {
  uint32_t latitude[6];  /* degrees, minutes, seconds: numerator, denominator each */
  uint32_t longitude[6]; /* as latitude */
  uint32_t altitude[2];  /* metres: numerator, denominator */
  uint32_t timeStamp[6]; /* hours, minutes, seconds (UTC): numerator, denominator each */
  char latitudeRef;      /* 'N' or 'S' */
  char longitudeRef;     /* 'E' or 'W' */
  uint8_t altitudeRef;   /* 0 above, 1 below sea level */
  uint8_t reserved83;
  char dateStamp[11]; /* YYYY:MM:DD */
  uint8_t reserved95;
} GpsBuf;

/*
 * A settings record: 60 single-precision slots. What slots 0 to 17 mean depends on the method,
 * which travels beside the record; 21-28, 31-38, 41-48, 51 and 52 mean the same for every method.
 * Functions take a pointer to the first slot.
 */
enum { kSettingsParamsSlots = 60 };
typedef float SettingsParams[60];

/* An image to be written as TIFF. */
typedef struct TifImageInfo {
  int32_t width;         /* pixels per row */
  int32_t height;        /* rows */
  int32_t channels;      /* samples per pixel in the buffer: 1, 2, 3 or 4 */
  int32_t bitsPerSample; /* 8, 16, 32 (float), or 3216 for 16-bit floating point */
  int32_t resolution;    /* pixels per inch */
  int32_t unused6;
  int32_t iccLength;  /* bytes of the ICC profile, 0 for none */
  int32_t conversion; /* 0: as they are; 1: 16-bit samples written as their high byte */
  int32_t unused9[2];
  int32_t orientation; /* TIFF orientation code 1 to 8; any other value is written as 1 */
} TifImageInfo;

#ifdef __cplusplus
static_assert(
    sizeof(ExifInfo) == 524 && offsetof(ExifInfo, model) == 36 &&
        offsetof(ExifInfo, dateTimeOriginal) == 101 && offsetof(ExifInfo, thumbWidth) == 124 &&
        offsetof(ExifInfo, gpsLatitudeRef) == 156 && offsetof(ExifInfo, gpsLatitude) == 160 &&
        offsetof(ExifInfo, gpsLongitude) == 188 && offsetof(ExifInfo, gpsAltitude) == 216 &&
        offsetof(ExifInfo, gpsTimeStamp) == 224 && offsetof(ExifInfo, gpsDateStamp) == 248 &&
        offsetof(ExifInfo, xmpLength) == 260 && offsetof(ExifInfo, lens) == 268,
    "the layout of ExifInfo is part of the interface");
static_assert(sizeof(MetadataBuf) == 60 * 4 && offsetof(MetadataBuf, iso) == 5 * 4 &&
                  offsetof(MetadataBuf, focalLength) == 10 * 4 &&
                  offsetof(MetadataBuf, thumbOffset) == 16 * 4 &&
                  offsetof(MetadataBuf, orientation) == 20 * 4 &&
                  offsetof(MetadataBuf, model) == 23 * 4 &&
                  offsetof(MetadataBuf, dateTimeOriginal) == 39 * 4 &&
                  offsetof(MetadataBuf, lens) == 44 * 4,
              "the word positions of MetadataBuf are part of the interface");
static_assert(sizeof(GpsBuf) == 96 && offsetof(GpsBuf, altitude) == 48 &&
                  offsetof(GpsBuf, timeStamp) == 56 && offsetof(GpsBuf, latitudeRef) == 80 &&
                  offsetof(GpsBuf, altitudeRef) == 82 && offsetof(GpsBuf, dateStamp) == 84,
              "the byte positions of GpsBuf are part of the interface");
static_assert(sizeof(SettingsParams) == 240, "a settings record has 60 slots");
static_assert(sizeof(TifImageInfo) == 44 && offsetof(TifImageInfo, iccLength) == 24 &&
                  offsetof(TifImageInfo, orientation) == 40,
              "the layout of TifImageInfo is part of the interface");
#endif

/* ---------------------------------------------------------------------------------------------
 * Reading photographs
 * ------------------------------------------------------------------------------------------ */

/* Sets every byte of `info` to zero. Returns 0. */
LUMENFORGE_API int init_exifInfo(ExifInfo* info);

/*
 * Reads the metadata of the file at `path` into `info`, which is cleared first in any case.
 *
 * `fileType`: 0 TIFF, 1 JPEG, 2 PSD. Any other value reads as TIFF but leaves Photoshop image
 * resources unread. Structures: TIFF 6.0, EXIF 2.3, the XMP specification (JPEG APP1), Photoshop
 * image resources (JPEG APP13, TIFF tag 34377).
 *
 * Of a JPEG are read: the first APP1 segment, which must be EXIF; the next APP1, when it is XMP and
 * among the ten segments behind it; the first APP13, when it is Photoshop's. Of a PSD's resources,
 * the EXIF one alone. Of directories, at most three of the chain, one of exactly 255 entries being
 * the last; a thumbnail in all but the first; tag 34377 only in a TIFF's. An offset of a next
 * directory that lies outside the file, or is missing, ends the chain as 0 does. A value outside
 * the file leaves its field, and the directory goes on.
 *
 * What is read later wins: in a JPEG its XMP segment, its directories, its Photoshop block.
 * xmpOffset and iptcOffset from a TIFF entry are the entry's values as they stand: in a JPEG's and
 * a PSD's directories they count from the TIFF header, not from the start of the file. An XMP
 * segment's xmpLength is the packet's bytes and 31 more (its length field and signature), and so
 * many are read from the packet on; where the file ends before, there is none. With xmpOffset it is
 * kept only when they hold settings of method 1, 2, 3, 4, 10, 11, 12 or 15, the lens in either
 * case. A thumbnail or resource whose place lies beyond 4 GiB is not recorded, nor is an IPTC
 * length that does not fit 32 bits.
 *
 * Returns
 *    1  the walk finished, also when nothing of interest was found
 *   -1  the file cannot be opened or read, or ends before its structure does: segments of a JPEG,
 *       the signature or resources of a PSD, the first directory or its offset, entries that a
 *       directory of the chain announces. A JPEG that does not begin with FF D8, has five fill
 *       bytes in a row before its first APP1 ("too many padding bytes" on standard error), or a
 *       segment length below 2 ("invalid marker" on standard error; at the XMP segment it ends the
 *       search for XMP alone). A PSD without EXIF resource, or with another before it that does not
 *       begin with "8BIM"; names are taken to be empty
 *   -2  a JPEG without APP1 segment before its scan; a PSD without "8BPS"; no TIFF byte-order mark,
 *       so also a JPEG whose first APP1 is not EXIF, unless a TIFF header stands behind its first 6
 *       bytes, which is then read with offsets from the start of the file
 *   -3  a TIFF header without 42; a PSD without 3 channels or more in RGB mode
 *  -10  JPEG: a byte other than FF where a marker should start, on the way to the Photoshop block,
 *       where fill bytes are not skipped
 * On failure `info` holds what had been read before it. A directory cut short does not hide the
 * rest: a JPEG's Photoshop block is read all the same, and the result is -1, or -10 from there.
 *
 * Work is bounded: one call reads at most 5 x 65,535 directory entries, past which the walk goes on
 * as at the end of the file, and 16 Photoshop blocks, past which blocks are passed over.
 */
LUMENFORGE_API int getExifData(const char* path, int fileType, ExifInfo* info);

/*
 * Reads the file at `path` with getExifData, ignores its result, and exports the record with
 * metadataBufFromExifInfo, whose result it returns: a file that cannot be read gives zeros in all
 * copied fields and leaves the fractions as they were.
 */
LUMENFORGE_API int get_exif_data(char* path, int fileType, MetadataBuf* buf, GpsBuf* gps);

/*
 * Fills `buf` and `gps` from `info`. A positive float v becomes the fraction (v x 100, 100) when
 * it is at least 1, else (100, 100 / v), in double precision, truncated toward zero; what exceeds
 * 2,147,483,647 becomes that number. A float that is 0, negative or not a number leaves both words
 * as they were. Words 4 and 7 to 9 of `buf` and bytes 83 and 95 of `gps` are not written.
 *
 * Returns word 0 of `buf` as it stands afterwards.
 */
LUMENFORGE_API int metadataBufFromExifInfo(const ExifInfo* info, MetadataBuf* buf, GpsBuf* gps);

/*
 * Seconds from an EXIF date text to `reference` (positive when the date lies before it).
 *
 * `text`: NUL-terminated, "YYYY:MM:DD HH:MM:SS", six decimal integers; out of range values count
 * on (month 13 is January of the next year). The date is local time; the C library decides about
 * daylight saving. `*seconds` is exact up to 2^24 (194 days), beyond that the nearest float.
 *
 * Returns 1 with `*seconds` set, or -1 with `*seconds` untouched: the text does not hold six
 * numbers, or the date lies at or before 1970-01-01 00:00:00 UTC or cannot be represented.
 */
LUMENFORGE_API int time_from_datetime(const char* text, time_t reference, float* seconds);

/*
 * A display name for the ICC profile (ICC.1) of `size` bytes at `profile`: sRGB, Adobe RGB or
 * ProPhoto RGB when its description says so, else the description's first 32 bytes.
 *
 * `name`: 32 bytes, cleared first. Nothing is read beyond `size`: a comparison cut short by the end
 * does not match, a raw copy cut short copies what is there.
 *
 * Returns 4, 9 or 12, the length of the known name found; 32 when the description was copied raw
 * (no NUL is added); -1 when there is no description or `size` is 48 or less.
 */
LUMENFORGE_API int get_profile_name(int size, const unsigned char* profile, char* name);

/*
 * Reads an EXIF directory (EXIF 2.3) into `info`: exposure time, f-number, ISO speed, focal
 * lengths, focal-plane resolution and capture date.
 *
 * `info` must be initialised (init_exifInfo): shutter speed, aperture and exposure index count only
 * where the field that they stand in for is still 0.
 * `f`: a seekable stream at the directory's first byte; its position afterwards is undefined.
 * `count`: not used. `byteOrder`: as for fgetmi2. `base`: the position that offsets count from.
 *
 * Returns 1, always. Bounded as getExifData is.
 */
LUMENFORGE_API int parse_exif_data(FILE* f, int count, int byteOrder, int base, ExifInfo* info);

/* Reads a GPS directory (EXIF 2.3) into the GPS fields of `info`; else as parse_exif_data. */
LUMENFORGE_API int parse_gps_data(FILE* f, int count, int byteOrder, int base, ExifInfo* info);

/*
 * Scans a block of Photoshop image resources for the IPTC-NAA resource (0x0404, only with an empty
 * name) and the thumbnail resource (0x040C), and records their places in `info`. They may begin at
 * any byte, in another resource's data, too; of several of a kind the last one counts.
 *
 * `f`: a seekable stream at the block's first byte; its position afterwards is undefined.
 * `length`: bytes to scan; a block that the file cuts short is scanned as far as it goes.
 *
 * Returns thumbLength of the last thumbnail resource found (2^31 and more come back negative), 1
 * when there is none, -4 when memory cannot be obtained or `length` is negative.
 */
LUMENFORGE_API int parse_photoshop_data(FILE* f, int length, ExifInfo* info);

/*
 * Reads the IPTC block (IPTC-IIM 4) of `length` bytes at `offset` of the file into `buf`, which
 * holds `length` bytes and is filled on -2, too.
 *
 * Returns `length`; 0 when the block does not end before the end of the file, or `length` or
 * `offset` is negative; -1 when the file cannot be opened, is empty or delivers too few bytes; -2
 * when the block does not begin with 0x1C (so for a `length` of 0).
 */
LUMENFORGE_API int read_iptc(const char* path, int length, int offset, unsigned char* buf);

/*
 * Reads exposure time and ISO speed from an image description text (TIFF 6.0, ImageDescription):
 * items separated by a comma and a space, the eighth the exposure time in seconds ("1/250s"), the
 * ninth to eleventh three channel values, each a letter R, G or B and its digits ("R60").
 *
 * `f`: a stream at the text's first byte, seekable or not; read up to the text's end. `length`: the
 * text's bytes. NUL bytes that end the text do not belong to it. Memory is bounded by what the
 * stream delivers, not by `length`.
 *
 * Writes at most three fields of `info`, and only when all three channels were found: iso, 200
 * times the integer part of 2^(m / 30), m halfway between the smallest and the largest channel
 * value, rounded down; exposureTime, when the exposure time has a denominator of 1 or more;
 * valueSource (2), when besides its numerator and the last channel value lie in 1 to 99,998. An ISO
 * speed that exceeds 32 bits becomes 4,294,967,200.
 *
 * Of a number with a full stop only the digits after the last one count in the exposure time, those
 * before the first in a channel value. Characters are taken for digits unchecked (their code, 0 to
 * 255, less that of "0"). A number of seven characters or more ends the reading. A number or item
 * that the end of the text cuts short is taken as it stands; a letter right at the end has value 0.
 *
 * Returns the last channel value read, normally that of B, which ends the reading (below 0 where
 * what stands there is no number); 0 when there is none; -1, with `info` untouched, when `length`
 * bytes cannot be read, `length` is 0 or less, or memory cannot be obtained.
 */
LUMENFORGE_API int parse_image_description(FILE* f, int length, ExifInfo* info);

/*
 * The byte-order readers: 16 and 32 bits from the stream's position, unsigned. fgetm2 and fgetm4
 * read big-endian. fgetmi2 and fgetmi4 read little-endian when the low 16 bits of `byteOrder` are
 * 0x4949 ("II" of a TIFF header), else big-endian. A byte that cannot be read counts as EOF (-1).
 */
LUMENFORGE_API unsigned int fgetm2(FILE* f);
LUMENFORGE_API unsigned int fgetm4(FILE* f);
LUMENFORGE_API unsigned int fgetmi2(FILE* f, int byteOrder);
LUMENFORGE_API unsigned int fgetmi4(FILE* f, int byteOrder);

/* ---------------------------------------------------------------------------------------------
 * Tone-mapping settings in XMP
 * ------------------------------------------------------------------------------------------ */

/*
 * Settings stand in a packet as elements of the prefix lfst, under the namespace
 * "http://ns.lumenforge.org/lumenforge_settingsNN", NN being the number of the settings set. They
 * are found by byte-exact search, not by parsing XML: a namespace declaration (in either quote,
 * known by the URI up to the slash after the host), then lfst:Method, then the elements, each in
 * element form (name, ">", value) or attribute form (name, "=", quote, value) as lfst:Method is. So
 * a start tag with attributes is no match for an element, and its end tag then is.
 *
 * Every number has one decimal ("70.0") unless the table says otherwise:
 *    .000000  six decimals
 *    curve    three decimals of 10 (v / 10)^0.3263790046007694, v being the slot's value
 *    yes/no   "Yes" above 0, else "No "
 *    list     eight numbers with commas between them, for eight slots
 * An element under "also read" is an older name, never written; it wins when a packet holds both.
 *
 *   slot  element                      default     written   also read
 *
 * 1 "Details Enhancer" (also read: "Contrast Enhancer")
 *      0  ToneCompression                                    Luminosity
 *      1  Strength                     70
 *      2  Saturation                                         ColorSaturation c: 0.2 c - 10
 *      3  WhiteClip                    0.25        .000000
 *      4  BlackClip                                .000000
 *      5  Smoothing, when slot 16 is 0 1           "Very High" 0, "High" 1, "Medium" 2, "Low" 3,
 *                                                  "Very Low" 4, padded to 8 characters
 *      6  DetailContrast                                     Microcontrast
 *      7  Microsmoothing               2                     NoiseSmoothing
 *      8  Brightness                                         Gamma g: -10 log2 g when g is above
 *                                                            1, else -(20/3) log2 g
 *      9  HighlightsSmoothing
 *     10  ShadowsSmoothing
 *     11  ShadowsClipping
 *     12  ColorTemperature
 *     13  SaturationHighlights
 *     14  SaturationShadows
 *     15  IsPano360                                yes/no
 *     16  SmoothingMode                1           "Light" 0, "Slider" 1
 *     17  Smoothing, when slot 16 is 1
 * 2 "Tone Compressor" (also read: "Smooth Adaptation")
 *      0  Brightness
 *      1  Compression
 *      2  Contrast
 *      3  WhiteClip                                .000000
 *      4  BlackClip                                .000000
 *     12  ColorTemperature
 *     13  Saturation
 * 3 "Contrast Optimizer"
 *      0  Strength                     50
 *      1  ToneCompression
 *      2  LightingEffect               20
 *      3  WhiteClip                    0.6         curve
 *      4  BlackClip                    0.25        curve
 *      8  Brightness                                         Midtone
 *      9  Luminance
 *     12  ColorTemperature
 *     13  Saturation
 *     15  IsPano360                                yes/no
 * 4 "Tone Balancer"
 *      0  Strength                     50
 *      1  Lighting
 *      2  Boost
 *      3  WhiteClip                    0.60359085  curve
 *      4  BlackClip                                curve
 *      5  Microcontrast
 *      8  Brightness
 *     12  ColorTemperature
 *     13  Saturation
 *     15  IsPano360                                yes/no
 * 10 "Fusion/Natural" (also read: "Fusion/Adjust")
 *      0  Strength                                           Accentuation
 *      1  ExposureBalance                                    BlendingPoint
 *      2  ShadowsContrast                                    Shadows, when it stands alone
 *      3  Saturation
 *      4  WhiteClip                                .000000
 *      5  BlackClip                                .000000
 *      6  Brightness                                         MidtonesAdjustment
 *      7  IsPano360                                yes/no
 *      8  Sharpness                    2
 *     12  ColorTemperature
 * 11 "Fusion/Intensive"
 *      0  Strength
 *      1  Saturation
 *      2  Radius                       70
 *      6  Brightness
 *     12  ColorTemperature
 * 12 has defaults and no name
 *      8                               2
 *      9                               1
 * 13 "Fusion/2 images", and 14 "Average"
 *      6  Brightness
 *     12  ColorTemperature
 *     13  Saturation
 * 15 "Fusion/Interior" (also read: "Fusion/Realistic", "Fusion/Real-Estate")
 *      0  DepthHighlights
 *      1  Highlights
 *      2  Shadows
 *      3  Saturation
 *      6  Brightness
 *      7  IsPano360                                yes/no
 *      8  LocalContrast                2
 *      9                               1
 *     12  ColorTemperature
 * Every method
 *     21  SaturationIndividualColors               list
 *     31  TemperatureIndividualColors              list
 *     41  BrightnessIndividualColors               list
 *     51  BlendingOpacity
 *     52  BlendWithEV
 *
 * A packet that names any other method is of method 0, which has the common elements. Numbers are
 * written as printf and read as scanf ("%f") do in the "C" locale. No value is checked for its
 * range. Packet texts are bytes with a length; a NUL inside one does not end it.
 */

/*
 * Sets all 60 slots of `params` to the defaults of `method`; to zero for a number that is no
 * method. Returns 0.
 */
LUMENFORGE_API int def_param(int method, float* params);

/*
 * Looks for one element in a text, stores its value and marks it found.
 *
 * `slot`: index into `found` and `values`; a list fills slots `slot` to `slot` + 7.
 * `tag`: the element's name with its prefix, "lfst:Strength".
 * `kind`: 0 a number; 1 "Yes" (1.0) or anything else (0.0); 20 a list of eight numbers with commas
 * between them, taken only when all eight parse. Any other kind finds nothing.
 * `buffer`: the text, of which `length` bytes are read and never more; it need not end in NUL.
 * `form`: 2 searches the tag followed by "=", any other value the tag followed by ">"; the value
 * begins `form` - 1 bytes after that. A number that does not parse there is tried one byte later.
 * `found`: one flag per slot, 0 before the first search. A slot whose flag is set is left alone, so
 * that the first of several names wins. The first match sets the flag, also when its value does not
 * parse or lies outside the text; the slot then keeps what it held (a yes/no word gives 0.0). A
 * number that the text's end cuts short counts as it stands there.
 *
 * Returns the match's offset. Without a match `length` - (length of `tag` + 1); 0 when the flag was
 * set, the tag and its terminator are not shorter than `length`, or memory for the two cannot be
 * obtained. The time that a search takes is in proportion to both lengths.
 */
LUMENFORGE_API int searchForTag(int slot, const char* tag, int kind, const unsigned char* buffer,
                                int form, int length, int* found, float* values);

/*
 * Reads settings, their method or the lens from a packet.
 *
 * `selector`: -1 the method; 0 to 15 the settings of that method; 100 the lens, aux:Lens of the XMP
 * specification.
 * `length`: bytes of `xmp`, counting the NUL that must end it.
 * `lensOut`: for 100, at least 64 bytes cleared by the caller: receives at most 63 bytes and no
 * NUL; a longer, unterminated or missing lens leaves it as it was. An element ends at its end tag,
 * an attribute at the next double quote, whatever opened it. May be null for other selectors.
 * `params`: for 0 to 15, 60 slots, set to the method's defaults and then filled from the elements
 * found. May be null for -1 and 100.
 *
 * The packet's first declaration counts, then the first lfst:Method behind it, then the first
 * element of each name from there to the end of the text, in whichever description. An element
 * whose text does not parse keeps the default and still hides the slot's other name; a conversion
 * is applied then, too, to the default. lfst:SmoothingMode is known by its name alone, whatever
 * follows it. A word cut short by the text's end does not match, a number counts as it stands.
 * Textual microcontrast levels of very old packets are not read.
 *
 * Returns
 *   -3  `length` is below 1 or the byte at `length` - 1 is not NUL
 *   for 100: the offset at which the search for the lens stopped, of no further use
 *    0  the text declares no settings
 *   for -1: the method, 0 for an unknown name; -5 when there is no lfst:Method
 *   for others: the offset of lfst:Method with `params` filled; -5 with `params` untouched when the
 *   method is another or there is none. For 0 without any lfst:Method: `params` zeroed, and
 *   `length` - 11 or, in a shorter text, the offset behind the declaration.
 */
LUMENFORGE_API int get_settings_from_xmp(int selector, int length, const unsigned char* xmp,
                                         char* lensOut, float* params);

/*
 * Reads `size` bytes at `offset` of the file into `buffer` and returns the method of the settings
 * in them.
 *
 * `buffer`: `size` + 1 bytes, of which the caller sets the last one to NUL. Bytes that cannot be
 * read stay as the caller left them there, and count as the file's. Files larger than 2 GiB are
 * read as far as the arguments reach.
 *
 * Returns -1 when the file cannot be opened, its end cannot be sought or it is empty; 0 with
 * `buffer` untouched when the region does not end before the end of the file, or `size` or `offset`
 * is negative; else as get_settings_from_xmp with selector -1 (a method, 0, -3 or -5).
 */
LUMENFORGE_API int extract_xmp(const char* path, int size, int offset, unsigned char* buffer);

/*
 * Reads the settings, or with selector -1 their method, of a file that holds XMP text.
 *
 * `params`: 60 slots, may be null for selector -1.
 *
 * Returns -1 when the file cannot be opened or sought, or holds 2 GiB or more; -2 when it delivers
 * fewer bytes than its size; -4 when memory for its text cannot be obtained; -5 for selector 100,
 * before the file is opened; else as get_settings_from_xmp for the whole file and a NUL behind it.
 * Memory is needed for 64 KiB or, if that is more, twice what the file has delivered from its first
 * declaration on.
 */
LUMENFORGE_API int read_xmp(const char* path, int selector, float* params);

/*
 * Counts the settings namespace declarations of a packet, in either quote and whatever the number
 * of their set. `length`: bytes of `xmp`, counting the NUL that must end it.
 *
 * Returns the count, or -3 when `length` is below 1 or the byte at `length` - 1 is not NUL.
 */
LUMENFORGE_API int lfsettings_occurences_in_xmp(int length, const unsigned char* xmp);

/*
 * Writes settings as XMP text, a whole packet or its description blocks alone.
 *
 * `setNumber`: 0 measures: nothing is written, `out` may be null. 1 or negative writes as set 01, 2
 * or more as that set. Keep to 99: the measured length counts two digits.
 * `method`: below 1 writes no settings block; above 200 stands for `method` - 200 without the
 * wrapper (x:xmpmeta and rdf:RDF). A number without a name gets the common elements only.
 * `params`: 60 slots. May be null when no settings block is written.
 * `hasLens`: above 0 writes a block of the aux schema with `lens`, NUL-terminated and written as
 * it is (any escaping is the caller's), before the settings. Else `lens` may be null.
 * `out`: at least the measured bytes. No NUL is written.
 *
 * Method 1: slots 16 and 5 count by their integer part. A mode that is neither 0 nor 1 writes its
 * line, "Light", in the place of the smoothing as well; a level that has no word writes "Light".
 *
 * Returns the text's length, for sets up to 99 the same for measuring and writing. Lines of any
 * length are exact.
 */
LUMENFORGE_API int embed_xmp(int setNumber, int method, const float* params, int hasLens,
                             const char* lens, char* out);

/*
 * Creates or replaces the file at `path` with the packet that embed_xmp writes for set 1 without
 * lens.
 *
 * Returns 1; -2 when `method` is not 1 to 15 and -4 when memory cannot be obtained, both before the
 * file is touched; -1 when it cannot be opened for writing; -3 when it could not be written (a full
 * device), which leaves what there is of it.
 */
LUMENFORGE_API int write_xmp(const char* path, int method, const float* params);

/*
 * Inserts a settings block into a packet in memory, behind the opening tag of rdf:RDF: directly
 * behind it or, when the second byte after the tag is a line feed, behind the first byte, and when
 * the third is one, too, behind the second.
 *
 * Call once with `setNumber` 0 for the block's size (`xmpLength`, `insertLength` and `xmp` are not
 * used), then with the set's number, 1 to 99, and that size. A negative number stands for set 1.
 *
 * `method`: at least 1. A number without a name inserts the common elements only.
 * `xmpLength`: bytes of the packet. A NUL counted in it moves with the tail and stays last.
 * `insertLength`: the size; the text behind the insertion point moves up by it. No more of the
 * block is written than fits, should a set number of three digits or a smaller size be given; a
 * larger one leaves the bytes between as they were.
 *
 * `xmp`: `xmpLength` + `insertLength` bytes; nothing behind them is touched.
 *
 * Returns the block's size, or with the packet unchanged the first of these that applies
 *           -5  `method` is below 1, in either call
 *          -34  `xmpLength` is below 35
 *   -xmpLength  no "<x:xmpmeta xmlns:x='adobe:ns:meta/" (either quote)
 *         -130  `xmpLength` is below 131
 *   -xmpLength  no opening tag of rdf:RDF with nothing but its xmlns:rdf (either quote) at byte 65
 *               or later; as the text above, it must end before the packet's last byte
 *           -1  fewer than 3 bytes stand behind the insertion point, or `insertLength` is negative
 */
LUMENFORGE_API int insert_xmp(int setNumber, int method, const float* params, int xmpLength,
                              int insertLength, char* xmp);

/* ---------------------------------------------------------------------------------------------
 * TIFF output
 * ------------------------------------------------------------------------------------------ */

/*
 * Counts and sizes of the Exif and GPS directories (EXIF 2.3) that `meta` and `gps` give, the
 * lengths of the texts in them, and the camera maker's name, which is derived from the model. All
 * outputs are written on every call.
 *
 * `exifCount`, `gpsCount`: directory entries; 0 when there is no such directory. `exifDataSize`,
 * `gpsDataSize`: bytes of the value areas. `modelLength`, `makeLength`, `dateTimeLength`,
 * `lensLength`: bytes of the texts with their terminator, 0 for an empty one; a model or lens that
 * fills its 64 bytes counts 63 and a date that fills its 20 bytes counts 20, without a terminator.
 * `gpsDateLength`: 11 or 0. `make`: 64 bytes, the name and zeros; empty for an unknown model.
 *
 * A fraction is present when both its words, as signed numbers, are positive; of three fractions
 * the first decides. The ISO speed and the reference letters are present when positive as signed
 * numbers, the date stamp when its first byte is not 0.
 *
 * Returns exifCount + gpsCount.
 */
LUMENFORGE_API int get_exif_count(const MetadataBuf* meta, int* exifCount, int* exifDataSize,
                                  const GpsBuf* gps, int* gpsCount, int* gpsDataSize,
                                  int* modelLength, int* makeLength, int* dateTimeLength,
                                  int* gpsDateLength, int* lensLength, char* make);

/*
 * Writes a stand-alone EXIF block: a little-endian TIFF structure (TIFF 6.0, EXIF 2.3) of a
 * directory with make, model, orientation and pointers, the Exif directory and the GPS directory,
 * without padding, so that offsets may be odd.
 *
 * The counts and lengths are those of get_exif_count for the same records, values of 0 or less
 * standing for nothing. `orientation`: TIFF orientation code; what is not 1 to 8 is written as 1.
 * `make`: the 64 bytes from get_exif_count.
 *
 * `out`: zero-filled by the caller, at least as long as the result, which is the sum of 8 bytes of
 * header; 6 + 12 x n for each directory of n entries; makeLength, modelLength and both data sizes.
 * The first directory has one entry for the orientation and one for each of makeLength,
 * modelLength, exifCount and gpsCount above 0. Nothing is written beyond that, whatever the
 * arguments.
 *
 * Returns the block's size; -1, with nothing written, when there is neither make, model, Exif entry
 * nor GPS entry, or when the sizes given add up to more than 2,147,483,647 bytes.
 */
LUMENFORGE_API int write_exif_buf(int exifCount, int exifDataSize, int gpsCount, int gpsDataSize,
                                  int modelLength, int makeLength, int dateTimeLength,
                                  int gpsDateLength, int orientation, const MetadataBuf* meta,
                                  const GpsBuf* gps, const char* make, unsigned char* out);

/*
 * Copies an IPTC block (IPTC-IIM 4, standard datasets) to `out` with one keyword (dataset 2:25)
 * more: behind the last keyword, else behind the last dataset of record 2, else behind the first
 * dataset. Without a block, a new one is begun with the record version (2:00).
 *
 * `iptcLength`: bytes of the block, 0 for none, in which case `iptc` may be null. `keywordLength`:
 * 0 to 65,535 bytes; the text is stored as it is, without a terminator. `out`: iptcLength + 5 +
 * keywordLength bytes, 12 + keywordLength for a new block, which is also the new block's length. It
 * must not overlap `iptc`.
 *
 * Datasets are found by their markers, byte by byte: markers inside a dataset's data count, and
 * neither a keyword at the very start of the block is taken for the last keyword, nor a dataset
 * whose header fills the last 5 bytes of the block, an empty one at its end.
 *
 * Returns the offset of the new dataset in `out` (7 for a new block), or with nothing written
 *   -1  `iptcLength` is below 0 or below that of a dataset header, or the dataset found runs past
 *       the end of the block
 *   -2  else, `keywordLength` is outside 0 to 65,535, or the new length does not fit 32 bits
 */
LUMENFORGE_API int add_iptc_keyword(int iptcLength, const unsigned char* iptc, int keywordLength,
                                    const unsigned char* keyword, unsigned char* out);

/*
 * Writes an image with its metadata as an uncompressed, little-endian TIFF 6.0 file of one strip:
 * header, pixels, then the directory with its values, without seeking. An existing file is
 * replaced. The file of floating-point samples names this software and has a SampleFormat of three
 * values, whatever the samples of a pixel.
 *
 * `pixels`: rows from the top, samples in the machine's byte order; of two or four samples the last
 * is not written. `info`: see TifImageInfo; a height below 0 counts as 0, which gives a file
 * without pixels. `stride`: from a row to the next, in bytes, in 16-bit samples when
 * info->conversion is 1; it is taken as it is, also 0 or negative (rows stored bottom-up, `pixels`
 * at the last one).
 *
 * `iccProfile`: info->iccLength bytes (ICC.1), may be null for 0 or less. A profile of more than 20
 * bytes whose colour space is not RGB is left out. `meta`, `gps`: the camera's data, as for
 * get_exif_count. `iptc`: `iptcLength` bytes, may be null for 0 or less. `method`: whose settings
 * are to be written as XMP, 0 or less for none; above 200 as for embed_xmp, a packet without its
 * wrapper. `settings`: a settings record, read when a packet is generated for `method` above 0,
 * else it may be null. `xmp`: `xmpLength` bytes, may be null for 0 or less.
 *
 * The XMP packet written is the given one when it holds settings of method 1, 2, 3, 4, 10, 11 or
 * 15, else one generated with the settings (`method` above 0) and the lens of `meta`, else the
 * given one. A given packet goes without its last byte, its terminator. When `method` is 0 the
 * terminator may be missing, and the packet goes whole; with another `method` a packet without one
 * holds no settings, and its last byte is lost. A packet generated for the lens alone fills the
 * place of the given one with blanks, or takes the room that it needs.
 *
 * Pixels are written in blocks of about 1 MiB, straight from `pixels` where rows stand there as
 * they stand in the file. Memory is needed for one block (of a smaller image, for its rows), then
 * for the directory with its values.
 *
 * Returns the number of rows of the last block (the height of an image of one block, 0 for a file
 * without pixels), or
 *   -1  the file cannot be created ("Could not open for writing file:  <path>" on standard error),
 *       or memory for the directory cannot be obtained
 *   -2  the header cannot be written
 *   -3  the pixels cannot be written
 *   -4  memory for a block cannot be obtained
 *   -6  unsupported: channels outside 1 to 4; bitsPerSample other than 8, 16, 32, 3216; conversion
 *       other than 0, or 1 with bitsPerSample 8; width below 1; a file of more than 4 GiB - 1
 *  -12  the directory cannot be written, or the file cannot be closed
 * -6 is found before the file is created. A file that fails later stays as far as it was written:
 * the header alone where memory for a block is missing. Nothing else is refused; the resolution,
 * for one, is written x 1000 in 32 bits, whatever it is.
 */
LUMENFORGE_API int buf2tif(const void* pixels, const TifImageInfo* info, int stride,
                           const unsigned char* iccProfile, const MetadataBuf* meta,
                           const GpsBuf* gps, int iptcLength, const unsigned char* iptc, int method,
                           const float* settings, int xmpLength, const unsigned char* xmp,
                           const char* path);

/*
 * Finds the entry of `tag` in a little-endian TIFF file: the first one in the chain of directories.
 * The Exif and GPS directories are not entered.
 *
 * `stream`: a seekable stream at the TIFF header; offsets count from the start of the file. Its
 * position afterwards is undefined. `count`, `value`: the entry's count and value field, written
 * only when it is found; of one or two SHORTs the first is the value.
 *
 * Returns the entry's file offset, which is above 0, or
 *   -1  no directory holds the tag, the file ends first, or the entry lies beyond 2 GiB
 *   -2  no little-endian TIFF header, or a directory without entries
 *   -3  a seek fails: the stream cannot seek at all, or not to a directory's offset (memory streams
 *       cannot behind their end, files can)
 * At most 5 x 65,535 entries are read; past that, as in a chain that leads back into itself, the
 * tag counts as missing.
 */
LUMENFORGE_API int get_tif_tag(FILE* stream, int tag, int* count, int* value);

/*
 * Gives a little-endian TIFF file another ICC profile (ICC.1): appends the `size` bytes at
 * `profile` and points the file's profile entry (tag 34675) at them. The old profile stays in the
 * file, unused. An entry is never added.
 *
 * Returns `size`; 0 when get_tif_tag, with its bounds, would not find the entry, in which case the
 * file is left alone; or
 *   -1  `size` is 0 or less; the file cannot be opened (on standard error "Can not open input file
 *       for reading", "... for update" or "... for appending"); the entry has changed meanwhile
 *   -2  seeking or writing fails, or the file would grow beyond 4 GiB - 1
 * A failed call leaves the file as it was: everything is opened first, the profile is appended
 * before the entry is changed, and what a failure has written is taken back.
 */
LUMENFORGE_API int update_tif_profile(int size, const unsigned char* profile, const char* path);

/* ---------------------------------------------------------------------------------------------
 * HDR statistics
 * ------------------------------------------------------------------------------------------ */

/*
 * Measures the brightness of an HDR image in shared-exponent form (red, green, blue mantissas and
 * one exponent, 8 bits each).
 *
 * `data`: `height` rows of 4 x `width` bytes without gaps. A row holds four planes of `width`
 * bytes: red, green, blue, exponent. Only read; not touched when `width` or `height` is 0 or less.
 *
 * The brightness of a pixel is m x 2^(exponent - 128) in single precision, m = (19 red + 183 green
 * + 54 blue) / 256, rounded down to an integer. A pixel of exponent 0 counts for nothing, one with
 * m = 0 for the mean alone. Products above the range of single precision are infinite.
 *
 * `result`: three floats.
 *   [0]  the smallest brightness above 0; 1e11 when there is none or none is smaller
 *   [1]  the largest brightness, 0 when there is none
 *   [2]  the mean: the sum in double precision, as if added pixel by pixel, row by row, divided by
 *        the pixel count rounded to single precision; 0 when no pixel counts
 * The same image gives the same bits on every processor, and in every floating-point mode of the
 * host in which numbers round to the nearest: subnormal results are written as such even where the
 * processor is told to flush them to zero.
 *
 * Returns `height` when it is above 0, else 0 (with `result` 1e11, 0, 0); -4, with `result` not
 * written, when memory cannot be obtained. Runs on one thread at about the speed of memory.
 */
LUMENFORGE_API int hdrMinMax(int width, int height, const unsigned char* data, float* result);

#ifdef __cplusplus
}
#endif

#endif
