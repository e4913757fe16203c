// Records and blocks in, EXIF and IPTC blocks out; tag lookup and profile replacement in files.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <sstream>
#include <tuple>

#include "LumenforgeMetaLib.h"
#include "base/zeroed.h"
#include "support/tiff_records.h"

namespace {

using namespace build;

// Exif entries and bytes, GPS entries and bytes, lengths of model, make, date, GPS date and lens.
using Sizes = std::array<int, 9>;

struct Exif {
  MetadataBuf meta;
  GpsBuf gps;
  char make[64];

  Sizes measure() {
    Sizes s;
    std::memset(make, '?', sizeof make);
    const int sum = get_exif_count(&meta, &s[0], &s[1], &gps, &s[2], &s[3], &s[4], &s[5], &s[6], &s[7], &s[8], make);
    EXPECT_EQ(sum, s[0] + s[2]);
    return s;
  }
  // The result and the block, in memory of `size` bytes that were `filler`.
  std::pair<int, std::string> block(const Sizes& s, int orientation, std::size_t size, char filler = '\0') {
    std::vector<char> out(size, filler);
    const int result = write_exif_buf(s[0], s[1], s[2], s[3], s[4], s[5], s[6], s[7], orientation, &meta, &gps, make,
                                      reinterpret_cast<unsigned char*>(out.data()));
    return {result, {out.begin(), out.end()}};
  }
};

TEST(ExifBlock, DerivesTheMakeFromTheModel) {
  std::istringstream table(
      "Canon EOS=Canon,NIKON=NIKON CORPORATION,SLT-A77=SONY,SONY=SONY,DMC-G1=Panasonic,NEX-5=SONY,"
      "X10 =FUJIFILM,PENTAX K=PENTAX,DSLR-A1=SONY,E-1=OLYMPUS,E-7=OLYMPUS,E-P1=OLYMPUS,"
      "E-M5=OLYMPUS,SP350=OLYMPUS,SP5=OLYMPUS,OLYMPUS D=OLYMPUS,FinePix S=FUJIFILM,"
      "FUJIFILM=FUJIFILM,Panasonic G=Panasonic,canon=,E-9=,E-0=,E-8=,SP4=,X10=,SON|Y=,=");
  for (std::string row; std::getline(table, row, ',');) {
    Exif r{};
    const std::string make = row.substr(row.find('=') + 1);
    std::replace_copy(row.begin(), row.begin() + static_cast<long>(row.find('=')), r.meta.model, '|', '\0');
    EXPECT_EQ(r.measure()[5], make.empty() ? 0 : static_cast<int>(make.size()) + 1) << row;
    EXPECT_EQ(std::string(r.make, 64), make + std::string(64 - make.size(), '\0')) << row;
  }
}

TEST(ExifBlock, CountsWhatIsPresent) {
  Exif r{};
  EXPECT_EQ(r.measure(), (Sizes{0, 0, 0, 0, 0, 0, 0, 0, 0}));
  r.gps.latitudeRef = 'S';
  EXPECT_EQ(r.measure(), (Sizes{0, 0, 2, 0, 0, 0, 0, 0, 0}));
  r = {cameraMeta(), kCameraGps, {}};
  EXPECT_EQ(r.measure(), (Sizes{5, 44, 9, 91, 13, 6, 20, 11, 8}));
  // A fraction of which one word is zero or negative is none, nor is a negative letter or number.
  r = {{{0, 5999}, {559, 0}, 0, 0x80000000, 0, {}, {INT_MIN, 100}, 0, {}, 0, 0, 0, 0, 0, 0, 0, 0, "", "", "x"},
       {{48, 0x80000000}, {0, 1}, {519, 0}, {0xFFFFFFFF, 1}, '\x80', 0, 0xFF, 0, "2023", 0},
       {}};
  std::memset(r.meta.model, 'x', 63);
  std::memset(r.meta.dateTimeOriginal, 'x', 20);
  EXPECT_EQ(r.measure(), (Sizes{1, 20, 2, 11, 64, 0, 20, 11, 2}));
  r.meta.model[63] = 'x';
  std::memset(r.meta.lens, 'x', 64);
  EXPECT_EQ(r.measure(), (Sizes{1, 20, 2, 11, 63, 0, 20, 11, 63}));
}

TEST(ExifBlock, IsWrittenByteForByte) {
  Exif r{cameraMeta(), kCameraGps, {}};
  for (const uint32_t orientation : {6U, 8U, 1U, 0U, 9U, 65542U, 0xFFFFFFFFU}) {
    const std::string code = std::to_string(orientation - 1 < 8 ? orientation : 1);
    const std::string expected =
        kTiff.file(kTiff.entries("10F='Canon'; 110='Canon EOS 5D'; 112=s" + code), kExif, kGps);
    Sizes sizes = r.measure();
    sizes[7] = 5;  // a date is there; its length is always the same
    EXPECT_EQ(r.block(sizes, static_cast<int>(orientation), expected.size()),
              std::pair(static_cast<int>(expected.size()), expected));
  }
  // A short text stands behind the directory, too; bytes that carry nothing are not touched.
  Exif modelOnly{};
  modelOnly.meta.model[0] = 'K';
  EXPECT_EQ(modelOnly.block(modelOnly.measure(), 3, 40, '?'),
            std::pair(40,
                      "II*\0\x08\0\0\0\x02\0\x10\x01\x02\0\x02\0\0\0\x26\0\0\0"
                      "\x12\x01\x03\0\x01\0\0\0\x03\0??\0\0\0\0K\0"s));
  // Arguments that are none of get_exif_count's: nothing is read or written beyond the bounds.
  EXPECT_EQ(r.block({1, 7}, 1, 63).first, 63);
  EXPECT_EQ(r.block({0, 99, 0, 99, 100, -1}, 1, 138).second.substr(38),
            std::string(r.meta.model, 64) + std::string(36, '\0'));
  for (const Sizes& s : {Sizes{0, 9, 0, 9, 0, 0, 9, 9}, Sizes{-1, 0, -1, 0, -1, -1}, Sizes{INT_MAX}, Sizes{1, INT_MAX},
                         Sizes{1, INT_MAX, 1, INT_MAX, INT_MAX, INT_MAX}}) {
    EXPECT_EQ(r.block(s, 1, 1, '?'), std::pair(-1, "?"s));
  }
}

// The result and the block, in memory of `size` bytes that were '?'.
std::pair<int, std::string> addKeyword(const std::string& block, const std::string& keyword, std::size_t size) {
  const std::vector<uint8_t> exact(block.begin(), block.end());
  std::string out(size, '?');
  const int result = add_iptc_keyword(static_cast<int>(exact.size()), exact.data(), static_cast<int>(keyword.size()),
                                      bytesAt(keyword), reinterpret_cast<uint8_t*>(out.data()));
  return {result, out};
}

TEST(IptcKeywords, GoBehindTheirPredecessorOrAreRefused) {
  const std::string version = dataset(2, 0, "\0\2"s);
  const std::string word = dataset(2, 25, "word");
  const std::string caption = dataset(2, 120, "caption");
  const std::string empty = dataset(2, 120, "");
  const std::string other = dataset(1, 90, "\x1B%G");
  const std::string marker = "\x1C\2\x78\0\x08q\x1C\2\x19\0\1w"s;  // in a caption's data, of which "." is the rest
  const std::string longest(65535, 'k');
  for (const std::string& keyword : {"sea"s, ""s, longest}) {
    const std::string added = dataset(2, 25, keyword);
    EXPECT_EQ(addKeyword("", keyword, 7 + added.size()), std::pair(7, version + added));
    for (std::string block :
         {version + "|", version + word + word + "|" + caption, version + caption + "|" + other, other + "|" + other,
          word + "|", word + caption + "|", empty + "|", version + "|" + empty, version + marker + "|."}) {
      const std::size_t place = block.find('|');
      block.erase(place, 1);
      const std::string expected = std::string(block).insert(place, added);
      EXPECT_EQ(addKeyword(block, keyword, expected.size()), std::pair(static_cast<int>(place), expected));
    }
  }
  for (const std::string& broken :
       {version + word + "\x1C\2\x19\0\x05only"s, "\x1C\2\x19\0"s, "\xFF\xFF\xFF\xFF\xFF"s}) {
    EXPECT_EQ(addKeyword(broken, "sea", 9), std::pair(-1, std::string(9, '?')));
  }
  EXPECT_EQ(addKeyword("", longest + 'k', 0).first, -2);
  EXPECT_EQ(add_iptc_keyword(0, nullptr, -1, nullptr, nullptr), -2);
  for (const int keywordLength : {-1, 1, INT_MAX}) {  // a broken block says so first
    EXPECT_EQ(add_iptc_keyword(-1, nullptr, keywordLength, nullptr, nullptr), -1);
    EXPECT_EQ(add_iptc_keyword(4, bytesAt(version), keywordLength, nullptr, nullptr), -1);
  }
  const auto large = lumenforge::allocateZeroed(INT_MAX);
  std::memcpy(large.get() + INT_MAX - 5 - word.size(), word.data(), word.size());
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
  const std::pair<int, Lookup> kRows[] = {{0x100, {10, 1, 65535}},  {0x101, {22, 2, 11}}, {0x102, {34, 3, 74}},
                                          {0x103, {46, 1, -2}},     {0x104, {112, 9, 0}}, {0x200, {-1, -77, -77}},
                                          {0x10100, {-1, -77, -77}}};
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
        kTiff.header(7000)}},
      {-2,
       {start + "\0\0"s, start.substr(0, 7), "II+" + endless.substr(3), "MM" + endless.substr(2),
        big.file(big.entries("9=l2"))}}};
  for (const auto& [result, files] : kCases) {
    for (const std::string& file : files) EXPECT_EQ(lookUp(MemoryStream(file).get(), 9), (Lookup{result, -77, -77}));
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
  EXPECT_EQ(file.bytes(), profileFile(5, old.size()) + "first");
  EXPECT_EQ(update(file, "second"), 6);
  EXPECT_EQ(update(file, ""), -1);
  EXPECT_EQ(update_tif_profile(-1, nullptr, file.path()), -1);
  EXPECT_EQ(file.bytes(), profileFile(6, old.size() + 5) + "firstsecond");

  // The last offset that fits 32 bits.
  const off_t end = 0xFFFFFFFF - 5;
  ASSERT_EQ(::truncate(file.path(), end), 0);
  EXPECT_EQ(update(file, "second"), -2);
  EXPECT_EQ(update(file, "first"), 5);
  std::FILE* stream = std::fopen(file.path(), "rb");
  EXPECT_EQ(lookUp(stream, 0x8773), (Lookup{22, 5, static_cast<int>(end)}));
  std::fclose(stream);

  // An entry beyond what a result can tell is none.
  TempFile beyond(kTiff.header(INT_MAX - 1));
  ASSERT_EQ(::truncate(beyond.path(), INT_MAX - 1), 0);
  std::ofstream(beyond.path(), std::ios::app) << kTiff.directory(0, {{0x8773, 7, 3, "old"}});
  const lumenforge::File stream2(std::fopen(beyond.path(), "rb"));
  EXPECT_EQ(lookUp(stream2.get(), 0x8773), (Lookup{-1, -77, -77}));
  EXPECT_EQ(update(beyond, "first"), 0);

  const Tiff big{ByteOrder::big};
  for (const std::string& bytes :
       {kTiff.file(kTiff.entries("100=l1")), big.file(big.entries("8773=7#8'profiles'")), "II*"s, ""s}) {
    TempFile other(bytes);
    EXPECT_EQ(update(other, "first"), 0);
    EXPECT_EQ(other.bytes(), bytes);
  }
}

// In a process of its own, for which the file can be opened no more, read only, or but once, also
// in the place of standard error.
TEST(ProfileUpdate, SaysWhichOpenFailed) {
  const std::pair<std::string, void (*)(const char*)> kCases[] = {
      {"reading", [](const char* path) { ::unlink(path); }},
      {"update", [](const char* path) { ::chmod(path, 0444), ::seteuid(65534); }},
      {"appending",
       [](const char*) {
         const auto next = static_cast<unsigned>(::dup(0));
         const rlimit one{next + 1, next + 1};
         ::setrlimit(RLIMIT_NOFILE, &one), ::close(static_cast<int>(next));
       }},
      {"", [](const char*) {
         const rlimit three{3, 3};
         ::setrlimit(RLIMIT_NOFILE, &three), ::close(2);
       }}};
  for (const auto& [purpose, hinder] : kCases) {
    TempFile file(profileFile(3, 38));
    EXPECT_EXIT((hinder(file.path()), std::_Exit(-update(file, "first"))), testing::ExitedWithCode(1),
                purpose.empty() ? "^$" : "^Can not open input file for " + purpose + "\n$");
    if (purpose != "reading") {
      EXPECT_EQ(file.bytes(), profileFile(3, 38));
    }
  }
}
}  // namespace
