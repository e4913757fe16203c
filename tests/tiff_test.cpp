// Records and blocks in, EXIF and IPTC blocks out; tag lookup and profile replacement in files.
#include <gtest/gtest.h>
#include <unistd.h>

#include <climits>
#include <tuple>

#include "LumenforgeMetaLib.h"
#include "support/file_faults.h"
#include "support/tiff_records.h"

namespace {

using namespace build;

TEST(ExifBlock, DerivesTheMakeFromTheModel) {
  const std::pair<std::string, std::string> kMakes[] = {{"Canon EOS", "Canon"},
                                                        {"NIKON", "NIKON CORPORATION"},
                                                        {"SLT-A77", "SONY"},
                                                        {"SONY", "SONY"},
                                                        {"DMC-G1", "Panasonic"},
                                                        {"NEX-5", "SONY"},
                                                        {"X10 ", "FUJIFILM"},
                                                        {"PENTAX K", "PENTAX"},
                                                        {"DSLR-A1", "SONY"},
                                                        {"E-1", "OLYMPUS"},
                                                        {"E-7", "OLYMPUS"},
                                                        {"E-P1", "OLYMPUS"},
                                                        {"E-M5", "OLYMPUS"},
                                                        {"SP350", "OLYMPUS"},
                                                        {"SP5", "OLYMPUS"},
                                                        {"OLYMPUS D", "OLYMPUS"},
                                                        {"FinePix S", "FUJIFILM"},
                                                        {"FUJIFILM", "FUJIFILM"},
                                                        {"Panasonic G", "Panasonic"},
                                                        {"canon", ""},
                                                        {"E-9", ""},
                                                        {"E-0", ""},
                                                        {"E-8", ""},
                                                        {"SP4", ""},
                                                        {"X10", ""},
                                                        {"SON\0Y"s, ""},
                                                        {"", ""}};
  for (const auto& [model, make] : kMakes) {
    Records r;
    setText(r.meta.model, model);
    const Sizes s = r.measure();
    EXPECT_EQ(std::string(r.make, 64), make + std::string(64 - make.size(), '\0')) << model;
    EXPECT_EQ(s.make, make.empty() ? 0 : static_cast<int>(make.size()) + 1) << model;
  }
}

TEST(ExifBlock, CountsWhatIsPresent) {
  const std::pair<void (*)(Records&), Sizes> kCases[] = {
      {[](Records&) {}, {5, 44, 9, 91, 13, 6, 20, 11, 8}},
      {[](Records& r) { r = {}; }, {0, 0, 0, 0, 0, 0, 0, 0, 0}},
      {[](Records& r) {
         r = {};
         r.gps.latitudeRef = 'S';
       },
       {0, 0, 2, 0, 0, 0, 0, 0, 0}},
      {[](Records& r) {
         r = {};
         r.gps.dateStamp[0] = 1;
       },
       {0, 0, 2, 11, 0, 0, 0, 11, 0}},
      {[](Records& r) {
         r.meta.exposureTime[0] = 0;
         r.meta.fNumber[1] = -1;
         r.meta.focalLength[0] = INT_MIN;
         r.meta.iso = 0x80000000;
         r.gps.latitude[1] = 0x80000000;
         r.gps.longitude[0] = 0;
         r.gps.altitude[1] = 0;
         r.gps.timeStamp[0] = 0xFFFFFFFF;
         r.gps.latitudeRef = '\x80';
         r.gps.longitudeRef = 0;
         r.gps.altitudeRef = 0xFF;
       },
       {1, 20, 2, 11, 13, 6, 20, 11, 8}},
      {[](Records& r) {
         setText(r.meta.model, std::string(64, 'm'));
         setText(r.meta.lens, std::string(64, 'l'));
         setText(r.meta.dateTimeOriginal, std::string(20, 'd'));
       },
       {5, 44, 9, 91, 63, 0, 20, 11, 63}},
      {[](Records& r) {
         setText(r.meta.model, std::string(63, 'm'));
         setText(r.meta.lens, "");
         setText(r.meta.dateTimeOriginal, "d");
       },
       {5, 26, 9, 91, 64, 0, 2, 11, 0}}};
  for (const auto& [edit, expected] : kCases) {
    Records r = everything();
    edit(r);
    EXPECT_EQ(r.measure(), expected);
  }
}

TEST(ExifBlock, IsWrittenByteForByte) {
  for (const int orientation : {6, 8, 1, 0, 9, 65542, -1}) {
    Records r = everything();
    const std::string expected =
        fileOf("",
               {Tiff::text(0x10F, "Canon"), Tiff::text(0x110, "Canon EOS 5D"),
                kTiff.shortEntry(0x112, orientation == 6 || orientation == 8 ? orientation : 1)},
               kExif, kGps);
    std::vector<char> out(expected.size());
    EXPECT_EQ(r.block(r.measure(), orientation, out), static_cast<int>(expected.size()));
    EXPECT_EQ(std::string(out.begin(), out.end()), expected) << orientation;
  }
  // A short text stands behind the directory, too; bytes that carry nothing are not touched.
  Records r;
  setText(r.meta.model, "K");
  std::vector<char> out(40, '?');
  EXPECT_EQ(r.block(r.measure(), 3, out), 40);
  EXPECT_EQ(std::string(out.begin(), out.end()),
            "II*\0\x08\0\0\0\x02\0"
            "\x10\x01\x02\0\x02\0\0\0\x26\0\0\0"
            "\x12\x01\x03\0\x01\0\0\0\x03\0??"
            "\0\0\0\0K\0"s);
}

TEST(ExifBlock, StaysWithinItsSizeWhateverTheArguments) {
  Records r = everything();
  r.measure();
  std::vector<char> out(8 + 42 + 18 + 3 + 18);
  EXPECT_EQ(r.block({1, 3, 1, 0, -5, 0, 20, 11, 0}, 1, out), static_cast<int>(out.size()));
  std::vector<char> wide(38 + 100);
  EXPECT_EQ(r.block({0, 99, 0, 99, 100, -1, 0, 0, 0}, 1, wide), 138);
  std::vector<char> none(1, '?');
  for (const Sizes& s : {Sizes{0, 9, 0, 9, 0, 0, 9, 9, 0}, Sizes{-1, 0, -1, 0, -1, -1, 0, 0, 0},
                         Sizes{INT_MAX, 0, 0, 0, 0, 0, 0, 0, 0},
                         Sizes{1, INT_MAX, 1, INT_MAX, INT_MAX, INT_MAX, 0, 0, 0}}) {
    EXPECT_EQ(r.block(s, 1, none), -1);
  }
  EXPECT_EQ(none[0], '?');
}

std::string dataset(int record, int number, const std::string& data) {
  return "\x1C"s + static_cast<char>(record) + static_cast<char>(number) +
         u16(static_cast<uint32_t>(data.size())) + data;
}

TEST(IptcKeywords, GoBehindTheirPredecessorOrAreRefused) {
  const std::string version = dataset(2, 0, "\0\2"s);
  const std::string word = dataset(2, 25, "word");
  const std::string caption = dataset(2, 120, "caption");
  const std::string inData = dataset(2, 120, "a\x1C\2\x19\0\1bc"s);
  const std::string first = dataset(1, 90, "\x1B%G");
  // What stands before and behind the new keyword; a block of which no place is found.
  const std::tuple<std::string, std::string, int> kCases[] = {
      {version, "", 7},
      {version + word + word, caption, 25},
      {version + caption, first + first, 19},
      {first, first, 8},
      {word + caption, "", 21},
      {word, "", 9},
      {dataset(2, 120, ""), "", 5},
      {version + inData.substr(0, 12), inData.substr(12), 19},
      {"", version + word + "\x1C\2\x19\0\x05only"s, -1},
      {"", "\x1C\2\x19\0"s, -1},
      {"", std::string(5, '\xFF'), -1}};
  for (const auto& [before, behind, result] : kCases) {
    const std::string block = before + behind;
    const std::vector<uint8_t> exact(block.begin(), block.end());
    for (const std::string& keyword : {"sea"s, std::string(300, 'k'), ""s}) {
      std::string out(block.size() + 5 + keyword.size(), '?');
      EXPECT_EQ(add_iptc_keyword(static_cast<int>(exact.size()), exact.data(),
                                 static_cast<int>(keyword.size()), bytesAt(keyword),
                                 reinterpret_cast<uint8_t*>(out.data())),
                result);
      EXPECT_EQ(out, result < 0 ? std::string(out.size(), '?')
                                : before + dataset(2, 25, keyword) + behind);
    }
  }
  std::string out(12 + 65535, '?');
  auto* to = reinterpret_cast<uint8_t*>(out.data());
  const std::string longest(65535, 'k');
  EXPECT_EQ(add_iptc_keyword(0, nullptr, 65535, bytesAt(longest), to), 7);
  EXPECT_EQ(out, version + dataset(2, 25, longest));
  const std::tuple<int, int, int> kRefused[] = {
      {-1, 1, -1}, {0, -1, -2}, {0, 65536, -2}, {INT_MAX - 5, 1, -2}, {INT_MAX, 0, -2}};
  for (const auto& [length, keywordLength, result] : kRefused) {
    EXPECT_EQ(add_iptc_keyword(length, to, keywordLength, to, to), result);
  }
}
struct Lookup {
  int result, count, value;
  auto operator<=>(const Lookup&) const = default;
};

Lookup lookUp(std::FILE* stream, int tag) {
  Lookup found{0, -77, -77};
  found.result = get_tif_tag(stream, tag, &found.count, &found.value);
  return found;
}

TEST(TagLookup, FindsTheFirstEntryOfTheChain) {
  const std::string values = le16({11, 12, 13, 14});
  const std::string file =
      kTiff.file({kTiff.shortEntry(0x100, 65535),
                  {0x101, 3, 2, values.substr(0, 4)},
                  {0x102, 3, 3, values},
                  kTiff.longEntry(0x103, 0xFFFFFFFE)},
                 {kTiff.longEntry(0x200, 1)}, {}, {kTiff.longEntry(0x103, 5), {0x104, 1, 9, ""}});
  const auto second = static_cast<int>(file.size()) - 30;
  const std::pair<int, Lookup> kCases[] = {{0x100, {10, 1, 65535}},         {0x101, {22, 2, 11}},
                                           {0x102, {34, 3, 8 + 66}},        {0x103, {46, 1, -2}},
                                           {0x104, {second + 14, 9, 0}},    {0x200, {-1, -77, -77}},
                                           {65536 + 0x100, {-1, -77, -77}}, {-1, {-1, -77, -77}}};
  for (const auto& [tag, expected] : kCases) {
    EXPECT_EQ(lookUp(MemoryStream(file).get(), tag), expected) << tag;
  }
  // The header stands at the stream's position, the directories where the file says.
  EXPECT_EQ(lookUp(MemoryStream(file + file, static_cast<long>(file.size())).get(), 0x100).result,
            10);
}

TEST(TagLookup, TellsWhyThereIsNone) {
  const std::string one = kTiff.header() + kTiff.directory(8, {kTiff.longEntry(1, 2)}, 8);
  const std::pair<std::string, int> kCases[] = {
      {one, -1},                       // for ever
      {kTiff.header(0), -1},           // no directory
      {kTiff.header(7000), -1},        // beyond the end
      {one.substr(0, 9), -1},          // the count is cut
      {one.substr(0, 21), -1},         // the entry
      {one.substr(0, 24), -1},         // the next directory
      {kTiff.header() + "\0\0"s, -2},  // no entries
      {kTiff.header().substr(0, 7), -2},
      {"II+\0\x08\0\0\0"s + one.substr(8), -2},
      {Tiff{ByteOrder::big}.file({Tiff{ByteOrder::big}.longEntry(9, 2)}), -2}};
  for (const auto& [bytes, result] : kCases) {
    EXPECT_EQ(lookUp(MemoryStream(bytes).get(), 9), (Lookup{result, -77, -77})) << bytes.size();
  }
  std::FILE* pipe = ::popen("printf 'II*\\0\\10\\0\\0\\0\\1\\0'", "r");
  EXPECT_EQ(lookUp(pipe, 9), (Lookup{-3, -77, -77}));
  ::pclose(pipe);
}

// A TIFF file with a profile entry and bytes behind its directory.
std::string profileFile(const std::string& fields) {
  std::string bytes =
      kTiff.header() + kTiff.directory(8, {kTiff.longEntry(0x100, 1), {0x8773, 7, 0, "????"}});
  return bytes.replace(8 + 2 + 12 + 4, 8, fields) + "odd";
}

std::string fieldsOf(uint64_t count, uint64_t offset) {
  return u32(count, ByteOrder::little) + u32(offset, ByteOrder::little);
}

TEST(ProfileUpdate, AppendsAndRepoints) {
  const std::string old = profileFile(fieldsOf(3, 38));
  TempFile file(old);
  EXPECT_EQ(update_tif_profile(5, bytesAt("first"), file.path()), 5);
  EXPECT_EQ(file.bytes(), profileFile(fieldsOf(5, old.size())) + "first");
  EXPECT_EQ(update_tif_profile(6, bytesAt("second"), file.path()), 6);
  const std::string twice = profileFile(fieldsOf(6, old.size() + 5)) + "firstsecond";
  EXPECT_EQ(file.bytes(), twice);
  for (const int size : {0, -1, INT_MIN})
    EXPECT_EQ(update_tif_profile(size, nullptr, file.path()), -1);
  EXPECT_EQ(file.bytes(), twice);

  for (const std::string& bytes :
       {kTiff.file({kTiff.longEntry(0x100, 1)}),
        Tiff{ByteOrder::big}.file({{0x8773, 7, 8, "profiles"}}), "II*"s, ""s}) {
    TempFile other(bytes);
    EXPECT_EQ(update_tif_profile(5, bytesAt("first"), other.path()), 0);
    EXPECT_EQ(other.bytes(), bytes);
  }
}

TEST(ProfileUpdate, KeepsWithinTheOffsetsBits) {
  TempFile file(profileFile(fieldsOf(3, 38)));
  const off_t end = 0xFFFFFFFF - 5;
  ASSERT_EQ(::truncate(file.path(), end), 0);
  EXPECT_EQ(update_tif_profile(6, bytesAt("second"), file.path()), -2);
  EXPECT_EQ(update_tif_profile(5, bytesAt("first"), file.path()), 5);
  std::FILE* stream = std::fopen(file.path(), "rb");
  EXPECT_EQ(lookUp(stream, 0x8773), (Lookup{22, 5, static_cast<int>(end)}));
  std::fclose(stream);
}

TEST(ProfileUpdate, LeavesTheFileAsItWasWhereverItFails) {
  const std::string old = profileFile(fieldsOf(3, 38));
  std::string messages;
  int failures = 0;
  for (int step = 0;; ++step) {
    TempFile file(old);
    testing::internal::CaptureStderr();
    fault::countdown = step;
    const int result = update_tif_profile(5, bytesAt("first"), file.path());
    const bool reached = fault::countdown < 0;
    fault::countdown = -1;
    messages += testing::internal::GetCapturedStderr();
    if (!reached) break;
    if (result == 5) continue;  // a file that was only read could not be closed
    ++failures;
    EXPECT_LE(result, 0) << step;
    EXPECT_EQ(file.bytes(), old) << step;
  }
  EXPECT_GE(failures, 10);
  EXPECT_EQ(messages,
            "Can not open input file for reading\n"
            "Can not open input file for update\n"
            "Can not open input file for appending\n");
}
}  // namespace
