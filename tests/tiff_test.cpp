// Records and blocks in, EXIF and IPTC blocks out; tag lookup and profile replacement in files.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <climits>

#include "base/zeroed.h"
#include "support/tiff_records.h"

namespace {

using namespace build;

// What get_exif_count tells.
struct Sizes {
  int exifCount = 0, exifDataSize = 0, gpsCount = 0, gpsDataSize = 0;
  int modelLength = 0, makeLength = 0, dateTimeLength = 0, gpsDateLength = 0, lensLength = 0;
  bool operator==(const Sizes&) const = default;
};

struct Records {
  MetadataBuf meta{};
  GpsBuf gps{};
  char make[64];

  Sizes measure() {
    Sizes s;
    std::memset(make, '?', sizeof make);
    const int sum =
        get_exif_count(&meta, &s.exifCount, &s.exifDataSize, &gps, &s.gpsCount, &s.gpsDataSize, &s.modelLength,
                       &s.makeLength, &s.dateTimeLength, &s.gpsDateLength, &s.lensLength, make);
    EXPECT_EQ(sum, s.exifCount + s.gpsCount);
    return s;
  }
  // The result and the block, in memory of `size` bytes that were `filler`.
  std::pair<int, std::string> block(const Sizes& s, int orientation, std::size_t size, char filler = '\0') {
    std::string out(size, filler);
    const int result = write_exif_buf(s.exifCount, s.exifDataSize, s.gpsCount, s.gpsDataSize, s.modelLength,
                                      s.makeLength, s.dateTimeLength, s.gpsDateLength, orientation, &meta, &gps, make,
                                      reinterpret_cast<unsigned char*>(out.data()));
    return {result, out};
  }
};

TEST(ExifBlock, DerivesTheMakeFromTheModel) {
  const std::pair<std::string, std::vector<const char*>> kModels[] = {
      {"Canon", {"Canon EOS"}},
      {"NIKON CORPORATION", {"NIKON"}},
      {"SONY", {"SLT-A77", "SONY", "NEX-5", "DSLR-A1"}},
      {"Panasonic", {"DMC-G1", "Panasonic"}},
      {"FUJIFILM", {"X10 ", "FinePix", "FUJIFILM"}},
      {"PENTAX", {"PENTAX K"}},
      {"OLYMPUS", {"E-1", "E-7", "E-P1", "E-M5", "SP350", "SP5", "OLYMPUS D"}},
      {"", {"canon", "E-9", "E-0", "SP4", "X10", "SON", ""}},
  };
  for (const auto& [make, models] : kModels) {
    for (const char* model : models) {
      Records r;
      std::strcpy(r.meta.model, model);
      EXPECT_EQ(r.measure().makeLength, make.empty() ? 0 : static_cast<int>(make.size()) + 1) << model;
      EXPECT_EQ(std::string(r.make, 64), make + std::string(64 - make.size(), '\0')) << model;
    }
  }
}

TEST(ExifBlock, CountsWhatIsPresent) {
  Records r;
  EXPECT_EQ(r.measure(), Sizes());
  r.gps.latitudeRef = 'S';
  r.meta.iso = 1;
  r.meta.focalLength[0] = r.meta.focalLength[1] = 1;
  EXPECT_EQ(r.measure(), (Sizes{.exifCount = 2, .exifDataSize = 8, .gpsCount = 2}));
  r.gps.dateStamp[0] = '2';
  EXPECT_EQ(r.measure().gpsDateLength, 11);
  // Half a fraction is none, nor is anything negative.
  r = {};
  r.meta.exposureTime[0] = r.meta.fNumber[1] = 1;
  r.gps.latitude[0] = r.gps.altitude[1] = 1;
  EXPECT_EQ(r.measure(), Sizes());
  std::memset(&r.meta, 0xFF, sizeof r.meta);
  std::memset(&r.gps, 0xFF, sizeof r.gps);
  Sizes full{.exifCount = 1, .exifDataSize = 20, .gpsCount = 2, .gpsDataSize = 11};
  full.modelLength = full.lensLength = 63;
  full.dateTimeLength = 20;
  full.gpsDateLength = 11;
  EXPECT_EQ(r.measure(), full);
  r.meta.model[63] = '\0';
  EXPECT_EQ(r.measure().modelLength, 64);
}

TEST(ExifBlock, IsWrittenByteForByte) {
  Records r{cameraMeta(), kCameraGps, {}};
  for (const uint32_t orientation : {6U, 8U, 1U, 0U, 9U, 65542U, 0xFFFFFFFFU}) {
    const std::string code = std::to_string(orientation - 1 < 8 ? orientation : 1);
    const std::string expected =
        kTiff.file(kTiff.entries("10F='Canon'; 110='Canon EOS 5D'; 112=s" + code), kExif, kGps);
    Sizes sizes = r.measure();
    sizes.gpsDateLength = 1;  // a date is there; its length is always the same
    EXPECT_EQ(r.block(sizes, static_cast<int>(orientation), expected.size()),
              std::pair(static_cast<int>(expected.size()), expected));
  }
  // A short text stands behind the directory, too; bytes that carry nothing are not touched.
  Records modelOnly;
  modelOnly.meta.model[0] = 'K';
  EXPECT_EQ(modelOnly.block(modelOnly.measure(), 3, 40, '?'),
            std::pair(40,
                      "II*\0\x08\0\0\0\x02\0\x10\x01\x02\0\x02\0\0\0\x26\0\0\0"
                      "\x12\x01\x03\0\x01\0\0\0\x03\0??\0\0\0\0K\0"s));
  // Arguments that are none of get_exif_count's: nothing is read or written beyond the bounds.
  EXPECT_EQ(r.block({.exifCount = 1, .exifDataSize = 7}, 1, 63).first, 63);
  EXPECT_EQ(r.block({.gpsCount = 1}, 1, 56).first, 56);
  EXPECT_EQ(r.block({.makeLength = 1}, 1, 39).second[8], 2);  // entries
  EXPECT_EQ(
      r.block({.exifDataSize = 99, .gpsDataSize = 99, .modelLength = 100, .makeLength = -1}, 1, 138).second.substr(38),
      std::string(r.meta.model, 64) + std::string(36, '\0'));
  const Sizes kNoBlocks[] = {
      {.exifDataSize = 9, .gpsDataSize = 9, .dateTimeLength = 9, .gpsDateLength = 9},
      {.exifCount = -1, .gpsCount = -1, .modelLength = -1, .makeLength = -1},
      {.exifCount = INT_MAX},
      {.exifCount = 1, .exifDataSize = INT_MAX, .gpsCount = 1, .gpsDataSize = INT_MAX, .modelLength = INT_MAX},
  };
  for (const Sizes& sizes : kNoBlocks) EXPECT_EQ(r.block(sizes, 1, 1, '?'), std::pair(-1, "?"s));
}

// The result and the block, in memory of `size` bytes that were '?'.
std::pair<int, std::string> addKeyword(const std::string& block, const std::string& keyword, std::size_t size) {
  const std::vector<uint8_t> exact(block.begin(), block.end());
  std::string out(size, '?');
  const int result = add_iptc_keyword(static_cast<int>(exact.size()), exact.data(), static_cast<int>(keyword.size()),
                                      bytesAt(keyword), reinterpret_cast<uint8_t*>(out.data()));
  return {result, out};
}

const std::string kVersion = dataset(2, 0, "\0\2"s);
const std::string kWord = dataset(2, 25, "word");

TEST(IptcKeywords, GoBehindTheirPredecessor) {
  const std::string caption = dataset(2, 120, "caption");
  const std::string empty = dataset(2, 120, "");
  const std::string other = dataset(1, 90, "\x1B%G");
  const std::string marker = "\x1C\2\x78\0\x08q\x1C\2\x19\0\1w"s;  // in a caption's data, of which "." is the rest
  // Before the new keyword and behind it.
  const std::pair<std::string, std::string> kBlocks[] = {{kVersion, ""},
                                                         {kVersion + kWord + kWord, caption},
                                                         {kVersion + caption, other},
                                                         {other, other},
                                                         {kWord, ""},
                                                         {kWord + caption, ""},
                                                         {empty, ""},
                                                         {kVersion, empty},
                                                         {kVersion + marker, "."}};
  for (const std::string& keyword : {"sea"s, ""s, std::string(65535, 'k')}) {
    const std::string added = dataset(2, 25, keyword);
    EXPECT_EQ(addKeyword("", keyword, 7 + added.size()), std::pair(7, kVersion + added));
    for (const auto& [before, behind] : kBlocks) {
      const std::string expected = before + added + behind;
      EXPECT_EQ(addKeyword(before + behind, keyword, expected.size()),
                std::pair(static_cast<int>(before.size()), expected));
    }
  }
}

TEST(IptcKeywords, AreRefused) {
  for (const std::string& broken :
       {kVersion + kWord + "\x1C\2\x19\0\x05only"s, "\x1C\2\x19\0"s, "\xFF\xFF\xFF\xFF\xFF"s}) {
    for (const std::size_t length : {3U, 65536U}) {  // a broken block says so first
      EXPECT_EQ(addKeyword(broken, std::string(length, 'k'), 9), std::pair(-1, std::string(9, '?')));
    }
  }
  EXPECT_EQ(add_iptc_keyword(-1, nullptr, -1, nullptr, nullptr), -1);
  EXPECT_EQ(add_iptc_keyword(0, nullptr, -1, nullptr, nullptr), -2);
  EXPECT_EQ(addKeyword("", std::string(65536, 'k'), 0).first, -2);
  const auto large = lumenforge::allocateZeroed(INT_MAX);
  std::memcpy(large.get() + INT_MAX - 5 - kWord.size(), kWord.data(), kWord.size());
  EXPECT_EQ(add_iptc_keyword(INT_MAX - 5, large.get(), 1, nullptr, nullptr), -2);
}

// Result, count and value.
using Lookup = std::array<int, 3>;

Lookup lookUp(std::FILE* stream, int tag) {
  Lookup found{0, -77, -77};
  found[0] = get_tif_tag(stream, tag, &found[1], &found[2]);
  return found;
}

TEST(TagLookup, FindsTheFirstEntryOfTheChain) {
  const std::string file = kTiff.file(kTiff.entries("100=s65535; 101=3#2@C000B; 102=3#3'abcdef'; 103=l4294967294"),
                                      kTiff.entries("200=l1"), {}, kTiff.entries("103=l5; 104=1#9''"));
  // Tag; result, count, value.
  const std::pair<int, Lookup> kRows[] = {
      {0x100, {10, 1, 65535}},   {0x101, {22, 2, 11}},  {0x102, {34, 3, 74}},
      {0x103, {46, 1, -2}},      {0x104, {112, 9, 0}},  {0x200, {-1, -77, -77}},
      {0x10100, {-1, -77, -77}}, {0x2A, {-1, -77, -77}}};  // the header is no directory
  for (const auto& [tag, found] : kRows) EXPECT_EQ(lookUp(MemoryStream(file).get(), tag), found);
  // The header stands at the stream's position, the directories where the file says.
  EXPECT_EQ(lookUp(MemoryStream(file + file, static_cast<long>(file.size())).get(), 0x100)[0], 10);
}

TEST(TagLookup, TellsWhyThereIsNone) {
  const std::string start = kTiff.header();
  const std::string endless = start + kTiff.directory(8, kTiff.entries("1=l2"), 8);
  const Tiff big{ByteOrder::big};
  const std::pair<int, std::vector<std::string>> kCases[] = {
      {-1,
       {endless, endless.substr(0, 9), endless.substr(0, 21), endless.substr(0, 24), kTiff.header(0),
        start.substr(0, 4), start.substr(0, 7)}},
      {-2,
       {start + "\0\0"s, start.substr(0, 3), "II+" + endless.substr(3), "MM" + endless.substr(2),
        big.file(big.entries("9=l2"))}},
      // Memory cannot be sought behind its end, a file can.
      {-3, {kTiff.header(5000) + std::string(18, ' '), start + kTiff.directory(8, kTiff.entries("1=l2"), 27)}}};
  for (const auto& [result, files] : kCases) {
    for (const std::string& file : files) {
      EXPECT_EQ(lookUp(MemoryStream(file).get(), 9), (Lookup{result, -77, -77}));
      const lumenforge::File stream = lumenforge::openUnbuffered(TempFile(file).path(), "rb");
      EXPECT_EQ(lookUp(stream.get(), 9), (Lookup{result == -3 ? -1 : result, -77, -77}));
    }
  }
  std::FILE* pipe = ::popen("printf 'II*\\0\\10\\0\\0\\0\\1\\0'", "r");
  EXPECT_EQ(lookUp(pipe, 9), (Lookup{-3, -77, -77}));
  ::pclose(pipe);
}

// A TIFF file with a profile entry and bytes behind its directory.
std::string profileFile(uint32_t count, uint64_t offset) {
  return kTiff.file({kTiff.longEntry(0x100, 1), {0x8773, 7, count, u32(offset, ByteOrder::little)}}) + "odd";
}

int update(TempFile& file, const std::string& profile) {
  return update_tif_profile(static_cast<int>(profile.size()), bytesAt(profile), file.path());
}

TEST(ProfileUpdate, AppendsAndRepoints) {
  const std::string old = profileFile(3, 38);
  TempFile file(old);
  EXPECT_EQ(update(file, "first"), 5);
  EXPECT_EQ(update(file, "second"), 6);
  EXPECT_EQ(update(file, ""), -1);
  EXPECT_EQ(update_tif_profile(-1, nullptr, file.path()), -1);
  EXPECT_EQ(file.bytes(), profileFile(6, old.size() + 5) + "firstsecond");

  // The last offset that fits 32 bits.
  const off_t end = 0xFFFFFFFF - 5;
  ASSERT_EQ(::truncate(file.path(), end), 0);
  EXPECT_EQ(update(file, "second"), -2);
  EXPECT_EQ(update(file, "first"), 5);
  const lumenforge::File stream(std::fopen(file.path(), "rb"));
  EXPECT_EQ(lookUp(stream.get(), 0x8773), (Lookup{22, 5, static_cast<int>(end)}));
}

TEST(ProfileUpdate, LeavesOtherFilesAlone) {
  const Tiff big{ByteOrder::big};
  for (const std::string& bytes :
       {kTiff.file(kTiff.entries("100=l1")), big.file(big.entries("8773=7#8'profiles'")), "II*"s, ""s}) {
    TempFile other(bytes);
    EXPECT_EQ(update(other, "first"), 0);
    EXPECT_EQ(other.bytes(), bytes);
  }
  // An entry beyond what a result can tell is none, for a lookup as for an update.
  TempFile beyond(kTiff.header(INT_MAX - 1));
  ASSERT_EQ(::truncate(beyond.path(), INT_MAX - 1), 0);
  std::ofstream(beyond.path(), std::ios::app) << kTiff.directory(0, {{0x8773, 7, 3, "old"}});
  const lumenforge::File stream(std::fopen(beyond.path(), "rb"));
  EXPECT_EQ(lookUp(stream.get(), 0x8773), (Lookup{-1, -77, -77}));
  EXPECT_EQ(update(beyond, "first"), 0);
}

void allowDescriptors(int count) {
  const rlimit limit{static_cast<rlim_t>(count), static_cast<rlim_t>(count)};
  ::setrlimit(RLIMIT_NOFILE, &limit);
}

// In a process of its own, for which the file can be opened no more, read only, or but once, also
// in the place of its standard error.
TEST(ProfileUpdate, SaysWhichOpenFailed) {
  const std::pair<std::string, void (*)(const char* path)> kCases[] = {
      {"Can not open input file for reading\n", [](const char* path) { ::unlink(path); }},
      {"Can not open input file for update\n", [](const char* path) { ::chmod(path, 0444), ::seteuid(65534); }},
      {"Can not open input file for appending\n",
       [](const char*) {
         const int next = ::dup(0);
         allowDescriptors(next + 1), ::close(next);
       }},
      {"", [](const char*) { allowDescriptors(3), ::close(2); }}};
  for (const auto& [message, hinder] : kCases) {
    TempFile file(profileFile(3, 38));
    EXPECT_EXIT((hinder(file.path()), std::_Exit(-update(file, "first"))), testing::ExitedWithCode(1),
                "^" + message + "$");
    EXPECT_TRUE(file.bytes().empty() || file.bytes() == profileFile(3, 38));
  }
}

}  // namespace
