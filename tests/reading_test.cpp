// The reading wing: files and streams in, whole records out.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>

#include "LumenforgeMetaLib.h"
#include "support/builders.h"

namespace {

using namespace build;

const ByteOrder kOrders[] = {ByteOrder::little, ByteOrder::big};

int markOf(ByteOrder order) {
  return order == ByteOrder::little ? 0x4949 : 0x4D4D;
}

template <typename Record>
std::string bytesOf(const Record& record) {
  return {reinterpret_cast<const char*>(&record), sizeof record};
}

ExifInfo emptyInfo() {
  ExifInfo info;
  init_exifInfo(&info);
  return info;
}

ExifInfo expected(const std::function<void(ExifInfo&)>& fill) {
  ExifInfo info = emptyInfo();
  fill(info);
  return info;
}

struct Read {
  int result;
  ExifInfo info;
  std::string error;
};

Read readFile(const std::string& bytes, int type) {
  TempFile file(bytes);
  Read read;
  std::memset(&read.info, 0xA5, sizeof read.info);
  testing::internal::CaptureStderr();
  read.result = getExifData(file.path(), type, &read.info);
  read.error = testing::internal::GetCapturedStderr();
  return read;
}

TEST(ByteOrderReaders, ReadEitherOrderAndLetEndOfFileIntoTheArithmetic) {
  MemoryStream f(
      "\x12\x34\x12\x34\x12\x34\x12\x34\x01\x02\x03\x04\x81\x02\x03\x04\xFF\x02\x03\x04\x05");
  EXPECT_EQ(fgetm2(f.get()), 0x1234U);
  EXPECT_EQ(fgetmi2(f.get(), 0x4D4D), 0x1234U);
  EXPECT_EQ(fgetmi2(f.get(), 0x00014949), 0x3412U);
  EXPECT_EQ(fgetmi2(f.get(), 0), 0x1234U);
  EXPECT_EQ(fgetm4(f.get()), 0x01020304U);
  EXPECT_EQ(fgetmi4(f.get(), 0), 0x81020304U);
  EXPECT_EQ(fgetmi4(f.get(), 0x4949), 0x040302FFU);
  EXPECT_EQ(fgetm2(f.get()), 0x05U * 256 - 1);
}

TEST(ExifDirectory, FillsFieldsByTagAndFallsBackInEntryOrder) {
  struct Case {
    const char* what;
    std::function<std::vector<Entry>(const Tiff&)> entries;
    std::function<void(ExifInfo&)> fill;
  };
  const Case cases[] = {
      {"no entries", [](const Tiff&) { return std::vector<Entry>{}; }, [](ExifInfo&) {}},
      {"all direct tags",
       [](const Tiff& t) {
         return std::vector{t.fraction(0x829A, 1, 250), t.fraction(0x829D, 56, 10),
                            t.shortEntry(0x8827, 400),  Tiff::text(0x9003, "2021:06:05 14:03:59"),
                            t.fraction(0x920A, 50, 1),  t.fraction(0xA20E, 4000, 3),
                            t.shortEntry(0xA210, 3),    t.longEntry(0xA405, 75)};
       },
       [](ExifInfo& i) {
         i.exposureTime = 1.0F / 250.0F;
         i.fNumber = 56.0F / 10.0F;
         i.iso = 400;
         std::strcpy(i.dateTimeOriginal, "2021:06:05 14:03:59");
         i.focalLength = 50;
         i.focalPlaneXResolution = 4000.0F / 3.0F;
         i.focalPlaneResolutionUnit = 3;
         i.focalLength35mm = 75;
       }},
      {"shutter speed; the last one counts",
       [](const Tiff& t) {
         return std::vector{t.fraction(0x9201, 1, 1), t.fraction(0x9201, 8, 1)};
       },
       [](ExifInfo& i) { i.exposureTime = 0.00390625F; }},
      {"negative shutter speed, bare numerator, exposure time wins",
       [](const Tiff& t) { return std::vector{t.fraction(0x9201, -1, 0)}; },
       [](ExifInfo& i) { i.exposureTime = 2; }},
      {"exposure time before shutter speed",
       [](const Tiff& t) {
         return std::vector{t.fraction(0x829A, -1, 2), t.fraction(0x9201, 8, 1)};
       },
       [](ExifInfo& i) { i.exposureTime = -0.5F; }},
      {"shutter speed 0 is none",
       [](const Tiff& t) {
         return std::vector{t.fraction(0x9201, 8, 1), t.fraction(0x9201, 0, 5)};
       },
       [](ExifInfo&) {}},
      {"first aperture wins; a later f-number replaces it",
       [](const Tiff& t) {
         return std::vector{t.fraction(0x9202, 5, 1), t.fraction(0x9205, 3, 1),
                            t.fraction(0x829D, 7, -1)};
       },
       [](ExifInfo& i) { i.fNumber = static_cast<float>(std::exp2(2.5)); }},
      {"maximum aperture alone",
       [](const Tiff& t) {
         return std::vector{t.fraction(0x9202, 5, 0), t.fraction(0x9205, 4, 1)};
       },
       [](ExifInfo& i) { i.fNumber = 4; }},
      {"exposure index", [](const Tiff& t) { return std::vector{t.fraction(0xA215, 1000, 3)}; },
       [](ExifInfo& i) { i.iso = 333; }},
      {"exposure index without denominator, then ignored",
       [](const Tiff& t) {
         return std::vector{t.fraction(0xA215, -7, -2), t.fraction(0xA215, 9, 1)};
       },
       [](ExifInfo& i) { i.iso = static_cast<uint32_t>(-7); }},
      {"two SHORTs give the first, three an offset",
       [](const Tiff& t) {
         return std::vector{Entry{0x8827, 3, 2, u16(7, t.order) + u16(9, t.order)},
                            Entry{0xA405, 3, 3, u32(0x10002, t.order)}};
       },
       [](ExifInfo& i) { i.iso = 7, i.focalLength35mm = 0x10002; }},
      {"a date line ends after its line feed",
       [](const Tiff&) {
         return std::vector{Tiff::text(0x9003, "2021\n:06:05 14:03:59 and more")};
       },
       [](ExifInfo& i) { std::strcpy(i.dateTimeOriginal, "2021\n"); }},
      {"values beyond the end of the file leave what stood there",
       [](const Tiff& t) {
         return std::vector{Tiff::text(0x9003, "2021:06"),
                            Entry{0x829A, 5, 1, u32(0xFFFFFFF0, t.order)},
                            Entry{0x9003, 2, 20, u32(4000, t.order)}};
       },
       [](ExifInfo& i) { std::strcpy(i.dateTimeOriginal, "2021:06"); }},
  };
  for (const ByteOrder order : kOrders) {
    for (const Case& c : cases) {
      SCOPED_TRACE(c.what);
      const Tiff tiff{order};
      // The structure stands 4 bytes into the stream, and its offsets count from there.
      const std::string bytes = "base" + tiff.directory(0, c.entries(tiff));
      MemoryStream f(bytes, 4);
      ExifInfo info = emptyInfo();
      EXPECT_EQ(parse_exif_data(f.get(), 0, markOf(order), 4, &info), 1);
      EXPECT_EQ(bytesOf(info), bytesOf(expected(c.fill)));
    }
  }
}

// Directories across page ends, and values in more places than a real file has.
TEST(ExifDirectory, IsReadWhereverItsPartsLie) {
  const Tiff t{ByteOrder::big};
  for (std::size_t at = 4096 - 40; at < 4096 + 2; ++at) {
    std::vector<Entry> entries;
    std::string bytes(1'000'000, '\0');
    for (std::size_t i = 0; i < 48; ++i) {
      const std::size_t valueAt = 20'000 * (i + 1) + 504 + i % 8;  // some across a multiple of 512
      bytes.replace(valueAt, 8, u32(i + 1) + u32(2));
      entries.push_back({i % 2 ? uint16_t{0x829A} : uint16_t{0x829D}, 5, 1, u32(valueAt)});
    }
    const std::string directory = t.directory(at, entries);
    bytes.replace(at, directory.size(), directory);
    MemoryStream f(bytes, static_cast<long>(at));
    ExifInfo info = emptyInfo();
    parse_exif_data(f.get(), 0, 0x4D4D, 0, &info);
    EXPECT_EQ(info.exposureTime, 24.0F) << at;
    EXPECT_EQ(info.fNumber, 23.5F) << at;
  }
}

TEST(GpsDirectory, CopiesWhatStandsInTheFile) {
  for (const ByteOrder order : kOrders) {
    const Tiff t{order};
    const std::string bytes =
        t.directory(0, {Tiff::text(29, "2021:06:05"), Entry{1, 2, 2, "N"s}, t.fraction(2, 48, 1, 2),
                        Entry{3, 2, 2, "W"s}, t.fraction(4, 7, 1, 5), Entry{5, 1, 1, "\x01"s},
                        t.fraction(6, 5000, 0, 1), t.fraction(7, 12, 1, 3), t.fraction(8, 1, 1)});
    MemoryStream f(bytes);
    ExifInfo info = emptyInfo();
    EXPECT_EQ(parse_gps_data(f.get(), 0, markOf(order), 0, &info), 1);
    EXPECT_EQ(bytesOf(info), bytesOf(expected([](ExifInfo& i) {
                const uint32_t latitude[] = {48, 1, 49, 1, 0, 0};
                const uint32_t longitude[] = {7, 1, 8, 1, 9, 1};
                const uint32_t time[] = {12, 1, 13, 1, 14, 1};
                i.gpsLatitudeRef = 'N', i.gpsLongitudeRef = 'W', i.gpsAltitudeRef = 1;
                std::copy_n(latitude, 6, i.gpsLatitude);
                std::copy_n(longitude, 6, i.gpsLongitude);
                std::copy_n(time, 6, i.gpsTimeStamp);
                i.gpsAltitude[0] = 5000;
                std::strcpy(i.gpsDateStamp, "2021:06:05");
              })));
  }
}

TEST(GpsDirectory, BoundsDateAndFractionsByTheCount) {
  const Tiff t{ByteOrder::big};
  struct Case {
    uint32_t count;
    const char* date;
  };
  for (const Case& c : {Case{5, ""}, Case{6, "2021:"}, Case{8, "2021:06"}, Case{10, "2021:06:0"},
                        Case{11, "2021:06:05"}, Case{0x80000000U, ""}}) {
    Entry date = Tiff::text(29, "2021:06:05 and more");
    date.count = c.count;
    // A count of 0 or less leaves the fractions alone; the type SHORT changes nothing here.
    Entry latitude = t.fraction(2, 48, 1, 3);
    latitude.type = 3, latitude.count = 0xFFFFFFFFU;
    Entry time = t.fraction(7, 9, 1, 1);
    time.type = 3;
    MemoryStream f(t.directory(0, {date, latitude, time}));
    ExifInfo info = emptyInfo();
    parse_gps_data(f.get(), 0, 0x4D4D, 0, &info);
    EXPECT_STREQ(info.gpsDateStamp, c.date) << c.count;
    EXPECT_EQ(info.gpsLatitude[0], 0U);
    EXPECT_EQ(info.gpsTimeStamp[0], 9U);
  }
}

TEST(PhotoshopBlock, FindsResourcesAtEveryPosition) {
  const std::string thumb = resource(0x040C, thumbnail(160, 120, std::string(5000, 'j')));
  const std::string iptc = resource(0x0404, "\x1C\x02\x19");
  const std::string far = std::string(65536 - 3, '8');  // the next signature straddles stretches
  struct Case {
    const char* what;
    std::string block;
    int length;  // -1: the block's own
    int result;
    uint32_t thumbOffset, iptcOffset, iptcLength;
  };
  const Case cases[] = {
      {"thumbnail", thumb, -1, 5000, 2 + 40, 0, 0},
      {"IPTC", iptc, -1, 1, 0, 2 + 12, 3},
      {"both, the later one wins", iptc + thumb + iptc, -1, 5000,
       static_cast<uint32_t>(2 + iptc.size() + 40),
       static_cast<uint32_t>(2 + iptc.size() + thumb.size() + 12), 3},
      {"IPTC with a name", resource(0x0404, "\x1C\x02\x19", "\1x"), -1, 1, 0, 0, 0},
      {"thumbnail with a name", resource(0x040C, thumbnail(160, 120, std::string(7, 'j')), "\1x"),
       -1, 7, 2 + 40, 0, 0},
      {"inside another resource's data", resource(0x0400, "x" + iptc), -1, 1, 0, 2 + 12 + 1 + 12,
       3},
      {"seven bytes are too few", "....8BIM\x04\x04\0"s, -1, 1, 0, 0, 0},
      {"the length ends the scan, not the numbers", iptc, 8, 1, 0, 2 + 12, 3},
      {"one byte less", iptc, 7, 1, 0, 0, 0},
      {"beyond one stretch", far + iptc, -1, 1, 0, 2 + 65533 + 12, 3},
      {"a length beyond the file", iptc, std::numeric_limits<int>::max(), 1, 0, 2 + 12, 3},
      {"cut before the IPTC size", iptc.substr(0, 11), 100, 1, 0, 0, 0},
      {"cut before the thumbnail's length", thumb.substr(0, 35), 100, 1, 0, 0, 0},
      {"nothing", iptc, 0, 1, 0, 0, 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    MemoryStream f("at" + c.block, 2);
    ExifInfo info = emptyInfo();
    const int length = c.length < 0 ? static_cast<int>(c.block.size()) : c.length;
    EXPECT_EQ(parse_photoshop_data(f.get(), length, &info), c.result);
    EXPECT_EQ(info.thumbOffset, c.thumbOffset);
    EXPECT_EQ(info.iptcOffset, c.iptcOffset);
    EXPECT_EQ(info.iptcLength, c.iptcLength);
    if (c.result == 5000) {
      EXPECT_EQ(info.thumbWidth, 160U);
      EXPECT_EQ(info.thumbHeight, 120U);
      EXPECT_EQ(info.thumbRowBytes, 480U);
    }
  }
  MemoryStream f(iptc);
  ExifInfo info;
  EXPECT_EQ(parse_photoshop_data(f.get(), -1, &info), -4);
}

TEST(ReadIptc, ReadsBlocksThatEndBeforeTheFile) {
  std::string bytes(1000, 'x');
  bytes[800] = 0x1C;
  TempFile file(bytes);
  TempFile empty("");
  struct Case {
    const char* path;
    int length, offset, result;
  };
  for (const Case& c :
       {Case{file.path(), 100, 800, 100}, Case{file.path(), 100, 801, -2},
        Case{file.path(), 100, 900, 0}, Case{file.path(), 200, 800, 0},
        Case{file.path(), 199, 800, 199}, Case{file.path(), 0x7FFFFFFF, 0x7FFFFFFF, 0},
        Case{file.path(), -1, 800, 0}, Case{file.path(), 1, -1, 0}, Case{file.path(), 0, 800, -2},
        Case{empty.path(), 0, 0, -1}, Case{"/nonexistent", 1, 0, -1}}) {
    std::vector<unsigned char> buffer(200);
    EXPECT_EQ(read_iptc(c.path, c.length, c.offset, buffer.data()), c.result) << c.offset;
    const auto read = static_cast<std::size_t>(std::max(c.result, 0));
    EXPECT_EQ(std::memcmp(buffer.data(), bytes.data() + 800, read), 0);
  }
}

// One of everything, and where it must be found with the TIFF header at `base` of the file.
std::string photoTiff(const Tiff& t) {
  return t.file(
      {Tiff::text(0x0110, "NIKON D850"), t.shortEntry(0x0112, 6), t.longEntry(0x0201, 999),
       t.longEntry(0x0202, 998), Entry{0x02BC, 1, 777, u32(5000, t.order)},
       Entry{0x83BB, 4, 25, u32(6000, t.order)}},
      {t.fraction(0x829A, 1, 60), t.fraction(0x829D, 28, 10), t.shortEntry(0x8827, 100),
       t.shortEntry(0x8830, 7)},  // of no interest, as most
      {Entry{1, 2, 2, "S"s}, t.fraction(2, 33, 1, 3)},
      {t.longEntry(0x0201, 4000), t.longEntry(0x0202, 1234)});
}

void fillPhoto(ExifInfo& i, uint32_t base) {
  std::strcpy(i.model, "NIKON D850");
  i.orientation = 6;
  i.xmpLength = 777, i.xmpOffset = 5000;
  i.iptcLength = 100, i.iptcOffset = 6000;
  i.exposureTime = 1.0F / 60.0F, i.fNumber = 28.0F / 10.0F, i.iso = 100;
  i.gpsLatitudeRef = 'S';
  const uint32_t latitude[] = {33, 1, 34, 1, 35, 1};
  std::copy_n(latitude, 6, i.gpsLatitude);
  i.thumbOffset = base + 4000, i.thumbLength = 1234;
}

TEST(WholeFiles, FillTheSameRecordFromEveryContainer) {
  for (const ByteOrder order : kOrders) {
    const std::string tiff = photoTiff(Tiff{order});
    const Read plain = readFile(tiff, 0);
    EXPECT_EQ(plain.result, 1);
    EXPECT_EQ(bytesOf(plain.info), bytesOf(expected([](ExifInfo& i) { fillPhoto(i, 0); })));

    const std::string jpeg = kSoi + segment(0xE0, "JFIF") + exifSegment(tiff) + kEoi;
    const Read inJpeg = readFile(jpeg, 1);
    EXPECT_EQ(inJpeg.result, 1);
    EXPECT_EQ(bytesOf(inJpeg.info), bytesOf(expected([](ExifInfo& i) { fillPhoto(i, 20); })));

    const std::string resources =
        resource(0x0400, "odd") + resource(0x0404, "\x1C") + resource(0x0422, tiff) + "behind";
    const Read inPsd = readFile(psd(resources), 2);
    EXPECT_EQ(inPsd.result, 1);
    const auto base = static_cast<uint32_t>(psd("").size() + 16 + 14 + 12);
    EXPECT_EQ(bytesOf(inPsd.info), bytesOf(expected([=](ExifInfo& i) { fillPhoto(i, base); })));
  }
}

// Any file that ends early: a field is as if absent, or what the whole file gives, and a file that
// lacks a part which its structure needs says so.
TEST(WholeFiles, CutAtEveryLengthGiveWholeNumbersOrNone) {
  const Tiff t{ByteOrder::little};
  const std::string jpeg = kSoi + exifSegment(photoTiff(t)) + xmpSegment(packet("Average", "L")) +
                           photoshopSegment(resource(0x0404, "\x1C\2\0")) + kEoi;
  struct Case {
    std::string bytes;
    int type;
    std::size_t needed;  // shorter files fail
  };
  const std::string tiff = photoTiff(t);
  for (const Case& c : {Case{tiff, 0, tiff.size()}, Case{jpeg, 1, jpeg.size() - 16},
                        Case{psd(resource(0x0422, tiff)), 2,
                             psd(resource(0x0422, tiff)).size() - tiff.size() % 2}}) {
    const ExifInfo whole = readFile(c.bytes, c.type).info;
    for (std::size_t length = 0; length < c.bytes.size(); ++length) {
      const Read read = readFile(c.bytes.substr(0, length), c.type);
      EXPECT_EQ(read.result, length < c.needed ? -1 : 1) << c.type << " at " << length;
      const uint32_t* const numbers[] = {&read.info.iso,         &read.info.orientation,
                                         &read.info.thumbOffset, &read.info.thumbLength,
                                         &read.info.xmpLength,   &read.info.xmpOffset};
      for (const uint32_t* number : numbers) {
        const auto at =
            reinterpret_cast<const char*>(number) - reinterpret_cast<const char*>(&read.info);
        uint32_t right = 0;
        std::memcpy(&right, reinterpret_cast<const char*>(&whole) + at, sizeof right);
        EXPECT_TRUE(*number == 0 || *number == right) << c.type << " at " << length;
      }
      EXPECT_TRUE(read.info.exposureTime == 0.0F || read.info.exposureTime == whole.exposureTime);
    }
  }
}

TEST(Directories, ReadModelThumbnailsAndBlocksByTheirRules) {
  for (const ByteOrder order : kOrders) {
    const Tiff t{order};
    struct Case {
      const char* what;
      std::vector<Entry> entries;
      std::string model;
      uint32_t iptcLength;
    };
    const Case cases[] = {
        {"four characters", {Entry{0x0110, 2, 4, "X10\0"s}}, "X10 ", 0},
        {"three characters", {Entry{0x0110, 2, 3, "D7\0"s}}, "D7  ", 0},
        {"two characters", {Entry{0x0110, 2, 2, "D\0"s}}, "D", 0},
        {"inline over a longer one",
         {Tiff::text(0x0110, "OLYMPUS"), Entry{0x0110, 2, 4, "E-1\0"s}},
         "E-1 ",
         0},
        {"what stands behind an inline text of another count stays",
         {Tiff::text(0x0110, "OLYMPUS"), Entry{0x0110, 3, 2, "ABCD"}},
         "ABCDPUS",
         0},
        {"two elements of a large type are nothing", {t.fraction(0x0110, 0x41414141, 1, 2)}, "", 0},
        {"unknown types count one byte", {Entry{0x0110, 14, 4, "E-3\0"s}}, "E-3 ", 0},
        {"63 characters at most",
         {Tiff::text(0x0110, std::string(80, 'm'))},
         std::string(63, 'm'),
         0},
        {"count - 1 characters", {Entry{0x0110, 2, 6, "abcdefgh"}}, "abcde", 0},
        {"a line", {Tiff::text(0x0110, "one\ntwo")}, "one\n", 0},
        {"IPTC as UNDEFINED", {Entry{0x83BB, 7, 25, u32(9, order)}}, "", 25},
        {"IPTC of another type", {Entry{0x83BB, 1, 25, u32(9, order)}}, "", 0},
        {"IPTC longer than 32 bits", {Entry{0x83BB, 4, 0x40000000, u32(9, order)}}, "", 0},
    };
    for (const Case& c : cases) {
      SCOPED_TRACE(c.what);
      const Read read = readFile(t.file(c.entries), 0);
      EXPECT_EQ(read.result, 1);
      EXPECT_EQ(read.info.model, c.model);
      EXPECT_EQ(read.info.iptcLength, c.iptcLength);
      EXPECT_EQ(read.info.iptcOffset, c.what[0] == 'I' ? 9U : 0U);
    }
  }
}

TEST(Directories, EndAfterThreeOrAfterOneOf255Entries) {
  const Tiff t{ByteOrder::little};
  const auto chain = [&](int padded, int entries) {
    std::string bytes = t.header();
    for (int i = 0; i < 5; ++i) {
      std::vector<Entry> list{t.shortEntry(0x0112, static_cast<uint32_t>(i + 1))};
      if (i == padded) list.resize(static_cast<std::size_t>(entries), t.shortEntry(1, 0));
      const auto size = t.directory(0, list).size();
      bytes += t.directory(bytes.size(), list, i == 4 ? 8 : bytes.size() + size);
    }
    return bytes;
  };
  EXPECT_EQ(readFile(chain(9, 0), 0).info.orientation, 3U);
  EXPECT_EQ(readFile(chain(0, 255), 0).info.orientation, 1U);
  EXPECT_EQ(readFile(chain(0, 256), 0).info.orientation, 3U);
  EXPECT_EQ(readFile(t.header(0), 0).result, 1);

  // Photoshop resources count in files of type 0 only, an orientation only as SHORT.
  const std::string block =
      t.file({t.longEntry(0x0112, 3), Entry{0x8649, 7, 15, u32(500, t.order)}});
  const std::string tiff =
      block + std::string(500 - block.size(), ' ') + resource(0x0404, "\x1C\2\0");
  EXPECT_EQ(readFile(tiff, 0).info.iptcOffset, 512U);
  EXPECT_EQ(readFile(tiff, 3).info.iptcOffset, 0U);
  EXPECT_EQ(readFile(tiff, 0).info.orientation, 0U);
}

TEST(Jpeg, EndsEachPassInItsOwnWay) {
  const Tiff t{ByteOrder::big};
  const std::string exif = exifSegment(t.file({t.shortEntry(0x0112, 1)}));
  const std::string padding(4, '\xFF');
  const std::string xmp = xmpSegment(packet("Tone Compressor", "Zoom"));
  std::string skipped;
  for (int i = 0; i < 9; ++i) skipped += segment(0xE2, "icc");
  const std::string ten = skipped + segment(0xE2, "icc");
  const std::string iptc = photoshopSegment(resource(0x0404, "\x1C\2\0"));
  struct Case {
    const char* what;
    std::string bytes;
    int result;
    const char* message;
    bool xmp, lens, iptc;
  };
  const Case cases[] = {
      {"everything", kSoi + exif + xmp + iptc + kEoi, 1, "", true, true, true},
      {"no JPEG", "\xFF\xD9" + exif + kEoi, -1, "", false, false, false},
      {"no APP1", kSoi + segment(0xE0, "JFIF") + kEoi, -2, "", false, false, false},
      {"scan before APP1", kSoi + segment(0xDA, "scan") + exif + kEoi, -2, "", false, false, false},
      {"XMP first", kSoi + xmp + kEoi, -2, "", false, false, false},
      {"another APP1 with a TIFF header", kSoi + segment(0xE1, "sixsixMM\0*\0\0\0\0"s) + kEoi, 1,
       "", false, false, false},
      {"a TIFF number other than 42", kSoi + segment(0xE1, "sixsixMM\0+\0\0\0\0"s) + kEoi, -3, "",
       false, false, false},
      {"fifth fill byte", kSoi + padding + exif + kEoi, -1, "too many padding bytes\n", false,
       false, false},
      {"fill bytes end the second pass", kSoi + padding.substr(1) + exif + xmp + kEoi, -1, "", true,
       true, false},
      {"a marker code without FF", kSoi + exif.substr(1) + xmp + kEoi, -10, "", true, true, false},
      {"invalid first length", kSoi + "\xFF\xE0\0\1"s + exif + kEoi, -1, "invalid marker\n", false,
       false, false},
      {"invalid EXIF length", kSoi + "\xFF\xE1\0\1"s + kEoi, -1, "invalid marker\n", false, false,
       false},
      {"invalid length in the XMP search", kSoi + exif + "\xFF\xE2\0\0"s + xmp + kEoi, -1,
       "invalid marker\n", false, false, false},
      {"invalid XMP length", kSoi + exif + "\xFF\xE1\0\1"s + xmp + kEoi, -1, "invalid marker\n",
       false, false, false},
      {"XMP after nine segments", kSoi + exif + skipped + xmp + kEoi, 1, "", true, true, false},
      {"XMP after ten segments", kSoi + exif + ten + xmp + kEoi, 1, "", false, false, false},
      {"another APP1 before XMP", kSoi + exif + segment(0xE1, "other") + xmp + kEoi, 1, "", false,
       false, false},
      {"too much fill before XMP", kSoi + exif + padding + xmp + kEoi, -1, "", false, false, false},
      {"a method that is not taken over",
       kSoi + exif + xmpSegment(packet("Fusion/2 images", "Zoom")) + iptc + kEoi, 1, "", false,
       true, true},
      {"no settings", kSoi + exif + xmpSegment("<x/>") + std::string(40, ' '), -10, "", false,
       false, false},
      {"a byte before a marker", kSoi + exif + xmp + "\0"s + kEoi, -10, "", true, true, false},
      {"APP13 of another kind ends the search",
       kSoi + exif + segment(0xED, "Photoshop 2.5\0"s) + iptc + kEoi, 1, "", false, false, false},
      {"invalid APP13 length", kSoi + exif + "\xFF\xED\0\1"s, -1, "invalid marker\n", false, false,
       false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    // The packet is read past its segment's end, so something must follow.
    const Read read = readFile(c.bytes + std::string(64, '\0'), 1);
    EXPECT_EQ(read.result, c.result);
    EXPECT_EQ(read.error, c.message);
    EXPECT_STREQ(read.info.lens, c.lens ? "Zoom" : "");
    EXPECT_EQ(read.info.xmpLength, c.xmp ? xmp.size() - 2 : 0);
    EXPECT_EQ(read.info.xmpOffset, c.xmp ? c.bytes.find("<x:xmpmeta") : 0);
    EXPECT_EQ(read.info.iptcOffset, c.iptc ? c.bytes.find("\x1C\2"s) : 0);
  }
  // The packet's text ends 31 bytes behind its segment, no sooner.
  const std::string bare = kSoi + exif + xmp;
  EXPECT_EQ(readFile(bare + std::string(30, ' '), 1).info.xmpLength, 0U);
  EXPECT_NE(readFile(bare + std::string(31, ' '), 1).info.xmpLength, 0U);
}

TEST(Psd, IsRefusedWhereItIsNoRgbImageOrHasNoExif) {
  const std::string tiff = Tiff{ByteOrder::big}.header(0);
  const std::string exif = resource(0x0422, tiff);
  struct Case {
    std::string bytes;
    int result;
  };
  for (const Case& c :
       {Case{psd(exif), 1}, Case{psd(exif, 2), -3}, Case{psd(exif, 4), 1},
        Case{psd(exif, 3, 4), -3}, Case{"8BPX" + psd(exif).substr(4), -2},
        Case{psd(resource(0x0400, "x")), -1}, Case{psd(""), -1},
        Case{psd("8BIX" + exif.substr(4)), -1}, Case{psd(resource(1, "ab") + exif), 1},
        Case{psd(resource(1, "abcd", "\3nam"s) + exif), -1}, Case{psd(resource(0x0422, "XX")), -2},
        Case{psd(resource(0x0422, "MM\0+")), -1}, Case{psd(resource(0x0422, "MM\0+"s)), -3}}) {
    EXPECT_EQ(readFile(c.bytes, 2).result, c.result);
  }
}

TEST(Export, TurnsFloatsIntoFractionsAndLeavesTheRest) {
  struct Case {
    float value;
    int32_t numerator, denominator;
  };
  constexpr int32_t kHost = 77;
  for (const Case& c :
       {Case{1.0F / 250.0F, 100, 24999}, Case{0.00390625F, 100, 25600}, Case{0.5F, 100, 200},
        Case{2.0F, 200, 100}, Case{5.6F, 559, 100}, Case{1.0F / 60.0F, 100, 5999},
        Case{1.0F, 100, 100}, Case{0.0F, kHost, kHost}, Case{-1.0F, kHost, kHost},
        Case{NAN, kHost, kHost}, Case{1e20F, 2147483647, 100}, Case{1e-20F, 100, 2147483647}}) {
    MetadataBuf buf;
    GpsBuf gps;
    std::fill_n(reinterpret_cast<int32_t*>(&buf), 60, kHost);
    std::memset(&gps, kHost, sizeof gps);
    MetadataBuf right = buf;
    GpsBuf rightGps{};
    const ExifInfo info = expected([&](ExifInfo& i) {
      fillPhoto(i, 0);
      i.exposureTime = i.fNumber = i.focalLength = i.focalPlaneXResolution = c.value;
      i.valueSource = 2, i.focalLength35mm = 5, i.focalPlaneResolutionUnit = 3;
      std::strcpy(i.gpsDateStamp, "2021:06:05");
      std::strcpy(i.lens, "Zoom");
    });
    for (int32_t* fraction :
         {right.exposureTime, right.fNumber, right.focalLength, right.focalPlaneXResolution}) {
      fraction[0] = c.numerator, fraction[1] = c.denominator;
    }
    right.iso = 100, right.valueSource = 2, right.focalLength35mm = 5;
    right.focalPlaneResolutionUnit = 3, right.thumbOffset = 4000, right.thumbLength = 1234;
    right.iptcOffset = 6000, right.iptcLength = 100, right.orientation = 6;
    right.xmpOffset = 5000, right.xmpLength = 777;
    std::memset(right.model, 0,
                sizeof right.model + sizeof right.dateTimeOriginal + sizeof right.lens);
    std::strcpy(right.model, "NIKON D850");
    std::strcpy(right.lens, "Zoom");
    std::copy_n(info.gpsLatitude, 6, rightGps.latitude);
    rightGps.latitudeRef = 'S';
    std::strcpy(rightGps.dateStamp, "2021:06:05");
    rightGps.reserved83 = rightGps.reserved95 = kHost;

    EXPECT_EQ(metadataBufFromExifInfo(&info, &buf, &gps), c.numerator);
    EXPECT_EQ(bytesOf(buf), bytesOf(right)) << c.value;
    EXPECT_EQ(bytesOf(gps), bytesOf(rightGps));
  }
}

TEST(Export, OfAMissingFileIsZeroInEveryCopiedField) {
  MetadataBuf buf;
  GpsBuf gps;
  std::fill_n(reinterpret_cast<int32_t*>(&buf), 60, 7);
  std::memset(&gps, 7, sizeof gps);
  char path[] = "/nonexistent/photo.jpg";
  EXPECT_EQ(get_exif_data(path, 1, &buf, &gps), 7);
  const int32_t words[] = {7, 7, 7, 7, 7, 0, 0, 7, 7, 7, 7, 7, 0, 7, 7};
  EXPECT_EQ(std::memcmp(&buf, words, sizeof words), 0);
  EXPECT_EQ(std::string(buf.model, 64 + 20 + 64), std::string(148, '\0'));
  EXPECT_EQ(bytesOf(gps), std::string(83, '\0') + '\7' + std::string(11, '\0') + '\7');
}

TEST(CaptureTime, IsReferenceMinusDateInLocalTime) {
  std::tm date{};
  date.tm_year = 121, date.tm_mon = 5, date.tm_mday = 5;
  date.tm_hour = 14, date.tm_min = 3, date.tm_sec = 59, date.tm_isdst = -1;
  const std::time_t reference = std::mktime(&date) + 3600;
  struct Case {
    const char* text;
    int result;
    float seconds;
  };
  for (const Case& c :
       {Case{"2021:06:05 14:03:59", 1, 3600}, Case{" 2021: 6:5 14:+3:59 more", 1, 3600},
        Case{"2021:06:0514:03:59", -1, 9}, Case{"2021:06:05\n\t14:03:60", 1, 3599},
        Case{"2020:18:05 14:03:59", 1, 3600}, Case{"2021-06-05", -1, 9}, Case{"", -1, 9},
        Case{"2021:06:05 14:03:", -1, 9}, Case{"2021:06:05 14 :03:59", -1, 9},
        Case{"1960:01:01 00:00:00", -1, 9}, Case{"-2147483648:01:01 00:00:00", -1, 9},
        Case{"99999999999:01:01 00:00:00", -1, 9}, Case{"2021:06:05 14:03:+-9", -1, 9}}) {
    float seconds = 9;
    EXPECT_EQ(time_from_datetime(c.text, reference, &seconds), c.result) << c.text;
    EXPECT_EQ(seconds, c.seconds) << c.text;
  }
}

TEST(ProfileName, ComesFromTheDescriptionWithinTheProfile) {
  const std::string start = std::string(32, '.') + "desc" + std::string(7, '\0');
  const std::string text = "A description that is longer than a name";
  const auto name32 = [](std::string name) { return name.resize(32), name; };
  struct Case {
    std::string profile;
    int result;
    std::string name;
  };
  for (const Case& c :
       {Case{start + "\x12" + "sRGB IEC61966-2.1" + std::string(9, '\0'), 4, name32("sRGB")},
        Case{start + "\x12" + "Adobe RGB (1998)" + std::string(9, '\0'), 9, name32("Adobe RGB")},
        Case{start + "\x12" + "my ProPhoto RGB then sRGB", 12, name32("ProPhoto RGB")},
        Case{start + "\x03" + "my ProPhoto RGB", 32, name32("my ProPhoto RGB")},
        Case{start + "\x04" + "my ProPhoto RGB", 12, name32("ProPhoto RGB")},
        Case{start + "\0"s + "sRGB is not counted", 32, name32("sRGB is not counted")},
        Case{start + "\xFF" + "Adobe RG", 32, name32("Adobe RG")},
        Case{start + "\x30" + text, 32, text.substr(0, 32)},
        Case{start + "\x04" + "sRG", -1, name32("")},
        Case{start + "\x04" + "sRGBx", 4, name32("sRGB")},
        Case{"desc" + std::string(60, '\0'), -1, name32("")},
        Case{"  " + start + "\x04" + "sRGB", -1, name32("")},
        Case{start.substr(1) + "\x05" + "sRGB and much more", -1, name32("")},
        Case{std::string(60, 'd'), -1, name32("")}}) {
    const std::vector<unsigned char> profile(c.profile.begin(), c.profile.end());
    char name[32];
    EXPECT_EQ(get_profile_name(static_cast<int>(profile.size()), profile.data(), name), c.result);
    EXPECT_EQ(std::string(name, 32), c.name);
  }
}

}  // namespace
