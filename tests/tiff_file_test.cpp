// Pixels and records in, whole TIFF files out: byte for byte, stage by stage, and in the eyes of
// other readers.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <climits>
#include <csignal>
#include <functional>
#include <tuple>

#include "LumenforgeMetaLib.h"
#include "support/file_faults.h"
#include "support/tiff_records.h"

namespace {

using namespace build;

struct Picture {
  TifImageInfo info{};
  int stride = 0;  // in bytes or in 16-bit samples
  std::size_t firstRow = 0;
  std::vector<uint8_t> pixels;
  std::string icc, iptc, xmp;
  int method = 0;
  SettingsParams settings{};
  Records records{};

  Picture(int width, int height, int channels, int bits, int conversion = 0) {
    info.width = width;
    info.height = height;
    info.channels = channels;
    info.bitsPerSample = bits;
    info.resolution = 300;
    info.conversion = conversion;
    info.orientation = 6;
    setStride(rowSize() / unit());
  }

  int unit() const { return info.conversion == 1 ? 2 : 1; }
  int sampleSize() const {
    return info.conversion == 1 || info.bitsPerSample == 3216 ? 2 : info.bitsPerSample / 8;
  }
  int rowSize() const { return info.width * info.channels * sampleSize(); }
  int samples() const { return info.channels < 3 ? 1 : 3; }
  bool isFloat() const { return info.bitsPerSample == 32 || info.bitsPerSample == 3216; }

  // Rows in memory as they must lie for this distance.
  void setStride(int newStride) {
    stride = newStride;
    const int distance = std::abs(stride) * unit() * std::max(info.height - 1, 0);
    firstRow = static_cast<std::size_t>(stride < 0 ? distance : 0);
    pixels.resize(static_cast<std::size_t>(distance + (info.height > 0 ? rowSize() : 0)));
    uint32_t noise = 7;
    for (uint8_t& byte : pixels) byte = static_cast<uint8_t>((noise = noise * 1664525 + 1) >> 23);
  }

  int write(const std::string& path) const {
    TifImageInfo described = info;
    if (info.iccLength == 0) described.iccLength = static_cast<int>(icc.size());
    return buf2tif(pixels.data() + firstRow, &described, stride, bytesAt(icc), &records.meta,
                   &records.gps, static_cast<int>(iptc.size()), bytesAt(iptc), method, settings,
                   static_cast<int>(xmp.size()), bytesAt(xmp), path.c_str());
  }

  std::string filePixels() const {
    const int first = info.conversion == 1 ? 1 : 0;  // byte of a sample
    std::string out(
        static_cast<std::size_t>(info.width * info.height * samples() * (sampleSize() - first)),
        '?');
    char* to = out.data();
    for (int y = 0; y < info.height; ++y) {
      const uint8_t* row = pixels.data() + firstRow + std::ptrdiff_t{y} * stride * unit();
      for (int x = 0; x < info.width; ++x, row += info.channels * sampleSize()) {
        for (int i = 0; i < samples() * sampleSize(); ++i) {
          if (i % sampleSize() >= first) *to++ = static_cast<char>(row[i]);
        }
      }
    }
    return out;
  }

  // With everything that the picture holds; `packet` as it is to be written.
  std::string file(const std::string& packet) const {
    const std::string strip = filePixels();
    const int bits = info.bitsPerSample == 3216 ? 16 : info.bitsPerSample;
    const auto size = [](int value) {
      const auto number = static_cast<uint32_t>(value);
      return value > 65535 ? kTiff.longEntry(0, number) : kTiff.shortEntry(0, number);
    };
    const auto as = [](uint16_t tag, Entry entry) { return entry.tag = tag, entry; };
    std::vector<Entry> entries = {as(0x100, size(info.width)), as(0x101, size(info.height))};
    const auto add = [&](const Entry& entry) { entries.push_back(entry); };
    add(samples() == 1 ? kTiff.shortEntry(0x102, static_cast<uint32_t>(bits))
                       : Entry{0x102, 3, 3, le16({bits, bits, bits})});
    add(kTiff.shortEntry(0x103, 1));
    add(kTiff.shortEntry(0x106, samples() == 1 ? 1 : 2));
    const bool named = records.meta.model[0] != 0;
    if (named) add(Tiff::text(0x10F, "Canon"));
    if (named) add(Tiff::text(0x110, "Canon EOS 5D"));
    add(kTiff.longEntry(0x111, 8));
    add(kTiff.shortEntry(0x112, 6));
    add(kTiff.shortEntry(0x115, static_cast<uint32_t>(samples())));
    add(as(0x116, size(info.height)));
    add(kTiff.longEntry(0x117, strip.size()));
    add(kTiff.shortEntry(0x11C, 1));
    add(fractions(0x11A, {300000, 1000}));
    add(fractions(0x11B, {300000, 1000}));
    add(kTiff.shortEntry(0x128, 2));
    if (isFloat()) add(Tiff::text(0x131, "Lumenforge Merge To 32-bit HDR"));
    if (isFloat()) add({0x153, 3, 3, le16({3, 3, 3})});
    if (!icc.empty()) add({0x8773, 7, static_cast<uint32_t>(icc.size()), icc});
    if (!packet.empty()) add({0x2BC, 1, static_cast<uint32_t>(packet.size()), packet});
    const std::string padded = iptc + std::string((4 - iptc.size() % 4) % 4, '\0');
    if (!iptc.empty()) add({0x83BB, 4, static_cast<uint32_t>(padded.size() / 4), padded});
    return fileOf(strip, entries, named ? kExif : std::vector<Entry>{},
                  named ? kGps : std::vector<Entry>{});
  }
};

std::string profile(std::size_t size, const std::string& space) {
  std::string bytes(size, 'p');
  return bytes.replace(std::min<std::size_t>(16, size), space.size(), space).substr(0, size);
}

const std::string kKept = packet("Fusion/Intensive", "Old lens");

// Every kind of picture that there is, with everything that a photograph may say.
std::vector<Picture> everyKind(int width, int height) {
  std::vector<Picture> all;
  for (const auto& [bits, conversion] : {std::pair{8, 0}, {16, 0}, {32, 0}, {3216, 0}, {8, 1}}) {
    for (int channels = 1; channels <= 4; ++channels) {
      Picture picture(width, height, channels, bits, conversion);
      picture.records = everything();
      picture.icc = profile(200, "RGB ");
      picture.iptc = "\x1C\2\x19\0\x08keyword1"s;
      picture.xmp = kKept;
      all.push_back(picture);
    }
  }
  return all;
}

TEST(TiffFile, HoldsEveryKindByteForByte) {
  for (Picture& picture : everyKind(37, 5)) {
    const int tight = picture.stride;
    for (const int stride : {tight, tight + 6, -tight, 0}) {
      picture.setStride(stride);
      TempFile file("something longer than nothing");
      EXPECT_EQ(picture.write(file.path()), 5);
      EXPECT_EQ(file.bytes(), picture.file(kKept)) << picture.info.bitsPerSample << stride;
    }
  }
  for (const auto& [width, height, channels] : {std::tuple{100, 50, 3},
                                                {70000, 1, 1},
                                                {1, 65536, 2},
                                                {65535, 1, 3},
                                                {3, 0, 3},
                                                {1, 1, 4}}) {
    const Picture picture(width, height, channels, 8);
    TempFile file("");
    EXPECT_EQ(picture.write(file.path()), height);
    EXPECT_EQ(file.bytes(), picture.file(""));
  }
  Picture upsideDown(3, 0, 1, 32);
  upsideDown.info.height = -5;
  TempFile file("");
  EXPECT_EQ(upsideDown.write(file.path()), 0);
  EXPECT_EQ(file.bytes(), Picture(3, 0, 1, 32).file(""));
}

// Each block of rows is one write call; the last block's rows are the result.
TEST(TiffFile, GoesOutInBlocksOfOneMebibyte) {
  // Channels, bits, conversion; bytes of a written row of 1,000 pixels; rows of a block.
  const std::tuple<int, int, int, std::size_t, int> kCases[] = {
      {3, 8, 0, 3000, 349}, {4, 8, 0, 3000, 262},    {4, 16, 0, 6000, 131},
      {3, 8, 1, 3000, 349}, {2, 3216, 0, 2000, 262}, {1, 32, 0, 4000, 262}};
  for (const auto& [channels, bits, conversion, rowSize, rows] : kCases) {
    for (const int lastRows : {1, rows}) {
      const Picture picture(1000, rows + lastRows, channels, bits, conversion);
      std::vector<std::size_t> writes;
      TempFile file("");
      fault::writes = &writes;
      EXPECT_EQ(picture.write(file.path()), lastRows);
      fault::writes = nullptr;
      const std::string expected = picture.file("");
      const std::size_t blocks = rowSize * static_cast<std::size_t>(rows + lastRows);
      EXPECT_EQ(writes, (std::vector<std::size_t>{8, rowSize * static_cast<std::size_t>(rows),
                                                  rowSize * static_cast<std::size_t>(lastRows),
                                                  expected.size() - blocks - 8}));
      EXPECT_TRUE(file.bytes() == expected) << channels << bits;
    }
  }
  Picture wide(350000, 2, 1, 32);  // a row beyond a block, a block of one row
  wide.setStride(-wide.stride - 4);
  TempFile file("");
  EXPECT_EQ(wide.write(file.path()), 1);
  EXPECT_TRUE(file.bytes() == wide.file(""));
}

std::string generated(int method, const float* settings, const char* lens) {
  std::string text(static_cast<std::size_t>(embed_xmp(0, method, settings, *lens, lens, nullptr)),
                   '?');
  embed_xmp(1, method, settings, *lens, lens, text.data());
  return text;
}

TEST(TiffFile, HoldsThePacketThatTheRulesChoose) {
  const std::string none = "<x:xmpmeta xmlns:x='adobe:ns:meta/'/>";
  const std::string long1 = none + std::string(900, ' ');
  const std::string two = packet("Fusion/2 images", "");
  const SettingsParams zeros{};
  const std::string lensOnly = generated(0, zeros, "EF 50mm");
  const std::string average = generated(14, zeros, "");
  const std::string both = generated(14, zeros, "EF 50mm");
  const auto padded = [](const std::string& text, std::size_t size) {
    return text + std::string(size - text.size(), ' ');
  };
  // Packet given, method, with a lens; packet written.
  const std::tuple<std::string, int, bool, std::string> kCases[] = {
      {kKept + "\0"s, 2, false, kKept},
      {kKept + "\0"s, 14, true, kKept},
      {kKept, 0, true, kKept},
      {kKept, 14, true, both + " "},
      {kKept, -1, false, kKept.substr(0, kKept.size() - 1)},
      {two + "\0"s, 0, false, two},
      {two, 0, false, two},
      {two + "\0"s, 14, false, average + " "},
      {none + "\0"s, 14, false, average + " "},
      {long1 + "\0"s, 0, true, padded(lensOnly, long1.size())},
      {long1, 0, true, padded(lensOnly, long1.size())},
      {long1, -1, true, padded(lensOnly, long1.size() - 1)},
      {none, 0, true, lensOnly},
      {"\0"s, 0, false, ""},
      {"\0"s, 0, true, lensOnly},
      {"", 0, false, ""},
      {"", -3, false, ""},
      {"", 14, false, average + " "},
      {"", 0, true, lensOnly + " "},
      {"", 14, true, both + " "}};
  for (const auto& [given, method, lens, written] : kCases) {
    Picture picture(2, 2, 3, 8);
    picture.xmp = given;
    picture.method = method;
    if (lens) setText(picture.records.meta.lens, "EF 50mm");
    TempFile file("");
    EXPECT_EQ(picture.write(file.path()), 2);
    EXPECT_EQ(file.bytes(), picture.file(written)) << given << method << lens;
  }
}

TEST(TiffFile, HoldsProfilesForRgbOnly) {
  for (const auto& [given, kept] : {std::pair{profile(3144, "RGB "), true},
                                    {profile(21, "RGB"), true},
                                    {profile(21, "GRAY"), false},
                                    {profile(3144, "rGB"), false},
                                    {profile(20, "GRAY"), true},
                                    {profile(12, ""), true}}) {
    Picture picture(2, 2, 1, 16);
    picture.icc = given;
    TempFile file("");
    EXPECT_EQ(picture.write(file.path()), 2);
    picture.icc = kept ? given : "";
    EXPECT_EQ(file.bytes(), picture.file("")) << given.size();
  }
}

TEST(TiffFile, IsNotBegunForAnUnsupportedDescription) {
  const std::function<void(TifImageInfo&)> kEdits[] = {
      [](auto& i) { i.channels = 0; }, [](auto& i) { i.channels = 5; },
      [](auto& i) { i.bitsPerSample = 24; }, [](auto& i) { i.bitsPerSample = 0; },
      [](auto& i) { i.conversion = 2; }, [](auto& i) { i.conversion = 1, i.bitsPerSample = 16; },
      [](auto& i) { i.width = 0; }, [](auto& i) { i.iccLength = -1; },
      [](auto& i) { i.resolution = -1; }, [](auto& i) { i.resolution = 4294968; },
      [](auto& i) { i.width = i.height = INT_MAX, i.channels = 4, i.bitsPerSample = 32; },
      [](auto& i) { i.width = 1 << 30, i.height = 4; },
      // One pixel more than a file of 4 GiB - 1 has room for.
      [](auto& i) { i.channels = 1, i.width = 1431655700, i.height = 3; }};
  const std::string path = testing::TempDir() + "lumenforge-unsupported.tif";
  for (std::size_t i = 0; i < std::size(kEdits); ++i) {
    Picture picture(2, 2, 3, 8);
    kEdits[i](picture.info);
    EXPECT_EQ(picture.write(path), -6) << i;
    EXPECT_NE(::access(path.c_str(), F_OK), 0) << i;
  }
}

void limitFileSize(rlim_t size) {
  rlimit limit;
  getrlimit(RLIMIT_FSIZE, &limit);
  limit.rlim_cur = size;
  setrlimit(RLIMIT_FSIZE, &limit);
}

TEST(TiffFile, TellsWhichStageFailed) {
  Picture picture(100, 50, 3, 8);
  for (const auto& [step, result] : {std::pair{0, -1}, {1, -2}, {2, -3}, {3, -12}, {4, -12}}) {
    TempFile file("");
    testing::internal::CaptureStderr();
    fault::countdown = step;
    EXPECT_EQ(picture.write(file.path()), result) << step;
    EXPECT_LT(fault::countdown, 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr().empty(), step > 0);
  }
  EXPECT_EQ(picture.write("/dev/full"), -2);
  testing::internal::CaptureStderr();
  EXPECT_EQ(picture.write("/no/such/%s %d.tif"), -1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "Could not open for writing file:  /no/such/%s %d.tif\n");

  const std::string whole = picture.file("");
  Picture large(4, 3, 1, 8);  // the largest file; few of its pixels are reached
  large.info.width = 1431655699;
  large.stride = 0;
  const auto old = std::signal(SIGXFSZ, SIG_IGN);
  for (const auto& [limit, result] : {std::pair{4UL, -2},
                                      {15000UL, -3},
                                      {15100UL, -12},
                                      {whole.size() - 1, -12},
                                      {whole.size(), 50}}) {
    TempFile file("");
    limitFileSize(limit);
    EXPECT_EQ(picture.write(file.path()), result) << limit;
    limitFileSize(RLIM_INFINITY);
    EXPECT_EQ(file.bytes(), whole.substr(0, limit));
  }
  TempFile file("");
  limitFileSize(10);
  EXPECT_EQ(large.write(file.path()), -3);
  limitFileSize(RLIM_INFINITY);
  std::signal(SIGXFSZ, old);
}
}  // namespace
