// The reading wing: files and streams in, whole records out.
#include <climits>
#include <cmath>
#include <ctime>
#include <filesystem>
#include <functional>
#include <map>

#include "support/told_records.h"

namespace {

using namespace build;

const Tiff kBig{ByteOrder::big};

std::string readFile(const std::string& bytes, int type) {
  TempFile file(bytes);
  return outcomeOf([&](ExifInfo* info) { return getExifData(file.path(), type, info); });
}

// One of the parsers that add to a host's record, given a stream that stands at `position`.
template <typename Parser, typename... Arguments>
std::string parsed(const std::string& bytes, long position, Parser* parser, Arguments... arguments) {
  MemoryStream f(bytes, position);
  return outcomeOf([&](ExifInfo* info) { return init_exifInfo(info), parser(f.get(), arguments..., info); });
}

// Each outcome and the inputs that have it, in both byte orders.
using Cases = std::vector<std::pair<std::string, std::vector<std::string>>>;
void expectEach(const std::function<std::string(const std::string&, const Tiff&)>& read, const Cases& cases) {
  for (const auto& [outcome, inputs] : cases) {
    for (const std::string& input : inputs) {
      for (const Tiff& t : {kTiff, kBig}) EXPECT_EQ(read(input, t), outcome) << input.substr(0, 100);
    }
  }
}

TEST(ByteOrderReaders, ReadEitherOrderAndLetEndOfFileIntoTheArithmetic) {
  MemoryStream stream("\x12\x34\x12\x34\x12\x34\x01\x02\x03\x04\x81\x02\x03\x04\xFF\x02\x03\x04\x05");
  std::FILE* const f = stream.get();
  const std::vector<uint32_t> read = {fgetm2(f),     fgetmi2(f, 0x00014949), fgetmi2(f, 0), fgetm4(f),
                                      fgetmi4(f, 0), fgetmi4(f, 0x4949),     fgetm2(f),     fgetmi2(f, 0x4949)};
  EXPECT_EQ(read, (std::vector<uint32_t>{0x1234, 0x3412, 0x1234, 0x01020304, 0x81020304, 0x040302FF, 0x05 * 256 - 1,
                                         0U - 256 - 1}));
}

// A directory four bytes into a stream, its offsets counted from there.
auto directoryParser(decltype(parse_exif_data)* parser) {
  return [parser](const std::string& entries, const Tiff& t) {
    const int mark = t.order == ByteOrder::little ? 0x4949 : 0x4D4D;
    return parsed("base" + t.directory(0, t.entries(entries)), 4, parser, 0, mark, 4);
  };
}

TEST(ExifDirectory, FillsFieldsByTagAndFallsBackInEntryOrder) {
  expectEach(directoryParser(parse_exif_data),
             {// Shutter speed: the last one counts, 0 is none, no denominator, an exposure time before it.
              {"1 t=0.00390625", {"9201=1/1; 9201=8/1"}},
              {"1", {"9201=8/1; 9201=0/5", ""}},
              {"1 t=2", {"9201=-1/0"}},
              {"1 t=-0.5", {"829A=-1/2; 9201=8/1"}},
              // Apertures: the first one counts; an f-number of no denominator changes nothing.
              {"1 f=5.656854", {"9202=5/1; 9205=3/1; 829D=7/-1; 829D=7/0"}},
              {"1 f=4", {"9202=5/0; 9205=4/1"}},
              {"1 iso=333", {"A215=1000/3"}},
              {"1 iso=4294967289", {"A215=-7/-2; A215=9/1"}},
              // The last eight bytes are a fraction, the last seven are none.
              {"1 iso=10", {"A215=5#1@A"}},
              {"1", {"A215=5#1@B"}},
              // One or two SHORTs stand in the field, three behind it.
              {"1 iso=7 mm35=65538", {"8827=3#2@70007; A405=3#3@10002"}},
              // A text of any type and count, a shorter one, and what the file ends before.
              {"1 date=2021\n", {"9003=99#2'2021\n:06:05 14:03:59 and more'"}},
              {"1 date=2021:06:05 14:03:59", {"9003='2021:06:05 14:03:59 and more'"}},
              {"1 date=2021:06", {"9003='2021:06:05'; 9003='2021:06'; 829A=5#1@FFFFFFF0; 9003=2#20@4000"}}});
}

TEST(GpsDirectory, CopiesWhatStandsInTheFile) {
  expectEach(directoryParser(parse_gps_data),
             {{"1 lat=48,1,49,1,0,0 time=7,1,8,1,9,1", {"2=48/1,49/1; 7=7/1,8/1,9/1,10/1"}},
              // A count below zero is none; that of an altitude says nothing.
              {"1 alt=4294967295,18", {"2=5#4294967295@12; 6=5#0@6; 7=5#0@12"}},
              // No SHORT stands in its field.
              {"1 time=1,6,0,0,0,0", {"7=3#1@6"}},
              {"1", {"1D=2#5'2021:06:05 and more'", "1D=2#2147483648'2021:06:05 and more'", ""}},
              {"1 day=2021:", {"1D=2#6'2021:06:05 and more'"}},
              {"1 day=2021:06:0", {"1D=2#10'2021:06:05 and more'"}},
              {"1 day=2021:06:05", {"1D=2#11'2021:06:05 and more'", "1D=2#12'2021:06:05 and more'"}}});
}

// Across page ends, and with values in more places than a real file has: some begin in what has been read and end
// behind it.
TEST(ExifDirectory, IsReadWhereverItsPartsLie) {
  for (std::size_t at = 4096 - 40; at < 4096 + 2; ++at) {
    std::vector<Entry> entries;
    std::string bytes(1'000'000, '\0');
    for (std::size_t i = 0; i < 96; ++i) {
      const std::size_t valueAt = 20480 * (i / 2 + 1) + i % 2 * (504 + at % 8);
      bytes.replace(valueAt, 8, u32(i + 1) + u32(2));
      entries.push_back({i % 2 == 1 ? uint16_t{0x829A} : uint16_t{0x829D}, 5, 1, u32(valueAt)});
    }
    const std::string directory = kBig.directory(at, entries);
    bytes.replace(at, directory.size(), directory);
    EXPECT_EQ(parsed(bytes, static_cast<long>(at), parse_exif_data, 0, 0x4D4D, 0), "1 t=48 f=47.5") << at;
  }
}

TEST(PhotoshopBlock, FindsResourcesAtEveryPosition) {
  const auto scan = [](const std::string& block, int length) {
    return parsed("at" + block, 2, parse_photoshop_data, length);
  };
  const std::string thumb = resource(0x40C, thumbnail(160, 120, std::string(5000, 'j')));
  const std::string iptc = resource(0x404, "\x1C\x02\x19");
  const std::string found = "5000 width=160 height=120 row=480 thumb=5000 thumbAt=42";
  const std::string far = std::string(65536 - 3, '8');  // twice, and a signature straddles stretches
  expectEach([&](const std::string& block, auto) { return scan(block, static_cast<int>(block.size())); },
             {{found, {thumb, resource(0x40C, thumb.substr(12), "\1x")}},
              {"1 iptc=3 iptcAt=14", {iptc}},
              {found + " iptc=3 iptcAt=5070", {thumb + iptc + iptc}},  // the later one wins
              {"1 iptc=3 iptcAt=27", {resource(0x400, "x" + iptc)}},   // in another one's data
              {"1 iptc=3 iptcAt=131080", {far + far + iptc}},
              // A name, another resource, seven bytes.
              {"1",
               {resource(0x404, "\x1C\x02\x19", "\1x"), resource(0x404, "", "\0x"s), resource(0x504, "\x1C"),
                "....8BIM\x04\x04\0"s, ""}}});
  // The length bounds where resources begin, the file their numbers.
  EXPECT_EQ(scan(iptc, 8), "1 iptc=3 iptcAt=14");
  EXPECT_EQ(scan(iptc, 7), "1");
  EXPECT_EQ(scan("x" + iptc, 8), "1");
  EXPECT_EQ(scan(iptc, INT_MAX), "1 iptc=3 iptcAt=14");
  EXPECT_EQ(scan(iptc, -1), "-4");
  EXPECT_EQ(scan(iptc.substr(0, 11), 100), "1");
  EXPECT_EQ(scan(thumb.substr(0, 35), 100), "1 width=160 height=120 row=480");
  EXPECT_EQ(scan(thumb.substr(0, 36), 100), found);
  // A long block at a stream's start.
  EXPECT_EQ(parsed(iptc + far, 0, parse_photoshop_data, 2000), "1 iptc=3 iptcAt=12");
  // The last place that 32 bits hold, and one beyond it.
  TempFile file(kTiff.file(kTiff.entries("8649=7#99@FFFFFFF3")));
  std::ofstream(file.path(), std::ios::binary | std::ios::in).seekp(0xFFFFFFF3) << iptc + iptc + thumb;
  EXPECT_EQ(outcomeOf([&](ExifInfo* info) { return getExifData(file.path(), 0, info); }), "1 iptc=3 iptcAt=4294967295");
}

TEST(ReadIptc, ReadsBlocksThatEndBeforeTheFile) {
  std::string bytes(1000, 'x');
  bytes[800] = 0x1C;
  TempFile file(bytes);
  const int cases[][3] = {{199, 800, 199}, {200, 800, 0}, {100, 801, -2}, {INT_MAX, INT_MAX, 0},
                          {-1, 800, 0},    {1, -1, 0},    {0, 800, -2},   {1, 0, -2}};
  for (const auto& [length, offset, result] : cases) {
    std::vector<unsigned char> buffer(200, 0x1C);
    EXPECT_EQ(read_iptc(file.path(), length, offset, buffer.data()), result) << length << " at " << offset;
    EXPECT_TRUE(result <= 0 || std::equal(buffer.begin(), buffer.begin() + result, bytes.begin() + offset));
  }
  EXPECT_EQ(read_iptc(TempFile("").path(), 0, 0, nullptr), -1);
  EXPECT_EQ(read_iptc("/nonexistent", 1, 0, nullptr), -1);
}

// One of everything.
std::string photo(const Tiff& t) {
  return t.file(
      t.entries("100=l640; 110='NIKON D3S'; 112=s6; 201=l999; 202=l998; 2BC=1#777@1388; 83BB=4#25@1770"),
      t.entries("829A=1/250; 829D=2/1; 8827=s9; 8830=s7; 9003='2021:06'; 920A=50/1; A20E=4/1; A210=s3; A405=l75"),
      t.entries("1=2#2'S'; 2=1/2,3/4,5/6; 3=2#2'W'; 4=7/8,9/10,11/12; 5=1#1'\x01'; 6=13/14; 7=15/16,17/18,19/20; "
                "8=1/1; 1D='2021:06:0'"),
      t.entries("201=l4000; 202=l1234"));
}

// The thumbnail's place counts from the TIFF header, that of XMP and IPTC does not. A file that ends early gives what
// the whole one gives or zero; by the place where it ends, a signature or number does not match, a structure is damaged
// (-1), or only values, next directories and their offsets are missing (1).
TEST(WholeFiles, GiveTheSameRecordFromEveryContainerAndNothingElseWhenCut) {
  using Results = std::map<std::size_t, int>;  // each from a length on
  for (const Tiff& t : {kTiff, kBig}) {
    const std::string tiff = photo(t);
    const std::string jpeg = kSoi + segment(0xE0, "JFIF") + exifSegment(tiff) + xmpSegment(packet("Average", "L"));
    const std::string psdFile = psd(resource(0x400, "odd") + resource(0x404, "\x1C") + resource(0x422, tiff));
    const auto resultsFrom = [&](std::size_t base, Results results) {
      const std::size_t second = base + tiff.size() - 30;
      results.merge(
          Results{{base, -2}, {base + 2, -3}, {base + 4, -1}, {base + 118, 1}, {second + 2, -1}, {second + 26, 1}});
      return results;
    };
    const struct {
      std::string bytes;
      Results results;
    } files[] = {{tiff, resultsFrom(0, {})},
                 {jpeg + kEoi + std::string(29, ' '), {{0, -1}, {14, -2}, {22, -3}, {24, -1}, {jpeg.size() + 2, 1}}},
                 {psdFile + "behind", resultsFrom(psdFile.find(tiff), {{0, -1}, {4, -3}, {26, -1}})}};
    for (int type = 0; type < 3; ++type) {
      const auto& [bytes, results] = files[type];
      const std::string record =
          told("1 t=0.004 f=2 iso=9 mm=50 mm35=75 x=4 unit=3 model=NIKON D3S date=2021:06 thumb=1234 thumbAt=",
               bytes.find(tiff) + 4000, " orientation=6 iptc=100 iptcAt=6000 latRef=S lat=1,2,3,4,5,6 lonRef=W ",
               "lon=7,8,9,10,11,12 altRef=1 alt=13,14 time=15,16,17,18,19,20 day=2021:06:0 xmp=777 xmpAt=5000");
      EXPECT_EQ(readFile(bytes, type), record + (type == 1 ? " lens=L" : ""));
      TempFile file(bytes);
      ExifInfo whole;
      ExifInfo part;
      getExifData(file.path(), type, &whole);
      for (std::size_t length = bytes.size(); length-- > 0;) {
        std::filesystem::resize_file(file.path(), length);
        const int expected = std::prev(results.upper_bound(length))->second;
        const auto isRight = [](char byte, char wholeByte) { return byte == 0 || byte == wholeByte; };
        ASSERT_EQ(getExifData(file.path(), type, &part), expected) << type << " at " << length;
        ASSERT_TRUE(std::ranges::equal(bytesOf(part), bytesOf(whole), isRight)) << type << " at " << length;
      }
    }
  }
}

TEST(Directories, ReadModelsAndBlocksByTheirRules) {
  const auto read = [](const std::string& entries, const Tiff& t) { return readFile(t.file(t.entries(entries)), 0); };
  expectEach(read, {{"1 model=X10 ", {"110=2#4'X10'"}},
                    {"1 model=D7  ", {"110=2#3'D7'"}},
                    {"1 model=D", {"110=2#2'D'"}},
                    // A text over a longer one: what stands behind it stays in the first case alone.
                    {"1 model=ABCDPUS", {"110='OLYMPUS'; 110=3#2'ABCD'"}},
                    {"1 model=E-1 ", {"110='OLYMPUS'; 110=2#4'E-1'"}},
                    {"1 model=E-100", {"110='OLYMPUS'; 110='E-100'"}},
                    {"1 model=" + std::string(63, 'm'), {"110='" + std::string(80, 'm') + "'"}},
                    {"1 model=abcde", {"110=2#6'abcdefgh'"}},
                    {"1 model=ab", {"110=3#3'abcdefgh'"}},
                    {"1 model=" + std::string(62, 'm'), {"110=2#63'" + std::string(80, 'm') + "'"}},
                    {"1 model=one\n", {"110='one\ntwo'"}},
                    // Two elements of a large type, no SHORT, a thumbnail of the first directory.
                    {"1", {"110=1094795585/1,1/1", "112=l3", "201=l4; 202=l5"}},
                    {"1 iptc=25 iptcAt=9", {"83BB=7#25@9"}},
                    {"1 iptcAt=9", {"83BB=1#25@9", "83BB=4#1073741825@9"}}});  // the latter beyond 32 bits
  std::string mostInside;  // elements of each type that a field holds
  for (int type = 0; type <= 14; ++type) {
    int count = 4;
    while (count > 0 && read(told("110=", type, '#', count, "'ABCD'"), kTiff) == "1") --count;
    mostInside += std::to_string(count);
  }
  EXPECT_EQ(mostInside, "444210442101004");
}

TEST(Directories, EndAfterThreeOrAfterOneOf255Entries) {
  const auto orientationOf = [](std::size_t entriesOfFirst) {
    std::string bytes = kTiff.header();
    for (uint32_t i = 1; i <= 5; ++i) {
      const std::vector<Entry> entries(i == 1 ? entriesOfFirst : 1, kTiff.shortEntry(0x112, i));
      bytes += kTiff.directory(0, entries, bytes.size() + 2 + 12 * entries.size() + 4);
    }
    return readFile(bytes, 0);
  };
  EXPECT_EQ(orientationOf(1), "1 orientation=3");
  EXPECT_EQ(orientationOf(255), "1 orientation=1");
  EXPECT_EQ(orientationOf(256), "1 orientation=3");
  EXPECT_EQ(readFile(kTiff.header(0), 0), "1");
  // Photoshop resources count in files of type 0 only.
  const auto block = [](const char* length) {
    return kTiff.file(kTiff.entries(told("8649=7#", length, "@1A"))) + resource(0x404, "\x1C\2");
  };
  EXPECT_EQ(readFile(block("15"), 0), "1 iptc=2 iptcAt=38");
  EXPECT_EQ(readFile(block("15"), 3), "1");
  EXPECT_EQ(readFile(block("2147483648"), 0), "1");
  // What cannot be read at all has no signature to be wrong.
  EXPECT_EQ(outcomeOf([](ExifInfo* info) { return getExifData("/", 0, info); }), "-1");
}

TEST(Jpeg, EndsEachPassInItsOwnWay) {
  const std::string exif = exifSegment(kBig.header(0));
  const std::string other = segment(0xE1, "sixsix" + kBig.header(20) + kBig.directory(0, {kBig.shortEntry(0x112, 6)}));
  const std::string xmp = xmpSegment(packet("Tone Compressor", "Zoom"));
  const std::string foreign = xmpSegment(packet("Fusion/2 images", "Zoom"));
  const std::string block = photoshopSegment(resource(0x404, "\x1C\2"));
  const std::string four(4, '\xFF');
  const std::string empty = segment(0xE0, "");
  const std::string nine = empty + empty + empty + empty + empty + empty + empty + empty + empty;
  const std::string iptc = told(" iptc=2 iptcAt=", exif.size() + xmp.size() + 32);
  const auto packetAt = [&](int at) { return told(" xmp=", xmp.size() - 2, " xmpAt=", at, " lens=Zoom"); };
  const auto read = [](const std::string& segments, auto) {
    return readFile(kSoi + segments + std::string(64, '\0'), 1);  // a packet is read past its segment's end
  };
  expectEach(read, {{"1" + iptc + packetAt(53), {exif + xmp + block + kEoi}},
                    {"-1 said=invalid marker\n",
                     {"\xFF\xE0\0\1"s + exif + kEoi, "\xFF\xE1\0\1"s + kEoi, exif + "\xFF\xE2\0\0"s + xmp + kEoi,
                      exif + "\xFF\xED\0\1"s, exif + "\xFF\xE1\0\1"s + xmp + kEoi}},
                    // The first pass. What is no EXIF segment counts its offsets from the file's start.
                    {"-2", {empty + kEoi, segment(0xDA, "scan") + exif + kEoi, xmp + kEoi}},
                    {"1 orientation=6", {other + kEoi}},
                    {"-3", {segment(0xE1, "sixsixMM\0+\0\0\0\0"s) + kEoi}},
                    {"-1 said=too many padding bytes\n", {four + exif + kEoi}},
                    // The search for XMP.
                    {"1" + packetAt(53 + 36), {exif + nine + xmp + kEoi}},
                    {"1", {exif + nine + empty + xmp + kEoi, exif + segment(0xE1, "other") + xmp + kEoi}},
                    {"1" + iptc + " lens=Zoom", {exif + foreign + block + kEoi}},
                    // The second pass: no fill bytes, no code without FF.
                    {"-1" + packetAt(53 + 3), {four.substr(1) + exif + xmp + kEoi}},
                    {"-1", {exif + four + "\xFF\0\2"s + xmp + kEoi}},
                    {"-1" + packetAt(53) + " said=invalid marker\n", {exif + xmp + "\xFF\xED\0\1"s}},
                    {"-10" + packetAt(53 - 1), {exif.substr(1) + xmp + kEoi}},
                    {"-10", {exif + xmpSegment("<x/>")}},
                    {"1", {exif + segment(0xED, "Photoshop 2.5\0"s) + block + kEoi}}});
  // Files that end where they end: what cannot be read does not match.
  const auto directory = [&](const std::string& bytes) { return exifSegment(kBig.header(8) + bytes); };
  const std::string leadsAstray = directory(kBig.directory(0, {kBig.shortEntry(0x112, 6)}, 70000));
  const std::string cutShort = directory(u16(999) + kBig.directory(0, {kBig.shortEntry(0x112, 6)}).substr(2));
  const auto blockAt = [](std::size_t size) { return told(" orientation=6 iptc=2 iptcAt=", size + 32); };
  expectEach(
      [](const std::string& segments, auto) { return readFile(kSoi + segments, 1); },
      {{"1",
        {exif + segment(0xED, "") + kEoi, exif + segment(0xED, "Adobe_CM") + kEoi,
         // A thumbnail beyond 4 GiB, counted from the TIFF header.
         exifSegment(kBig.file(kBig.entries("100=l1"), {}, {}, kBig.entries("201=l4294967295; 202=l9"))) + kEoi}},
       {"-2", {segment(0xE1, "ABCD") + kEoi, segment(0xE1, "") + kEoi, exif.substr(0, 10)}},
       {"1" + blockAt(leadsAstray.size()), {leadsAstray + block + kEoi}},
       {"-1" + blockAt(cutShort.size()), {cutShort + block + kEoi}},
       {"-10 orientation=6", {cutShort + "x"}}});
  EXPECT_EQ(readFile("\xFF\xD9" + exif + kEoi, 1), "-1");
  // The packet's text ends 31 bytes behind its segment, no sooner.
  EXPECT_EQ(readFile(kSoi + exif + xmp + std::string(30, ' '), 1), "-10");
  EXPECT_EQ(readFile(kSoi + exif + xmp + std::string(31, ' '), 1), "-10" + packetAt(53));
  std::string taken;
  for (const char* method :
       {"Details Enhancer", "Tone Compressor", "Contrast Optimizer", "Tone Balancer", "Fusion/Natural",
        "Fusion/Intensive", "Fusion/2 images", "Average", "Fusion/Interior", "none of them"}) {
    taken += read(exif + xmpSegment(packet(method, "")), kTiff) == "-10" ? '0' : '1';
  }
  EXPECT_EQ(taken, "1111110010");
}

TEST(Psd, IsRefusedWhereItIsNoRgbImageOrHasNoExif) {
  const std::string exif = resource(0x422, kBig.header(0));
  expectEach(
      [](const std::string& bytes, auto) { return readFile(bytes, 2); },
      {{"1", {psd(exif), psd(exif, 4), psd(resource(1, "ab") + exif)}},
       {"-1",
        {psd(""), psd(resource(0x400, "x")), psd("8BIX" + exif.substr(4)), psd(resource(1, "abcd", "\3nam"s) + exif)}},
       {"-2", {"8BPX" + psd(exif).substr(4), psd(resource(0x422, "XX"))}},
       {"-3", {psd(exif, 2), psd(exif, 3, 4), psd(resource(0x422, "MM")), psd(resource(0x422, "MM\0+"s))}}});
}

TEST(Export, FillsTheHostsRecordsAndLeavesTheRest) {
  ExifInfo info;
  getExifData(TempFile(photo(kBig)).path(), 0, &info);
  info.valueSource = 8;
  std::strcpy(info.lens, "Zoom");
  constexpr uint32_t kOld = 0x07070707;
  const std::string bufRest = numbers(32, {200, 100, kOld, 9,    8,    kOld, kOld, kOld, 5000, 100, 75,
                                           400, 100, 3,    4000, 1234, 6000, 100,  6,    5000, 777}) +
                              bytesOf(info.model).substr(0, 64) + bytesOf(info.dateTimeOriginal) +
                              bytesOf(info.lens).substr(0, 64);
  const std::string gpsBytes = numbers(32, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20}) +
                               "SW\1\7" + "2021:06:0\0\0\7"s;
  const std::pair<float, std::vector<uint32_t>> cases[] = {
      {1 / 250.0F, {100, 24999}}, {0.00390625F, {100, 25600}}, {5.6F, {559, 100}},    {1 / 60.0F, {100, 5999}},
      {1.0F, {100, 100}},         {0.0F, {kOld, kOld}},        {-1.0F, {kOld, kOld}}, {NAN, {kOld, kOld}},
      {1e20F, {2147483647, 100}}, {1e-20F, {100, 2147483647}}};
  for (const auto& [value, fraction] : cases) {
    MetadataBuf buf;
    GpsBuf gps;
    std::memset(&buf, 7, sizeof buf);
    std::memset(&gps, 7, sizeof gps);
    info.exposureTime = value;
    EXPECT_EQ(metadataBufFromExifInfo(&info, &buf, &gps), static_cast<int>(fraction[0])) << value;
    EXPECT_EQ(bytesOf(buf), numbers(32, fraction) + bufRest) << value;
    EXPECT_EQ(bytesOf(gps), gpsBytes);
  }
}

TEST(CaptureTime, IsReferenceMinusDateInLocalTime) {
  std::tm date{};
  ::strptime("2021-06-05 15:03:59", "%Y-%m-%d %T", &date);
  date.tm_isdst = -1;
  const std::time_t reference = std::mktime(&date);
  const auto read = [reference](const std::string& text, auto) {
    float seconds = 7;
    const int result = time_from_datetime(text.c_str(), reference, &seconds);
    return told(result, ' ', seconds);
  };
  expectEach(read, {{"1 3600", {"2021:06:05 14:03:59", " 2021: 6:5 14:+3:59 more", "2020:18:05 14:03:59"}},
                    {"1 3599", {"2021:06:05\n\t14:03:60"}},
                    {"-1 7",
                     {"2021:06:0514:03:59", "2021-06-05", "", "2021:06:05 14:03:", "2021:06:05 14 :03:59",
                      "1960:01:01 00:00:00", "-2147483648:01:01 00:00:00", "99999999999:01:01 00:00:00",
                      "2021:06:05 14:03:+-9"}}});
  for (const std::time_t time : {0, 1}) {
    char text[32];
    std::strftime(text, sizeof text, "%Y:%m:%d %T", std::localtime(&time));
    EXPECT_EQ(read(text, kTiff), time == 0 ? "-1 7" : told("1 ", static_cast<float>(reference - 1)));
  }
}

TEST(ProfileName, ComesFromTheDescriptionWithinTheProfile) {
  const auto read = [](const std::string& profile, auto) {
    std::string name(32, 'Z');
    const int result = get_profile_name(static_cast<int>(profile.size()), bytesAt(profile), name.data());
    return told(result, ' ', name.substr(0, name.find_last_not_of('\0') + 1));
  };
  const std::string start = std::string(32, '.') + "desc" + std::string(7, '\0');
  const auto described = [&](char count, const std::string& text) { return start + count + text; };
  const std::string text = "A description that is longer than a name";
  expectEach(read, {{"4 sRGB", {described(18, "sRGB IEC61966-2.1"), described(4, "sRGBx")}},
                    {"9 Adobe RGB", {described(18, "Adobe RGB (1998)")}},
                    {"12 ProPhoto RGB", {described(18, "my ProPhoto RGB then sRGB"), described(4, "my ProPhoto RGB")}},
                    {"32 my ProPhoto RGB", {described(3, "my ProPhoto RGB")}},
                    {"32 sRGB is not counted", {described(0, "sRGB is not counted")}},
                    {"32 Adobe RG", {described('\xFF', "Adobe RG")}},
                    {"32 " + text.substr(0, 32), {described('0', text)}},
                    {"-1 ",
                     {described(4, "sRG"), "desc" + std::string(60, '\0'), "  " + described(4, "sRGB"),
                      described(5, "sRGB and much more").substr(1)}}});
  EXPECT_EQ(get_profile_name(-1, bytesAt(start), std::string(32, 'Z').data()), -1);
}

}  // namespace
