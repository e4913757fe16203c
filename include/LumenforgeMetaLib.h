/*
 * LumenforgeMetaLib: the image metadata of an HDR merging and tone-mapping application.
 *
 * Reads the metadata of JPEG, TIFF and PSD photographs into fixed records, keeps tone-mapping
 * settings in XMP, writes finished images as TIFF with all their metadata, replaces ICC profiles in
 * place and measures HDR buffers.
 *
 * Conventions
 *   - Every function returns a 32-bit integer: non-negative on success, a negative code on failure.
 *     The codes shared by all: -1 a file cannot be opened or read, -2 wrong signature or byte
 *     order, -3 unsupported variant (or a text that does not end in NUL), -4 no memory, -5 no or
 *     another settings method. Each function lists its own.
 *   - Every record and buffer belongs to the caller; the library keeps none, and frees what it
 *     allocates before it returns. Every file that a call opens is closed when it returns.
 *   - No global state, no threads, no callbacks: calls may run at the same time as long as they
 *     share no output record, buffer or file.
 *   - Pointers must not be null unless a comment says that they may be.
 *   - Files are hostile until checked: whatever a file holds, a call reads within it, and its time
 *     and memory are bounded by the file's size. A number that the file ends before leaves its
 *     field as it was and ends the walk that needed it.
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
  uint32_t orientation;              /* TIFF orientation code, 1 to 8 */
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
 * At most three directories of the chain are read; a directory of exactly 255 entries is the last.
 * For a JPEG, xmpLength and xmpOffset are kept only when the packet holds settings of method 1, 2,
 * 3, 4, 10, 11, 12 or 15; the lens is kept in either case. xmpOffset and iptcOffset taken from a
 * TIFF entry are the entry's values as they stand. A thumbnail position beyond 4 GiB and an IPTC
 * length that does not fit 32 bits are not recorded.
 *
 * Returns
 *    1  the walk finished, also when nothing of interest was found
 *   -1  the file cannot be opened or ends before its structure does; a JPEG that does not begin
 *       with FF D8, has five fill bytes in a row ("too many padding bytes" on standard error) or a
 *       segment length below 2 ("invalid marker" on standard error); a PSD without EXIF resource
 *       or whose resources do not begin with "8BIM"
 *   -2  a JPEG without APP1 segment, a PSD without "8BPS", no TIFF byte-order mark
 *   -3  a TIFF header without 42, a PSD with fewer than 3 channels or not in RGB mode
 *  -10  JPEG: a byte other than FF where a marker should start
 * On failure `info` holds what had been read before it. Work is bounded: one call reads at most
 * 5 x 65,535 directory entries and 16 Photoshop blocks; past that the walk ends as at the end of
 * the file.
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
 * daylight saving.
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
 * name) and the thumbnail resource (0x040C), and records their places in `info`.
 *
 * `f`: a seekable stream at the block's first byte; its position afterwards is undefined.
 * `length`: bytes to scan; a block that the file cuts short is scanned as far as it goes.
 *
 * Returns thumbLength of the last thumbnail resource found, 1 when there is none, -4 when memory
 * cannot be obtained or `length` is negative.
 */
LUMENFORGE_API int parse_photoshop_data(FILE* f, int length, ExifInfo* info);

/*
 * Reads the IPTC block (IPTC-IIM 4) of `length` bytes at `offset` of the file into `buf`, which
 * holds `length` bytes.
 *
 * Returns `length`; 0 when the block does not end before the end of the file, or `length` or
 * `offset` is negative; -1 when the file cannot be opened, is empty or delivers too few bytes; -2
 * when the block does not begin with 0x1C (so for a `length` of 0).
 */
LUMENFORGE_API int read_iptc(const char* path, int length, int offset, unsigned char* buf);

/*
 * Reads exposure time and ISO speed from an image description text: items separated by a comma and
 * a space, the eighth the exposure time, the ninth to eleventh three channel values.
 *
 * `f`: a stream at the text's first byte. `length`: its bytes. Writes at most exposureTime, iso and
 * valueSource of `info`.
 *
 * Returns the last channel value read, 0 when there is none, -1 when `length` bytes cannot be read.
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

LUMENFORGE_API int def_param(int method, float* params);
LUMENFORGE_API int searchForTag(int slot, const char* tag, int kind, const unsigned char* buffer,
                                int form, int length, int* found, float* values);
LUMENFORGE_API int get_settings_from_xmp(int selector, int length, const unsigned char* xmp,
                                         char* lensOut, float* params);
LUMENFORGE_API int extract_xmp(const char* path, int size, int offset, unsigned char* buffer);
LUMENFORGE_API int read_xmp(const char* path, int selector, float* params);
LUMENFORGE_API int lfsettings_occurences_in_xmp(int length, const unsigned char* xmp);
LUMENFORGE_API int embed_xmp(int setNumber, int method, const float* params, int hasLens,
                             const char* lens, char* out);
LUMENFORGE_API int write_xmp(const char* path, int method, const float* params);
LUMENFORGE_API int insert_xmp(int setNumber, int method, const float* params, int xmpLength,
                              int insertLength, char* xmp);

/* ---------------------------------------------------------------------------------------------
 * TIFF output
 * ------------------------------------------------------------------------------------------ */

LUMENFORGE_API int get_exif_count(const MetadataBuf* meta, int* exifCount, int* exifDataSize,
                                  const GpsBuf* gps, int* gpsCount, int* gpsDataSize,
                                  int* modelLength, int* makeLength, int* dateTimeLength,
                                  int* gpsDateLength, int* lensLength, char* make);
LUMENFORGE_API int write_exif_buf(int exifCount, int exifDataSize, int gpsCount, int gpsDataSize,
                                  int modelLength, int makeLength, int dateTimeLength,
                                  int gpsDateLength, int orientation, const MetadataBuf* meta,
                                  const GpsBuf* gps, const char* make, unsigned char* out);
LUMENFORGE_API int add_iptc_keyword(int iptcLength, const unsigned char* iptc, int keywordLength,
                                    const unsigned char* keyword, unsigned char* out);
LUMENFORGE_API int buf2tif(const void* pixels, const TifImageInfo* info, int stride,
                           const unsigned char* iccProfile, const MetadataBuf* meta,
                           const GpsBuf* gps, int iptcLength, const unsigned char* iptc, int method,
                           const float* settings, int xmpLength, const unsigned char* xmp,
                           const char* path);
LUMENFORGE_API int get_tif_tag(FILE* stream, int tag, int* count, int* value);
LUMENFORGE_API int update_tif_profile(int size, const unsigned char* profile, const char* path);

/* ---------------------------------------------------------------------------------------------
 * HDR statistics
 * ------------------------------------------------------------------------------------------ */

LUMENFORGE_API int hdrMinMax(int width, int height, const unsigned char* data, float* result);

#ifdef __cplusplus
}
#endif

#endif
