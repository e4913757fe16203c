// The reading wing: files and streams in, whole records out.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <sstream>

#include "LumenforgeMetaLib.h"
#include "support/builders.h"

namespace {

using namespace build;

const Tiff kBothOrders[] = {{ByteOrder::little}, {ByteOrder::big}};

int markOf(const Tiff& t) { return t.order == ByteOrder::little ? 0x4949 : 0x4D4D; }

template <typename Record>
std::string bytesOf(const Record& record) {
  return {reinterpret_cast<const char*>(&record), sizeof record};
}

// What a record says: every field that is not zero.
std::string say(const ExifInfo& i) {
  std::string text;
  const auto add = [&](const char* name, const std::string& value) {
    if (!value.empty()) text += (text.empty() ? "" : " ") + (name + ("=" + value));
  };
  const auto number = [&](const char* name, double value) {
    char digits[32];
    std::snprintf(digits, sizeof digits, "%.7g", value);
    add(name, value == 0 ? "" : digits);
  };
  const auto words = [&](const char* name, auto& array) {
    std::string all;
    for (const uint32_t word : array) all += (all.empty() ? "" : ",") + std::to_string(word);
    if (std::any_of(std::begin(array), std::end(array), [](uint32_t w) { return w != 0; })) add(name, all);
  };
  number("source", i.valueSource), number("t", double{i.exposureTime}), number("f", double{i.fNumber});
  number("iso", i.iso), number("mm", double{i.focalLength}), number("mm35", i.focalLength35mm);
  number("x", double{i.focalPlaneXResolution}), number("unit", i.focalPlaneResolutionUnit);
  add("model", i.model), add("date", i.dateTimeOriginal), number("width", i.thumbWidth);
  number("height", i.thumbHeight), number("row", i.thumbRowBytes), number("thumb", i.thumbLength);
  number("thumbAt", i.thumbOffset), number("orientation", i.orientation), number("iptc", i.iptcLength);
  number("iptcAt", i.iptcOffset), number("latRef", i.gpsLatitudeRef), words("lat", i.gpsLatitude);
  number("lonRef", i.gpsLongitudeRef), words("lon", i.gpsLongitude), number("altRef", i.gpsAltitudeRef);
  words("alt", i.gpsAltitude), words("time", i.gpsTimeStamp), add("day", i.gpsDateStamp);
  number("xmp", i.xmpLength), number("xmpAt", i.xmpOffset), add("lens", i.lens);
  return text;
}

ExifInfo emptyInfo() {
  ExifInfo info;
  std::memset(&info, 0xA5, sizeof info);
  EXPECT_EQ(init_exifInfo(&info), 0);
  EXPECT_EQ(bytesOf(info), std::string(sizeof info, '\0'));
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
  MemoryStream f("\x12\x34\x12\x34\x12\x34\x12\x34\x01\x02\x03\x04\x81\x02\x03\x04\xFF\x02\x03\x04\x05");
  EXPECT_EQ(fgetm2(f.get()), 0x1234U);
  EXPECT_EQ(fgetmi2(f.get(), 0x4D4D), 0x1234U);
  EXPECT_EQ(fgetmi2(f.get(), 0x00014949), 0x3412U);
  EXPECT_EQ(fgetmi2(f.get(), 0), 0x1234U);
  EXPECT_EQ(fgetm4(f.get()), 0x01020304U);
  EXPECT_EQ(fgetmi4(f.get(), 0), 0x81020304U);
  EXPECT_EQ(fgetmi4(f.get(), 0x4949), 0x040302FFU);
  EXPECT_EQ(fgetm2(f.get()), 0x05U * 256 - 1);
}

struct DirectoryCase {
  const char* entries;
  const char* record;
};

// Every directory stands four bytes into a stream, and its offsets count from there.
void expectDirectory(const DirectoryCase& c, decltype(parse_exif_data)* parse) {
  for (const Tiff& t : kBothOrders) {
    SCOPED_TRACE(c.entries);
    MemoryStream f("base" + t.directory(0, t.entries(c.entries)), 4);
    ExifInfo info = emptyInfo();
    EXPECT_EQ(parse(f.get(), 0, markOf(t), 4, &info), 1);
    EXPECT_EQ(say(info), c.record);
  }
}

TEST(ExifDirectory, FillsFieldsByTagAndFallsBackInEntryOrder) {
  const DirectoryCase cases[] = {
      {"", ""},
      {"829A=1/250; 829D=56/10; 8827=s400; 9003='2021:06:05 14:03:59'; 920A=50/1; A20E=4000/3; A210=s3; A405=l75",
       "t=0.004 f=5.6 iso=400 mm=50 mm35=75 x=1333.333 unit=3 date=2021:06:05 14:03:59"},
      // Shutter speed: the last one counts, 0 is none, no denominator, an exposure time before it.
      {"9201=1/1; 9201=8/1", "t=0.00390625"},
      {"9201=8/1; 9201=0/5", ""},
      {"9201=-1/0", "t=2"},
      {"829A=-1/2; 9201=8/1", "t=-0.5"},
      // Apertures: the first one counts; an f-number of no denominator changes nothing.
      {"9202=5/1; 9205=3/1; 829D=7/-1; 829D=7/0", "f=5.656854"},
      {"9202=5/0; 9205=4/1", "f=4"},
      {"A215=1000/3", "iso=333"},
      {"A215=-7/-2; A215=9/1", "iso=4.294967e+09"},
      // One or two SHORTs stand in the field, three behind it.
      {"8827=3#2@00070007; A405=3#3@00010002", "iso=7 mm35=65538"},
      {"9003='2021\n:06:05 14:03:59 and more'", "date=2021\n"},
      {"9003='2021:06:05 14:03:59 and more'", "date=2021:06:05 14:03:59"},
      // What the file ends before leaves what stood there.
      {"9003='2021:06'; 829A=5#1@FFFFFFF0; 9003=2#20@4000", "date=2021:06"},
  };
  for (const DirectoryCase& c : cases) expectDirectory(c, parse_exif_data);
}

TEST(GpsDirectory, CopiesWhatStandsInTheFile) {
  const DirectoryCase cases[] = {
      {"", ""},
      {"1D='2021:06:05'; 1=2#2'N'; 2=48/1,49/1; 3=2#2'W'; 4=7/1,8/1,9/1,10/1; 5=1#1'\x01'; 6=5000/0,1/1; "
       "7=12/1,13/1,14/1; 8=1/1",
       "latRef=78 lat=48,1,49,1,0,0 lonRef=87 lon=7,1,8,1,9,1 altRef=1 alt=5000,0 time=12,1,13,1,14,1 day=2021:06:05"},
  };
  for (const DirectoryCase& c : cases) expectDirectory(c, parse_gps_data);
  for (const auto& [count, date] : {std::pair{5U, ""},
                                    {6U, "day=2021:"},
                                    {8U, "day=2021:06"},
                                    {10U, "day=2021:06:0"},
                                    {11U, "day=2021:06:05"},
                                    {0x80000000U, ""}}) {
    const Tiff t{ByteOrder::big};
    std::vector<Entry> list = t.entries("1D='2021:06:05 and more'; 2=48/1; 7=9/1");
    list[0].count = count;
    list[1].count = 0xFFFFFFFF;  // below zero: nothing is read
    list[2].type = 3;            // a SHORT does not stand in the field here
    MemoryStream f(t.directory(0, list));
    ExifInfo info = emptyInfo();
    parse_gps_data(f.get(), 0, markOf(t), 0, &info);
    EXPECT_EQ(say(info), "time=9,1,0,0,0,0" + std::string(*date != '\0' ? " " : "") + date);
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

TEST(PhotoshopBlock, FindsResourcesAtEveryPosition) {
  const std::string thumb = resource(0x040C, thumbnail(160, 120, std::string(5000, 'j')));
  const std::string iptc = resource(0x0404, "\x1C\x02\x19");
  const std::string far = std::string(65536 - 3, '8');  // the next signature straddles stretches
  const std::string found = "width=160 height=120 row=480 thumb=5000 thumbAt=42";
  struct Case {
    std::string block;
    int length;  // 0: the block's own
    int result;
    std::string record;
  };
  for (const Case& c : {Case{thumb, 0, 5000, found}, Case{iptc, 0, 1, "iptc=3 iptcAt=14"},
                        Case{thumb + iptc + iptc, 0, 5000, found + " iptc=3 iptcAt=5070"},  // the later one wins
                        Case{resource(0x0404, "\x1C\x02\x19", "\1x"), 0, 1, ""},            // a name
                        Case{resource(0x040C, thumb.substr(12), "\1x"), 0, 5000, found},
                        Case{resource(0x0400, "x" + iptc), 0, 1, "iptc=3 iptcAt=27"},  // in another one's data
                        Case{"....8BIM\x04\x04\0"s, 0, 1, ""},                         // seven bytes
                        Case{iptc, 8, 1, "iptc=3 iptcAt=14"}, Case{iptc, 7, 1, ""},    // numbers beyond the length
                        Case{far + iptc, 0, 1, "iptc=3 iptcAt=65547"},
                        Case{iptc, std::numeric_limits<int>::max(), 1, "iptc=3 iptcAt=14"},
                        Case{iptc.substr(0, 11), 100, 1, ""},  // the file ends before the numbers
                        Case{thumb.substr(0, 35), 100, 1, "width=160 height=120 row=480"}, Case{"", 0, 1, ""},
                        Case{iptc, -1, -4, ""}}) {
    SCOPED_TRACE(c.record);
    MemoryStream f("at" + c.block, 2);
    ExifInfo info = emptyInfo();
    const int length = c.length == 0 ? static_cast<int>(c.block.size()) : c.length;
    EXPECT_EQ(parse_photoshop_data(f.get(), length, &info), c.result);
    EXPECT_EQ(say(info), c.record);
  }
}

TEST(ReadIptc, ReadsBlocksThatEndBeforeTheFile) {
  std::string bytes(1000, 'x');
  bytes[800] = 0x1C;
  TempFile file(bytes);
  TempFile empty("");
  constexpr int kMax = std::numeric_limits<int>::max();
  struct Case {
    int length, offset, result;
  };
  for (const Case& c : {Case{100, 800, 100},
                        {100, 801, -2},
                        {100, 900, 0},
                        {200, 800, 0},
                        {199, 800, 199},
                        {kMax, kMax, 0},
                        {-1, 800, 0},
                        {1, -1, 0},
                        {0, 800, -2}}) {
    std::vector<unsigned char> buffer(200);
    EXPECT_EQ(read_iptc(file.path(), c.length, c.offset, buffer.data()), c.result) << c.offset;
    const auto read = static_cast<std::size_t>(std::max(c.result, 0));
    EXPECT_EQ(std::memcmp(buffer.data(), bytes.data() + 800, read), 0);
  }
  EXPECT_EQ(read_iptc(empty.path(), 0, 0, nullptr), -1);
  EXPECT_EQ(read_iptc("/nonexistent", 1, 0, nullptr), -1);
}

// One of everything. The thumbnail's place counts from the TIFF header, that of XMP and IPTC does not.
std::string photoTiff(const Tiff& t) {
  return t.file(t.entries("110='NIKON D850'; 112=s6; 201=l999; 202=l998; 2BC=1#777@1388; 83BB=4#25@1770"),
                t.entries("829A=1/60; 829D=28/10; 8827=s100; 8830=s7"),  // the last one is of no interest
                t.entries("1=2#2'S'; 2=33/1,34/1,35/1"), t.entries("201=l4000; 202=l1234"));
}

std::string photoRecord(std::size_t base) {
  return "t=0.01666667 f=2.8 iso=100 model=NIKON D850 thumb=1234 thumbAt=" + std::to_string(base + 4000) +
         " orientation=6 iptc=100 iptcAt=6000 latRef=83 lat=33,1,34,1,35,1 xmp=777 xmpAt=5000";
}

TEST(WholeFiles, FillTheSameRecordFromEveryContainer) {
  for (const Tiff& t : kBothOrders) {
    const std::string tiff = photoTiff(t);
    const std::string jpeg = kSoi + segment(0xE0, "JFIF") + exifSegment(tiff) + kEoi;
    const std::string resources =
        resource(0x0400, "odd") + resource(0x0404, "\x1C") + resource(0x0422, tiff) + "behind";
    const std::string files[] = {tiff, jpeg, psd(resources)};
    const std::size_t bases[] = {0, 20, psd("").size() + 16 + 14 + 12};
    for (int type = 0; type < 3; ++type) {
      const Read read = readFile(files[type], type);
      EXPECT_EQ(read.result, 1);
      EXPECT_EQ(say(read.info), photoRecord(bases[type]));
    }
  }
}

// Any file that ends early: a number is as if absent, or what the whole file gives, and a file that
// lacks a part which its structure needs says so.
TEST(WholeFiles, CutAtEveryLengthGiveWholeNumbersOrNone) {
  const std::string tiff = photoTiff(Tiff{ByteOrder::little});
  const std::string jpeg = kSoi + exifSegment(tiff) + xmpSegment(packet("Average", "L")) +
                           photoshopSegment(resource(0x0404, "\x1C\2")) + kEoi;
  const std::string files[] = {tiff, jpeg, psd(resource(0x0422, tiff))};
  const std::size_t needed[] = {tiff.size(), jpeg.size() - 16, files[2].size() - tiff.size() % 2};
  for (int type = 0; type < 3; ++type) {
    const std::string whole = " " + say(readFile(files[type], type).info) + " ";
    for (std::size_t length = 0; length < files[type].size(); ++length) {
      const Read read = readFile(files[type].substr(0, length), type);
      EXPECT_EQ(read.result, length < needed[type] ? -1 : 1) << type << " at " << length;
      std::string field;
      ExifInfo numbers = read.info;
      std::memset(numbers.model, 0, sizeof numbers.model);  // a text may be cut
      std::istringstream fields(say(numbers));
      while (fields >> field) {
        // Whole fractions, then zeros; and a JPEG's IPTC block is known twice, at last from its APP13.
        const bool partial = field.starts_with("lat=") || (type == 1 && field.starts_with("iptc"));
        EXPECT_TRUE(partial || whole.find(" " + field + " ") != whole.npos) << field << " at " << length;
      }
    }
  }
}

TEST(Directories, ReadModelsAndBlocksByTheirRules) {
  const std::string long80(80, 'm');
  const std::pair<std::string, std::string> cases[] = {
      {"110=2#4'X10'", "model=X10 "},
      {"110=2#3'D7'", "model=D7  "},
      {"110=2#2'D'", "model=D"},
      // A short text over a longer one: what stands behind it stays, unless three or four count.
      {"110='OLYMPUS'; 110=2#4'E-1'", "model=E-1 "},
      {"110='OLYMPUS'; 110=3#2'ABCD'", "model=ABCDPUS"},
      {"110=1094795585/1,1/1", ""},  // of a large type, two are nothing
      {"110=14#4'E-3'", "model=E-3 "},
      {"110='" + long80 + "'", "model=" + long80.substr(17)},
      {"110=2#6'abcdefgh'", "model=abcde"},
      {"110='one\ntwo'", "model=one\n"},
      {"83BB=7#25@9", "iptc=25 iptcAt=9"},
      {"83BB=1#25@9", "iptcAt=9"},
      {"83BB=4#1073741824@9", "iptcAt=9"},  // a length beyond 32 bits
      {"112=l3", ""},                       // an orientation counts as SHORT only
  };
  for (const Tiff& t : kBothOrders) {
    for (const auto& [entries, record] : cases) {
      const Read read = readFile(t.file(t.entries(entries)), 0);
      EXPECT_EQ(read.result, 1);
      EXPECT_EQ(say(read.info), record) << entries;
    }
  }
}

TEST(Directories, EndAfterThreeOrAfterOneOf255Entries) {
  const Tiff t{ByteOrder::little};
  const auto chain = [&](int padded, std::size_t entries) {
    std::string bytes = t.header();
    for (int i = 0; i < 5; ++i) {
      std::vector<Entry> list{t.shortEntry(0x0112, static_cast<uint32_t>(i + 1))};
      if (i == padded) list.resize(entries, t.shortEntry(1, 0));
      const auto size = t.directory(0, list).size();
      bytes += t.directory(bytes.size(), list, i == 4 ? 8 : bytes.size() + size);
    }
    return bytes;
  };
  EXPECT_EQ(readFile(chain(9, 0), 0).info.orientation, 3U);
  EXPECT_EQ(readFile(chain(0, 255), 0).info.orientation, 1U);
  EXPECT_EQ(readFile(chain(0, 256), 0).info.orientation, 3U);
  EXPECT_EQ(readFile(t.header(0), 0).result, 1);

  // Photoshop resources count in files of type 0 only.
  const std::string block = t.file(t.entries("8649=7#15@1F4"));
  const std::string tiff = block + std::string(500 - block.size(), ' ') + resource(0x0404, "\x1C\2");
  EXPECT_EQ(say(readFile(tiff, 0).info), "iptc=2 iptcAt=512");
  EXPECT_EQ(say(readFile(tiff, 3).info), "");
}

TEST(Jpeg, EndsEachPassInItsOwnWay) {
  const std::string exif = exifSegment(Tiff{ByteOrder::big}.file({}));
  const std::string fill(4, '\xFF');
  const std::string xmp = xmpSegment(packet("Tone Compressor", "Zoom"));
  const std::string other = xmpSegment(packet("Fusion/2 images", "Zoom"));
  const std::string iptc = photoshopSegment(resource(0x0404, "\x1C\2"));
  const std::string icc = segment(0xE2, "icc");
  const std::string nine = icc + icc + icc + icc + icc + icc + icc + icc + icc;
  const std::string jfif = segment(0xE0, "JFIF");
  struct Case {
    std::string bytes;  // behind the start of image
    int result;
    std::string found;  // of x XMP, l lens, i IPTC
    std::string said = "";
  };
  const std::string invalid = "invalid marker\n";
  for (const Case& c :
       {Case{exif + xmp + iptc + kEoi, 1, "xli"},
        // The first pass.
        Case{jfif + kEoi, -2, ""}, Case{segment(0xDA, "scan") + exif + kEoi, -2, ""}, Case{xmp + kEoi, -2, ""},
        Case{segment(0xE1, "sixsixMM\0*\0\0\0\0"s) + kEoi, 1, ""},
        Case{segment(0xE1, "sixsixMM\0+\0\0\0\0"s) + kEoi, -3, ""},
        Case{fill + exif + kEoi, -1, "", "too many padding bytes\n"},
        Case{"\xFF\xE0\0\1"s + exif + kEoi, -1, "", invalid}, Case{"\xFF\xE1\0\1"s + kEoi, -1, "", invalid},
        // The search for XMP.
        Case{exif + nine + xmp + kEoi, 1, "xl"}, Case{exif + nine + icc + xmp + kEoi, 1, ""},
        Case{exif + segment(0xE1, "other") + xmp + kEoi, 1, ""}, Case{exif + other + iptc + kEoi, 1, "li"},
        Case{exif + "\xFF\xE2\0\0"s + xmp + kEoi, -1, "", invalid},
        // The second pass: no fill bytes, no code without FF.
        Case{fill.substr(1) + exif + xmp + kEoi, -1, "xl"}, Case{exif + fill + xmp + kEoi, -1, ""},
        Case{exif.substr(1) + xmp + kEoi, -10, "xl"}, Case{exif + xmp + "\0"s + kEoi, -10, "xl"},
        Case{exif + xmpSegment("<x/>"), -10, ""}, Case{exif + "\xFF\xE1\0\1"s + xmp + kEoi, -1, "", invalid},
        Case{exif + segment(0xED, "Photoshop 2.5\0"s) + iptc + kEoi, 1, ""},
        Case{exif + "\xFF\xED\0\1"s, -1, "", invalid}}) {
    // The packet is read past its segment's end, so something must follow.
    const std::string bytes = kSoi + c.bytes + std::string(64, '\0');
    const Read read = readFile(bytes, 1);
    SCOPED_TRACE(c.bytes);
    EXPECT_EQ(read.result, c.result);
    EXPECT_EQ(read.error, c.said);
    const bool hasXmp = c.found.find('x') != c.found.npos;
    EXPECT_STREQ(read.info.lens, c.found.find('l') != c.found.npos ? "Zoom" : "");
    EXPECT_EQ(read.info.xmpLength, hasXmp ? xmp.size() - 2 : 0);
    EXPECT_EQ(read.info.xmpOffset, hasXmp ? bytes.find("<x:xmpmeta") : 0);
    EXPECT_EQ(read.info.iptcOffset, c.found.find('i') != c.found.npos ? bytes.find("\x1C\2") : 0);
  }
  EXPECT_EQ(readFile("\xFF\xD9" + exif + kEoi, 1).result, -1);
  // The packet's text ends 31 bytes behind its segment, no sooner.
  const std::string bare = kSoi + exif + xmp;
  EXPECT_EQ(readFile(bare + std::string(30, ' '), 1).info.xmpLength, 0U);
  EXPECT_NE(readFile(bare + std::string(31, ' '), 1).info.xmpLength, 0U);
}

TEST(Psd, IsRefusedWhereItIsNoRgbImageOrHasNoExif) {
  const std::string exif = resource(0x0422, Tiff{ByteOrder::big}.header(0));
  const std::pair<std::string, int> cases[] = {{psd(exif), 1},
                                               {psd(exif, 2), -3},
                                               {psd(exif, 4), 1},
                                               {psd(exif, 3, 4), -3},
                                               {"8BPX" + psd(exif).substr(4), -2},
                                               {psd(resource(0x0400, "x")), -1},
                                               {psd(""), -1},
                                               {psd("8BIX" + exif.substr(4)), -1},
                                               {psd(resource(1, "ab") + exif), 1},
                                               {psd(resource(1, "abcd", "\3nam"s) + exif), -1},
                                               {psd(resource(0x0422, "XX")), -2},
                                               {psd(resource(0x0422, "MM\0+")), -1},
                                               {psd(resource(0x0422, "MM\0+"s)), -3}};
  for (const auto& [bytes, result] : cases) EXPECT_EQ(readFile(bytes, 2).result, result);
}

TEST(Export, TurnsFloatsIntoFractionsAndLeavesTheRest) {
  struct Case {
    float value;
    int32_t over, under;
  };
  constexpr int32_t kHost = 0x07070707;
  constexpr int32_t kMax = 2147483647;
  for (const Case& c : {Case{1.0F / 250.0F, 100, 24999},
                        {0.00390625F, 100, 25600},
                        {0.5F, 100, 200},
                        {2.0F, 200, 100},
                        {5.6F, 559, 100},
                        {1.0F / 60.0F, 100, 5999},
                        {1.0F, 100, 100},
                        {0.0F, kHost, kHost},
                        {-1.0F, kHost, kHost},
                        {NAN, kHost, kHost},
                        {1e20F, kMax, 100},
                        {1e-20F, 100, kMax}}) {
    ExifInfo info = readFile(photoTiff(kBothOrders[0]), 0).info;
    info.exposureTime = info.fNumber = info.focalLength = info.focalPlaneXResolution = c.value;
    info.valueSource = 2, info.focalLength35mm = 5, info.focalPlaneResolutionUnit = 3;
    std::memset(info.gpsLongitude, 1, 24 + 4 + 8 + 24 + 11);  // to the end of the GPS fields
    std::strcpy(info.lens, "Zoom");
    const int32_t n = c.over;
    const int32_t d = c.under;
    const int32_t words[] = {n, d, n, d, kHost, 100,  2,    kHost, kHost, kHost, n,  d,
                             5, n, d, 3, 4000,  1234, 6000, 100,   6,     5000,  777};
    MetadataBuf buf;
    GpsBuf gps;
    std::memset(&buf, 7, sizeof buf);
    std::memset(&gps, 7, sizeof gps);
    EXPECT_EQ(metadataBufFromExifInfo(&info, &buf, &gps), n);
    EXPECT_EQ(bytesOf(buf),
              bytesOf(words) + std::string(info.model, 64) + std::string(20, '\0') + std::string(info.lens, 64))
        << c.value;
    const std::string references = {'S', info.gpsLongitudeRef, '\1', '\7'};
    const std::string position = bytesOf(info.gpsLatitude) + std::string(24 + 8 + 24, '\1');
    EXPECT_EQ(bytesOf(gps), position + references + std::string(11, '\1') + '\7');
  }
}

TEST(Export, OfAMissingFileIsZeroInEveryCopiedField) {
  MetadataBuf buf;
  GpsBuf gps;
  std::fill_n(reinterpret_cast<int32_t*>(&buf), 60, 7);
  std::memset(&gps, 7, sizeof gps);
  char path[] = "/nonexistent/photo.jpg";
  EXPECT_EQ(get_exif_data(path, 1, &buf, &gps), 7);
  const int32_t words[60] = {7, 7, 7, 7, 7, 0, 0, 7, 7, 7, 7, 7, 0, 7, 7};
  EXPECT_EQ(bytesOf(buf), bytesOf(words));
  EXPECT_EQ(bytesOf(gps), std::string(83, '\0') + '\7' + std::string(11, '\0') + '\7');
}

TEST(CaptureTime, IsReferenceMinusDateInLocalTime) {
  std::tm date{};
  date.tm_year = 121, date.tm_mon = 5, date.tm_mday = 5;
  date.tm_hour = 14, date.tm_min = 3, date.tm_sec = 59, date.tm_isdst = -1;
  const std::time_t reference = std::mktime(&date) + 3600;
  const std::pair<const char*, float> cases[] = {{"2021:06:05 14:03:59", 3600},
                                                 {" 2021: 6:5 14:+3:59 more", 3600},
                                                 {"2021:06:05\n\t14:03:60", 3599},
                                                 {"2020:18:05 14:03:59", 3600},
                                                 {"2021:06:0514:03:59", -1},
                                                 {"2021-06-05", -1},
                                                 {"", -1},
                                                 {"2021:06:05 14:03:", -1},
                                                 {"2021:06:05 14 :03:59", -1},
                                                 {"1960:01:01 00:00:00", -1},
                                                 {"-2147483648:01:01 00:00:00", -1},
                                                 {"99999999999:01:01 00:00:00", -1},
                                                 {"2021:06:05 14:03:+-9", -1}};
  for (const auto& [text, right] : cases) {
    float seconds = -1;
    EXPECT_EQ(time_from_datetime(text, reference, &seconds), right < 0 ? -1 : 1) << text;
    EXPECT_EQ(seconds, right) << text;
  }
}

TEST(ProfileName, ComesFromTheDescriptionWithinTheProfile) {
  const std::string start = std::string(32, '.') + "desc" + std::string(7, '\0');
  const std::string text = "A description that is longer than a name";
  struct Case {
    std::string profile;
    int result;
    std::string name;
  };
  for (const Case& c :
       {Case{start + "\x12" + "sRGB IEC61966-2.1" + std::string(9, '\0'), 4, "sRGB"},
        Case{start + "\x12" + "Adobe RGB (1998)" + std::string(9, '\0'), 9, "Adobe RGB"},
        Case{start + "\x12" + "my ProPhoto RGB then sRGB", 12, "ProPhoto RGB"},
        Case{start + "\x03" + "my ProPhoto RGB", 32, "my ProPhoto RGB"},
        Case{start + "\x04" + "my ProPhoto RGB", 12, "ProPhoto RGB"},
        Case{start + "\0"s + "sRGB is not counted", 32, "sRGB is not counted"},
        Case{start + "\xFF" + "Adobe RG", 32, "Adobe RG"}, Case{start + "\x30" + text, 32, text.substr(0, 32)},
        Case{start + "\x04" + "sRG", -1, ""}, Case{start + "\x04" + "sRGBx", 4, "sRGB"},
        Case{"desc" + std::string(60, '\0'), -1, ""}, Case{"  " + start + "\x04" + "sRGB", -1, ""},
        Case{start.substr(1) + "\x05" + "sRGB and much more", -1, ""}}) {
    const std::vector<unsigned char> profile(c.profile.begin(), c.profile.end());
    char name[32];
    EXPECT_EQ(get_profile_name(static_cast<int>(profile.size()), profile.data(), name), c.result);
    EXPECT_EQ(std::string(name, 32), c.name + std::string(32 - c.name.size(), '\0'));
  }
}

}  // namespace
