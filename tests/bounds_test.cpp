// The worst inputs there are, each given to every function that reads files or texts: the work,
// counted in basic blocks, reads and bytes, and the memory held stay in proportion to the input.
#include <gtest/gtest.h>

#include <climits>
#include <functional>

#include "LumenforgeMetaLib.h"
#include "support/interposed.h"
#include "support/tiff_records.h"

namespace {

using namespace build;

constexpr uint64_t kSize = 1048576;
constexpr uint64_t kMostEntries = 5 * 65535;  // of directories, that one call reads

std::string times(const std::string& piece, std::size_t size = kSize) {
  std::string text;
  while (text.size() < size) text += piece;
  return text;
}

// A directory of 65,535 entries, each made from its number.
std::string directoryOf(const std::function<Entry(uint32_t)>& entry) {
  std::vector<Entry> entries;
  for (uint32_t i = 0; i < 65535; ++i) entries.push_back(entry(i));
  return kTiff.header() + kTiff.directory(8, entries, 8);
}

Entry pointer(int tag, uint64_t offset, uint32_t count = 1) {
  return {static_cast<uint16_t>(tag), 7, count, u32(offset, ByteOrder::little)};
}

// Tiny directories, chained in an order that visits no place near the last one.
std::string scatteredChain() {
  constexpr uint64_t kCount = 100000, kStep = 40503, kEach = 18;
  std::string bytes = kTiff.header() + std::string(kCount * kEach, 0);
  for (uint64_t i = 0, at = 8; i < kCount; ++i) {
    const uint64_t next = 8 + (i + 1) * kStep % kCount * kEach;
    bytes.replace(at, kEach, kTiff.directory(at, {pointer(1, 1)}, next));
    at = next;
  }
  return bytes;
}

// Places in a file, none near the last one.
uint64_t anywhere(uint32_t i) {
  return 8 + i * uint64_t{40503 * 12} % (65535 * 12);
}

const std::string kDeclaration = "xmlns:lfst='http://ns.lumenforge.org/'";
const std::string kMethod = kDeclaration + "<lfst:Method>Tone Compressor</lfst:Method>";
const std::string kAux = "xmlns:aux='http://ns.adobe.com/exif/1.0/aux/'";
const std::string kOpening = "<x:xmpmeta xmlns:x='adobe:ns:meta/";

// clang-format off
std::vector<std::string> worstInputs() {
  return {
      directoryOf([](auto) { return pointer(0x8769, 8); }),
      directoryOf([](auto) { return pointer(0x8825, 8); }),
      directoryOf([](auto i) { return i < 4 ? pointer(i % 2 ? 0x8769 : 0x8825, 8)
                                            : pointer(i % 2 ? 0x829A : 4, anywhere(i), 3); }),
      directoryOf([](auto i) { return i < 1 ? pointer(0x8769, 8)
                                            : pointer(i % 2 ? 0x0110 : 0x9003, anywhere(i), 99); }),
      directoryOf([](auto i) { return pointer(0x8649, 8, INT_MAX - i); }) + times(resource(0x0404, "")),
      kTiff.header() + kTiff.directory(8, {pointer(1, 1)}, 8),
      scatteredChain(),
      kSoi + times(segment(0xE0, std::string(65533, 's')), 64 * kSize),
      kSoi + times(segment(0xE0, "")),
      kSoi + exifSegment(kTiff.header(0)) + times(segment(0xE0, "")),
      kSoi + times("\xFF\xFF\xFF\xFF\xE0" + u16(2)),
      psd(times(resource(0x0404, ""))),
      kDeclaration + std::string(64 * kSize, 'x'),
      kMethod + times("lfst:"),
      kMethod + times("lfst:Brightness"),
      kMethod + "<lfst:Brightness>" + times("7"),
      kMethod + "<lfst:Brightness>0." + times("0"),
      kMethod + "<lfst:SaturationIndividualColors>1, 2," + times(" "),
      times("xmlns:lfst="), times(kDeclaration), times("xmlns:aux="), times(">"),
      kAux + times("aux:Lens "), kAux + times("aux:Lens>"),
      times(kOpening), kOpening + "'>" + times("<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#\""),
      times("desc\0\0\0\0\0\0\0"s), times("\x1C\2\1\0\1"s),
      times(", ", 14) + times("/s"), times(", ", 14) + times(", 1/s"), times(", ", 16) + times("R,"),
      times("8BIM\x04"), times("8BIM\x04\x0C\0\0"s)};
}

struct Input {
  std::string text;
  TempFile file{text};
  MemoryStream stream{text};
  ExifInfo info{};
  SettingsParams params{};
  int found[60] = {};
  int length = static_cast<int>(text.size());
  std::string room = text + std::string(2000, '\0');
  std::FILE* at(long place) { return std::fseek(stream.get(), place, SEEK_SET), stream.get(); }
  uint8_t* out() { return reinterpret_cast<uint8_t*>(room.data()); }
};

struct Reader {
  const char* name;
  uint64_t entries;  // of directories, that may be read
  void (*call)(Input&);
};
const Reader kReaders[] = {
    {"TIFF", kMostEntries, [](Input& i) { getExifData(i.file.path(), 0, &i.info); }},
    {"JPEG", kMostEntries, [](Input& i) { getExifData(i.file.path(), 1, &i.info); }},
    {"PSD", kMostEntries, [](Input& i) { getExifData(i.file.path(), 2, &i.info); }},
    {"EXIF", 65535, [](Input& i) { parse_exif_data(i.at(8), 0, 0x4949, 0, &i.info); }},
    {"GPS", 65535, [](Input& i) { parse_gps_data(i.at(8), 0, 0x4949, 0, &i.info); }},
    {"tag", kMostEntries, [](Input& i) { get_tif_tag(i.at(0), 9, &i.found[0], &i.found[1]); }},
    {"Photoshop", 0, [](Input& i) { parse_photoshop_data(i.at(0), INT_MAX, &i.info); }},
    {"description", 0, [](Input& i) { parse_image_description(i.at(0), i.length, &i.info); }},
    {"announced", 0, [](Input& i) { parse_image_description(i.at(0), INT_MAX, &i.info); }},
    {"method", 0, [](Input& i) { get_settings_from_xmp(-1, i.length + 1, bytesAt(i.text), nullptr, i.params); }},
    {"settings", 0, [](Input& i) { read_xmp(i.file.path(), 2, i.params); }},
    {"lens", 0, [](Input& i) { get_settings_from_xmp(100, i.length + 1, bytesAt(i.text), i.info.lens, i.params); }},
    {"count", 0, [](Input& i) { lfsettings_occurences_in_xmp(i.length + 1, bytesAt(i.text)); }},
    {"search", 0, [](Input& i) { searchForTag(0, "lfst:Brightness", 0, bytesAt(i.text), 1, i.length, i.found, i.params); }},
    {"profile", 0, [](Input& i) { get_profile_name(i.length, bytesAt(i.text), i.info.lens); }},
    {"keyword", 0, [](Input& i) { add_iptc_keyword(i.length, bytesAt(i.text), 1, bytesAt("k"), i.out()); }},
    {"insertion", 0, [](Input& i) { insert_xmp(1, 2, i.params, i.length, 2000, i.room.data()); }},
};
// clang-format on

TEST(Bounds, HoldForTheWorstInputs) {
  for (const std::string& text : worstInputs()) {
    Input input{text};
    const uint64_t size = text.size();
    for (const auto& [name, entries, call] : kReaders) {
      SCOPED_TRACE(name + (" " + text.substr(0, 200)));
      interposed::state = {};
      call(input);
      const interposed::State record = interposed::state;
      EXPECT_LE(record.steps, 64 * size + 100 * entries + 20000);
      EXPECT_LE(record.reads, size / 512 + 2 * entries + 100);
      EXPECT_LE(record.bytesRead, 17 * size + 640 * entries + 70000);
      EXPECT_LE(record.peak, 2 * size + 70000);
    }
  }
}

}  // namespace
