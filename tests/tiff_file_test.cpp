// Pixels and records in, whole TIFF files out: byte for byte, and in the eyes of another reader.
#include <gtest/gtest.h>

#include <climits>
#include <tuple>

#include "LumenforgeMetaLib.h"
#include "support/tiff_records.h"

namespace {

using namespace build;

const SettingsParams kZeros{};

struct Picture {
  TifImageInfo info;
  std::string icc, iptc, xmp;
  int method = 0;
  MetadataBuf meta{};
  GpsBuf gps{};
  int stride = 0;
  std::vector<uint8_t> pixels;

  Picture(int width, int height, int channels, int depth, int conversion = 0, const std::string& profile = "")
      : info{width, height, channels, depth, 300, 0, static_cast<int>(profile.size()), conversion, {}, 6},
        icc(profile) {
    setStride(width * pixelSize() / unit());
  }

  int unit() const { return 1 + info.conversion; }  // bytes that the stride counts in
  int bits() const { return info.bitsPerSample == 3216 ? 16 : info.bitsPerSample; }
  int sampleSize() const { return bits() / 8 + info.conversion; }
  int pixelSize() const { return info.channels * sampleSize(); }
  int samples() const { return info.channels < 3 ? 1 : 3; }
  const uint8_t* row(int y) const {
    return pixels.data() + (stride < 0 ? y - info.height + 1 : y) * std::ptrdiff_t{stride} * unit();
  }

  // Exactly the memory that rows at this distance take.
  void setStride(int newStride) {
    stride = newStride;
    const int size = std::abs(stride) * unit() * (info.height - 1) + info.width * pixelSize();
    pixels.resize(info.height > 0 ? static_cast<std::size_t>(size) : 0);
    uint32_t noise = 7;
    for (uint8_t& byte : pixels) byte = static_cast<uint8_t>((noise = noise * 1664525 + 1) >> 23);
  }

  int write(const char* path) const {
    return buf2tif(row(0), &info, stride, bytesAt(icc), &meta, &gps, static_cast<int>(iptc.size()), bytesAt(iptc),
                   method, kZeros, static_cast<int>(xmp.size()), bytesAt(xmp), path);
  }
};

std::string stripOf(const Picture& p) {
  std::string out;
  for (int y = 0; y < p.info.height; ++y) {
    for (int i = 0; i < p.info.width * p.pixelSize(); ++i) {
      const bool kept = i % p.pixelSize() < p.samples() * p.sampleSize() && i % p.sampleSize() >= p.info.conversion;
      if (kept) out += static_cast<char>(p.row(y)[i]);
    }
  }
  return out;
}

std::string shortOrLong(int value) { return (value > 65535 ? "l" : "s") + std::to_string(std::max(value, 0)); }

std::string three(int number) { return "3#3'" + numbers(16, std::vector(3, static_cast<uint32_t>(number))) + "'"; }

// Type, count of units and bytes, zeros behind them where the last unit wants them.
std::string blob(const char* type, const std::string& bytes, std::size_t unit = 1) {
  const std::size_t count = (bytes.size() + unit - 1) / unit;
  return type + std::to_string(count) + "'" + bytes + std::string(count * unit - bytes.size(), '\0') + "'";
}

// With everything that the picture holds, `packet` as it is to be written.
std::string fileOf(const Picture& p, const std::string& packet) {
  const std::string strip = stripOf(p);
  const bool rgb = p.samples() == 3;
  const bool camera = p.meta.model[0] != '\0';
  const std::string height = shortOrLong(p.info.height);
  std::string line = "100=" + shortOrLong(p.info.width) + "; 101=" + height;
  line += "; 102=" + (rgb ? three(p.bits()) : shortOrLong(p.bits())) + "; 103=s1; 106=" + (rgb ? "s2" : "s1");
  if (camera) line += "; 10F='Canon'; 110='Canon EOS 5D'";
  line += std::string("; 111=l8; 112=s6; 115=") + (rgb ? "s3" : "s1") + "; 116=" + height;
  line += "; 117=l" + std::to_string(strip.size()) + "; 11C=s1; 11A=300000/1000; 11B=300000/1000; 128=s2";
  if (p.info.bitsPerSample >= 32) line += "; 131='Lumenforge Merge To 32-bit HDR'; 153=" + three(3);
  if (!p.icc.empty() && (p.icc.size() < 21 || p.icc[18] == 'B')) line += "; 8773=" + blob("7#", p.icc);
  if (!packet.empty()) line += "; 2BC=" + blob("1#", packet);
  if (!p.iptc.empty()) line += "; 83BB=" + blob("4#", p.iptc, 4);
  const uint64_t at = 8 + strip.size();
  const auto directory = [&](uint64_t exif, uint64_t gps) {
    const std::string pointers = "; 8769=l" + std::to_string(exif) + "; 8825=l" + std::to_string(gps);
    return kTiff.directory(at, kTiff.entries(camera ? line + pointers : line));
  };
  const uint64_t exifAt = at + directory(0, 0).size();
  const std::string exif = kTiff.directory(exifAt, kExif);
  const uint64_t gpsAt = exifAt + exif.size();
  return kTiff.header(at) + strip + directory(exifAt, gpsAt) + (camera ? exif + kTiff.directory(gpsAt, kGps) : "");
}

void expectFile(const Picture& picture, int result, const std::string& packet = "") {
  TempFile file("something that is longer than nothing");
  EXPECT_EQ(picture.write(file.path()), result);
  EXPECT_EQ(file.bytes(), fileOf(picture, packet))
      << picture.info.channels << ' ' << picture.info.bitsPerSample << ' ' << picture.stride;
}

const std::string kKept = packet("Fusion/Intensive", "Old lens");

// Every kind of picture that there is, with everything that a photograph may say.
TEST(TiffFile, HoldsEveryKindByteForByte) {
  for (const auto& [depth, conversion] : {std::pair{8, 0}, {16, 0}, {32, 0}, {3216, 0}, {8, 1}}) {
    for (int channels = 1; channels <= 4; ++channels) {
      Picture picture(37, 5, channels, depth, conversion, std::string(16, 'p') + "RGB" + std::string(181, 'p'));
      picture.meta = cameraMeta();
      picture.gps = kCameraGps;
      picture.iptc = (channels == 4 ? dataset(2, 0, "\0\2"s) : "") + dataset(2, 25, "keyword1");
      picture.xmp = kKept;
      const int tight = picture.stride;
      for (const int stride : {tight, tight + 6, -tight, 0}) {
        picture.setStride(stride);
        expectFile(picture, 5, kKept);
      }
      TempFile file("");
      TempFile copy("");
      picture.write(file.path());
      ASSERT_EQ(std::system(("tiffcp -c none -r 9999 "s + file.path() + " " + copy.path() + " 2>/dev/null").c_str()),
                0);
      EXPECT_NE(copy.bytes().find(stripOf(picture)), std::string::npos);
    }
  }
  for (const char* profile : {"small", "1234567890123456GRAY", "1234567890123456RGB x", "1234567890123456RGb x"}) {
    expectFile({2, 2, 1, 16, 0, profile}, 2);
  }
}

// The result is the number of rows of the last block.
TEST(TiffFile, GoesOutInBlocksOfOneMebibyte) {
  // Width, height, channels, depth, conversion, result.
  const int kRows[][6] = {{100, 50, 3, 8, 0, 50},    {70000, 1, 1, 8, 0, 1},     {1, 65536, 2, 8, 0, 65536},
                          {65535, 1, 3, 8, 0, 1},    {3, 0, 3, 8, 0, 0},         {3, -5, 1, 8, 0, 0},
                          {1000, 349, 3, 8, 0, 349}, {1000, 350, 3, 8, 0, 1},    {1000, 262, 4, 8, 0, 262},
                          {1000, 263, 4, 8, 0, 1},   {1000, 131, 4, 16, 0, 131}, {1000, 132, 4, 16, 0, 1},
                          {1000, 349, 3, 8, 1, 349}, {1000, 350, 3, 8, 1, 1}};
  for (const auto& [width, height, channels, depth, conversion, result] : kRows) {
    expectFile({width, height, channels, depth, conversion}, result);
  }
  for (const int width : {350000, 130000}) {  // one row a block, larger than it, and two
    Picture wide(width, 3, 1, 32);
    wide.setStride(-wide.stride - 4);
    expectFile(wide, 1);
  }
}

std::string generated(int method, const char* lens) {
  std::string text(static_cast<std::size_t>(embed_xmp(0, method, kZeros, *lens, lens, nullptr)), '?');
  embed_xmp(1, method, kZeros, *lens, lens, text.data());
  return text;
}

TEST(TiffFile, HoldsThePacketThatTheRulesChoose) {
  const std::string bare = "<x:xmpmeta xmlns:x='adobe:ns:meta/'/>";
  const std::string large = bare + std::string(900, ' ');
  const std::string lensOnly = generated(0, "EF 50mm");
  const std::string average = generated(14, "") + " ";
  const std::string blanks(large.size() - lensOnly.size(), ' ');
  const std::string nul(1, '\0');
  // Packet given, method, with a lens; packet written.
  std::vector<std::tuple<std::string, int, bool, std::string>> cases = {
      {kKept + nul, 14, true, kKept},
      {kKept, 0, true, kKept},
      {kKept, 14, true, generated(14, "EF 50mm") + " "},
      {kKept, -1, false, kKept.substr(0, kKept.size() - 1)},
      {kKept, -1, true, lensOnly + std::string(kKept.size() - 1 - lensOnly.size(), ' ')},
      {large + nul, 0, false, large},
      {large, 0, false, large},
      {large + nul, 0, true, lensOnly + blanks},
      {large, 0, true, lensOnly + blanks},
      {bare, 0, true, lensOnly},
      {nul, 0, false, ""},
      {nul, 0, true, lensOnly},
      {"", 14, false, average},
      {"", 0, true, lensOnly + " "}};
  for (int method = 1; method <= 15; ++method) {
    const std::string given = generated(method, "") + nul;
    const bool kept = method < 5 || method == 10 || method == 11 || method == 15;
    cases.emplace_back(given, 14, false, kept ? generated(method, "") : average);
  }
  for (const auto& [given, method, lens, written] : cases) {
    Picture picture(2, 2, 3, 8);
    picture.xmp = given;
    picture.method = method;
    if (lens) std::strcpy(picture.meta.lens, "EF 50mm");
    expectFile(picture, 2, written);
  }
}

TEST(TiffFile, IsNotBegunForAnUnsupportedDescription) {
  Picture picture(2, 2, 3, 8);
  TempFile file("untouched");
  // Width, height, channels, depth, conversion. The sizes of two files are small numbers where they
  // wrap at 2^64, and the last one would have one pixel more than 4 GiB - 1 has room for.
  const int kRows[][5] = {{0, 2, 3, 8, 0},
                          {2, 2, 0, 8, 0},
                          {2, 2, 5, 8, 0},
                          {2, 2, 3, 24, 0},
                          {2, 2, 3, 8, 2},
                          {2, 2, 3, 16, 1},
                          {INT_MAX, INT_MAX, 4, 32, 0},
                          {1 << 30, 4, 1, 8, 0},
                          {2147437310, 715843329, 3, 32, 0},
                          {1669354673, 920852050, 3, 32, 0},
                          {1431655700, 3, 1, 8, 0}};
  for (const auto& [width, height, channels, depth, conversion] : kRows) {
    picture.info = {width, height, channels, depth, 300, 0, 0, conversion, {}, 1};
    EXPECT_EQ(picture.write(file.path()), -6) << width << ' ' << channels;
    EXPECT_EQ(file.bytes(), "untouched");
  }
  // Numbers that nothing is refused for: no profile, and 32 bits of the resolution.
  Picture odd(2, 2, 3, 8);
  odd.info.iccLength = -1;
  odd.info.resolution = -1;
  EXPECT_EQ(odd.write(file.path()), 2);
  EXPECT_NE(file.bytes().find(numbers(32, {static_cast<uint32_t>(-1000), 1000})), std::string::npos);

  picture.info.width -= 1;
  EXPECT_EQ(picture.write("/dev/full"), -2);
  testing::internal::CaptureStderr();
  EXPECT_EQ(picture.write("/no/such/%s %d.tif"), -1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "Could not open for writing file:  /no/such/%s %d.tif\n");
}
}  // namespace
