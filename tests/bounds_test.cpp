// The worst inputs there are, each given to every function that reads files or texts: the work,
// counted in basic blocks, reads and bytes, and the memory held stay in proportion to the input.
#include <gtest/gtest.h>

#include <climits>
#include <functional>

#include "support/interposed.h"
#include "support/tiff_records.h"

namespace {

using namespace build;

constexpr uint64_t kSize = 262144;

std::string times(const std::string& piece, std::size_t size = kSize) {
  std::string text;
  while (text.size() < size) text += piece;
  return text;
}

// `count` places in a file, none near the last one.
uint64_t place(uint64_t i, uint64_t count, uint64_t distance) { return 8 + i * 40503 % count * distance; }

Entry entry(int tag, uint32_t count, uint64_t offset = 8) {
  return {static_cast<uint16_t>(tag), 7, count, u32(offset, ByteOrder::little)};
}

// A directory of 65,535 entries, each made from its number.
std::string directoryOf(const std::function<Entry(uint32_t, uint64_t anywhere)>& entryOf) {
  std::vector<Entry> entries;
  for (uint32_t i = 0; i < 65535; ++i) entries.push_back(entryOf(i, place(i, 65535, 12)));
  return kTiff.header() + kTiff.directory(8, entries, 8);
}

std::string chainOfTinyDirectories() {
  std::string bytes = times("18 bytes for one..", 18 * 100000);
  for (uint64_t i = 0; i < 100000; ++i) {
    const std::string one = kTiff.directory(0, {entry(1, 1)}, place(i + 1, 100000, 18));
    bytes.replace(place(i, 100000, 18) - 8, one.size(), one);
  }
  return kTiff.header() + bytes;
}

const std::string kDeclaration = "xmlns:lfst='http://ns.lumenforge.org/'";
const std::string kMethod = kDeclaration + "<lfst:Method>Tone Compressor</lfst:Method>";
const std::string kAux = "xmlns:aux='http://ns.adobe.com/exif/1.0/aux/'";
const std::string kOpening = "<x:xmpmeta xmlns:x='adobe:ns:meta/";
const std::string kTag = "<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#\"";

// clang-format off
std::vector<std::string> worstInputs() {
  return {
      directoryOf([](auto, auto) { return entry(0x8769, 1); }),
      directoryOf([](auto, auto) { return entry(0x8825, 1); }),
      directoryOf([](auto i, auto at) { return i % 9 ? entry(0x829A, 1, at) : entry(0x8769, 1); }),
      directoryOf([](auto i, auto at) { return i % 9 ? entry(0x9003, 9, at) : entry(0x8769, 1); }),
      directoryOf([](auto i, auto at) { return i % 9 ? entry(4, 3, at) : entry(0x8825, 1); }),
      directoryOf([](auto, auto at) { return entry(0x110, 99, at); }),
      directoryOf([](auto i, auto) { return entry(0x8649, INT_MAX - i); }) +
          times(resource(0x404, ""), 4 * kSize),
      kTiff.header() + kTiff.directory(8, {entry(1, 1)}, 8), chainOfTinyDirectories(),
      kSoi + times(segment(0xE0, std::string(65533, 's')), 64 * kSize),
      kSoi + times(segment(0xE0, "")),
      kSoi + exifSegment(kTiff.header(0)) + times(segment(0xE0, "")),
      kSoi + times("\xFF\xFF\xFF\xFF\xE0" + u16(2)), psd(times(resource(0x404, ""))),
      kDeclaration + std::string(256 * kSize, 'x'), kMethod + times("lfst:"),
      kMethod + times("lfst:Boost"), kMethod + "<lfst:Brightness>" + times("7"),
      kMethod + "<lfst:Brightness>0." + times("0"),
      kMethod + "<lfst:SaturationIndividualColors>1, 2," + times(" "), times("xmlns:lfst="),
      times(kDeclaration), times("xmlns:aux="), kAux + times("aux:Lens "),
      kAux + times("aux:Lens>"), times(kOpening), kOpening + "'>" + times(kTag), times(">"),
      times("desc\0\0\0\0\0\0\0"s), times("\x1C\2\1\0\1"s),
      times(", ", 14) + times("/s"), times(", ", 14) + times(", 1/s"),
      times(", ", 16) + times("R,"), times("8BIM\x04"), times("8BIM\x04\x0C\0\0"s)};
}

struct Input {
  std::string text;
  int length = static_cast<int>(text.size());  // without the NUL behind it
  const uint8_t* bytes = bytesAt(text);
  TempFile file{text};
  MemoryStream stream{text};
  std::string out = text + "123456789";
  ExifInfo info{};
  SettingsParams params{};
  int found[60] = {};
  std::FILE* at(long offset) { return std::fseek(stream.get(), offset, 0), stream.get(); }
};

struct Reader {
  uint64_t entries;  // of directories, that it may read
  void (*read)(Input&);
};
constexpr uint64_t kMost = 5 * 65535;
const Reader kReaders[] = {
    {kMost, [](Input& i) { getExifData(i.file.path(), 0, &i.info); }},
    {kMost, [](Input& i) { getExifData(i.file.path(), 1, &i.info); }},
    {kMost, [](Input& i) { getExifData(i.file.path(), 2, &i.info); }},
    {kMost, [](Input& i) { get_tif_tag(i.at(0), 9, &i.found[0], &i.found[1]); }},
    {65535, [](Input& i) { parse_exif_data(i.at(8), 0, 0x4949, 0, &i.info); }},
    {65535, [](Input& i) { parse_gps_data(i.at(8), 0, 0x4949, 0, &i.info); }},
    {0, [](Input& i) { parse_photoshop_data(i.at(0), INT_MAX, &i.info); }},
    {0, [](Input& i) { parse_image_description(i.at(0), i.length, &i.info); }},
    {0, [](Input& i) { parse_image_description(i.at(0), INT_MAX, &i.info); }},
    {0, [](Input& i) { get_settings_from_xmp(-1, i.length + 1, i.bytes, nullptr, nullptr); }},
    {0, [](Input& i) { get_settings_from_xmp(100, i.length + 1, i.bytes, i.info.lens, nullptr); }},
    {0, [](Input& i) { read_xmp(i.file.path(), 2, i.params); }},
    {0, [](Input& i) { lfsettings_occurences_in_xmp(i.length + 1, i.bytes); }},
    {0, [](Input& i) { searchForTag(0, "lfst:", 0, i.bytes, 1, i.length, i.found, i.params); }},
    {0, [](Input& i) {
      const std::string tag = i.text.substr(0, 4096) + 'x';
      searchForTag(0, tag.c_str(), 0, i.bytes, 1, i.length, i.found, i.params); }},
    {0, [](Input& i) { get_profile_name(i.length, i.bytes, i.info.lens); }},
    {0, [](Input& i) { insert_xmp(1, 2, i.params, i.length, 9, &i.out[0]); }},
    {0, [](Input& i) {
      add_iptc_keyword(i.length, i.bytes, 1, i.bytes, reinterpret_cast<uint8_t*>(&i.out[0])); }},
};
// clang-format on

TEST(Bounds, HoldForTheWorstInputs) {
  for (const std::string& text : worstInputs()) {
    Input input{text};
    const uint64_t size = text.size();
    for (const Reader& reader : kReaders) {
      SCOPED_TRACE(std::to_string(&reader - kReaders) + " reads " + text.substr(0, 200));
      interposed::state = {};
      reader.read(input);
      const interposed::State work = interposed::state;
      EXPECT_LE(work.steps, 64 * size + 100 * reader.entries + 20000);
      EXPECT_LE(work.reads, size / 512 + 2 * reader.entries + 100);
      EXPECT_LE(work.bytesRead, 17 * size + 640 * reader.entries + 70000);
      EXPECT_LE(work.peak, 2 * size + 70000);
    }
  }
}

TEST(Bounds, OfAFileWithoutSettingsLittleIsHeld) {
  TempFile file(std::string(64 * kSize, '\0'));
  interposed::state = {};
  EXPECT_EQ(read_xmp(file.path(), -1, nullptr), 0);
  EXPECT_LE(interposed::state.peak, 70000U);
}

// A system call costs more than the pages that it copies: a photograph takes few reads, of little.
TEST(Bounds, AreFarFromWhatAPhotographTakes) {
  const auto readsOf = [](const std::string& bytes, int type) {
    TempFile file(bytes);
    ExifInfo info;
    interposed::state = {};
    EXPECT_EQ(getExifData(file.path(), type, &info), 1);
    return std::make_pair(interposed::state.reads, interposed::state.bytesRead);
  };
  using Reads = std::pair<uint64_t, uint64_t>;
  const std::string tiff = kTiff.file(kTiff.entries("110='NIKON D850'; 112=s6"), kExif, kGps) + std::string(20000, 'm');
  const std::string jpeg = kSoi + exifSegment(tiff) + xmpSegment(packet("Average", "L") + std::string(3000, ' ')) +
                           photoshopSegment(resource(0x404, std::string(200, 'i')));
  EXPECT_EQ(readsOf(jpeg + kEoi + std::string(90000, 's'), LUMENFORGE_JPEG), Reads(2, 16384 + 8192));
  EXPECT_EQ(readsOf(tiff, LUMENFORGE_TIFF), Reads(1, 8192));
  EXPECT_EQ(readsOf(psd(resource(0x400, std::string(30000, 'r')) + resource(0x422, tiff)) + std::string(90000, 'l'),
                    LUMENFORGE_PSD),
            Reads(2, 8192 + 16384));
  // Pixels first; the values before their directory, in another page; the file ends with them.
  const std::string exif = kTiff.directory(50000, kExif);
  const std::string pixelsFirst =
      kTiff.header(90000) + std::string(49992, 'p') + exif + std::string(40000 - exif.size(), 'p') +
      kTiff.directory(90000, {Tiff::text(0x110, "NIKON D850"), kTiff.longEntry(0x8769, 50000)});
  EXPECT_EQ(readsOf(pixelsFirst, LUMENFORGE_TIFF), Reads(3, 8192 + pixelsFirst.size() % 4096 + 8192));
}

}  // namespace
