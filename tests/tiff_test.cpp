// Records and blocks in, EXIF and IPTC blocks out; tag lookup and profile replacement in files.
#include <gtest/gtest.h>
#include <unistd.h>

#include <climits>
#include <sstream>
#include <tuple>

#include "LumenforgeMetaLib.h"
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
    s.fill(-77);
    std::memset(make, '?', sizeof make);
    const int entries =
        get_exif_count(&meta, &s[0], &s[1], &gps, &s[2], &s[3], &s[4], &s[5], &s[6], &s[7], &s[8], make);
    EXPECT_EQ(entries, s[0] + s[2]);
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
  for (char* text : {r.meta.model, r.meta.lens, r.meta.dateTimeOriginal}) std::memset(text, 'x', 20);
  std::memset(r.meta.model, 'x', 63);
  r.meta.lens[1] = '\0';
  EXPECT_EQ(r.measure(), (Sizes{5, 44, 9, 91, 64, 0, 20, 11, 2}));
  r.meta.model[63] = 'x';
  std::memset(r.meta.lens, 'x', 64);
  // A fraction of which one word is zero or negative is none, nor is a negative letter or number.
  r.meta.exposureTime[0] = r.meta.fNumber[1] = 0;
  r.meta.focalLength[0] = INT_MIN;
  r.meta.iso = 0x80000000;
  r.gps = {{48, 0x80000000}, {0, 1}, {519, 0}, {0xFFFFFFFF, 1}, '\x80', 0, 0xFF, 0, "2023", 0};
  EXPECT_EQ(r.measure(), (Sizes{1, 20, 2, 11, 63, 0, 20, 11, 63}));
}

TEST(ExifBlock, IsWrittenByteForByte) {
  Exif r{cameraMeta(), kCameraGps, {}};
  for (const uint32_t orientation : {6U, 8U, 1U, 0U, 9U, 65542U, 0xFFFFFFFFU}) {
    const std::string expected = kTiff.file({Tiff::text(0x10F, "Canon"), Tiff::text(0x110, "Canon EOS 5D"),
                                             kTiff.shortEntry(0x112, orientation - 1 < 8 ? orientation : 1)},
                                            kExif, kGps);
    const auto size = static_cast<int>(expected.size());
    EXPECT_EQ(r.block(r.measure(), static_cast<int>(orientation), expected.size()), std::pair(size, expected));
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
  for (const Sizes& s : {Sizes{0, 9, 0, 9, 0, 0, 9, 9}, Sizes{-1, 0, -1, 0, -1, -1}, Sizes{INT_MAX},
                         Sizes{1, INT_MAX, 1, INT_MAX, INT_MAX, INT_MAX}}) {
    EXPECT_EQ(r.block(s, 1, 1, '?'), std::pair(-1, "?"s));
  }
}

std::pair<int, std::string> addKeyword(const uint8_t* block, std::size_t size, const std::string& keyword) {
  std::string out(size > 65535 ? 0 : (size == 0 ? 7 : size) + 5 + keyword.size(), '?');
  const int result = add_iptc_keyword(static_cast<int>(size), block, static_cast<int>(keyword.size()), bytesAt(keyword),
                                      reinterpret_cast<uint8_t*>(out.data()));
  return {result, out};
}

TEST(IptcKeywords, GoBehindTheirPredecessorOrAreRefused) {
  const std::string version = dataset(2, 0, "\0\2"s);
  const std::string word = dataset(2, 25, "word");
  const std::string caption = dataset(2, 120, "caption");
  const std::string inData = dataset(2, 120, "a\x1C\2\x19\0\1bc"s);
  const std::string other = dataset(1, 90, "\x1B%G");
  // What stands before and behind the new keyword; a block in which there is no place.
  const std::tuple<std::string, std::string, int> kCases[] = {{version, "", 7},
                                                              {version + word + word, caption, 25},
                                                              {version + caption, other + other, 19},
                                                              {other, other, 8},
                                                              {word + caption, "", 21},
                                                              {word, "", 9},
                                                              {dataset(2, 120, ""), "", 5},
                                                              {version, dataset(2, 120, ""), 7},
                                                              {version + inData.substr(0, 12), inData.substr(12), 19},
                                                              {"", version + word + "\x1C\2\x19\0\x05only"s, -1},
                                                              {"", "\x1C\2\x19\0"s, -1},
                                                              {"", std::string(5, '\xFF'), -1}};
  for (const auto& [before, behind, result] : kCases) {
    const std::string block = before + behind;
    const std::vector<uint8_t> exact(block.begin(), block.end());
    for (const std::string& keyword : {"sea"s, std::string(300, 'k'), ""s}) {
      const std::string expected = before + dataset(2, 25, keyword) + behind;
      EXPECT_EQ(addKeyword(exact.data(), exact.size(), keyword),
                std::pair(result, result < 0 ? std::string(expected.size(), '?') : expected));
    }
  }
  const std::string longest(65535, 'k');
  EXPECT_EQ(addKeyword(nullptr, 0, longest), std::pair(7, version + dataset(2, 25, longest)));
  EXPECT_EQ(addKeyword(nullptr, 0, longest + 'k').first, -2);
  EXPECT_EQ(addKeyword(nullptr, INT_MAX - 5, "k").first, -2);
  EXPECT_EQ(add_iptc_keyword(0, nullptr, -1, nullptr, nullptr), -2);
  EXPECT_EQ(add_iptc_keyword(-1, nullptr, 1, nullptr, nullptr), -1);
}

// Result, count and value.
using Lookup = std::array<int, 3>;

Lookup lookUp(std::FILE* stream, int tag) {
  Lookup found{0, -77, -77};
  found[0] = get_tif_tag(stream, tag, &found[1], &found[2]);
  return found;
}

TEST(TagLookup, FindsTheFirstEntryOfTheChain) {
  const std::string shorts = numbers(16, {11, 12, 13, 14});
  const std::string file = kTiff.file({kTiff.shortEntry(256, 65535),
                                       {257, 3, 2, shorts.substr(0, 4)},
                                       {258, 3, 3, shorts},
                                       kTiff.longEntry(259, 0xFFFFFFFE)},
                                      {kTiff.longEntry(512, 1)}, {}, {kTiff.longEntry(259, 5), {260, 1, 9, ""}});
  // Tag, result, count, value.
  const int kRows[][4] = {{256, 10, 1, 65535}, {257, 22, 2, 11},    {258, 34, 3, 74},           {259, 46, 1, -2},
                          {260, 114, 9, 0},    {512, -1, -77, -77}, {65536 + 256, -1, -77, -77}};
  for (const auto& [tag, result, count, value] : kRows) {
    EXPECT_EQ(lookUp(MemoryStream(file).get(), tag), (Lookup{result, count, value}));
  }
  // The header stands at the stream's position, the directories where the file says.
  MemoryStream twice(file + file, static_cast<long>(file.size()));
  EXPECT_EQ(lookUp(twice.get(), 256)[0], 10);
}

TEST(TagLookup, TellsWhyThereIsNone) {
  const Tiff big{ByteOrder::big};
  const std::string endless = kTiff.header() + kTiff.directory(8, {kTiff.longEntry(1, 2)}, 8);
  const auto expectFailure = [](int result, const std::vector<std::string>& files) {
    for (const std::string& file : files) {
      EXPECT_EQ(lookUp(MemoryStream(file).get(), 9), (Lookup{result, -77, -77})) << file.size();
    }
  };
  expectFailure(-1, {endless, endless.substr(0, 9), endless.substr(0, 21), endless.substr(0, 24), kTiff.header(0),
                     kTiff.header(7000)});
  expectFailure(-2, {kTiff.header() + "\0\0"s, kTiff.header().substr(0, 7), "II+" + endless.substr(3),
                     big.file({big.longEntry(9, 2)})});
  std::FILE* pipe = ::popen("printf 'II*\\0\\10\\0\\0\\0\\1\\0'", "r");
  EXPECT_EQ(lookUp(pipe, 9), (Lookup{-3, -77, -77}));
  ::pclose(pipe);
}

// A TIFF file with a profile entry and bytes behind its directory.
std::string profileFile(uint32_t count, uint64_t offset) {
  const Entry entry{0x8773, 7, count, u32(offset, ByteOrder::little)};
  return kTiff.file({kTiff.longEntry(0x100, 1), entry}) + "odd";
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
  EXPECT_EQ(file.bytes(), profileFile(6, old.size() + 5) + "firstsecond");
  EXPECT_EQ(update(file, ""), -1);
  EXPECT_EQ(update_tif_profile(-1, nullptr, file.path()), -1);
  EXPECT_EQ(file.bytes().size(), old.size() + 11);

  // The last offset that fits 32 bits.
  const off_t end = 0xFFFFFFFF - 5;
  ASSERT_EQ(::truncate(file.path(), end), 0);
  EXPECT_EQ(update(file, "second"), -2);
  EXPECT_EQ(update(file, "first"), 5);
  std::FILE* stream = std::fopen(file.path(), "rb");
  EXPECT_EQ(lookUp(stream, 0x8773), (Lookup{22, 5, static_cast<int>(end)}));
  std::fclose(stream);

  const Tiff big{ByteOrder::big};
  for (const std::string& bytes :
       {kTiff.file({kTiff.longEntry(0x100, 1)}), big.file({{0x8773, 7, 8, "profiles"}}), "II*"s, ""s}) {
    TempFile other(bytes);
    EXPECT_EQ(update(other, "first"), 0);
    EXPECT_EQ(other.bytes(), bytes);
  }
}
}  // namespace
