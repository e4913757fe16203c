// Pixels and records in, whole TIFF files out, byte for byte. The tool's tests have other readers look
// at such files.
#include <gtest/gtest.h>

#include <climits>
#include <tuple>

#include "support/tiff_records.h"

namespace {

using namespace build;

const SettingsParams kZeros{};

// What is to be written, and all that a photograph may say beside its pixels.
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
    setStride(width * pixelSize() / strideUnit());
  }

  bool isFloat() const { return info.bitsPerSample >= 32; }
  int bits() const { return info.bitsPerSample == 3216 ? 16 : info.bitsPerSample; }  // in the file
  int samples() const { return info.channels < 3 ? 1 : 3; }                          // in the file
  int strideUnit() const { return 1 + info.conversion; }
  int sampleSize() const { return bits() / 8 + info.conversion; }
  int pixelSize() const { return info.channels * sampleSize(); }
  const uint8_t* row(int y) const {
    return pixels.data() + (stride < 0 ? y - info.height + 1 : y) * std::ptrdiff_t{stride} * strideUnit();
  }

  // Exactly the memory that rows at this distance take.
  void setStride(int newStride) {
    stride = newStride;
    const int size = std::abs(stride) * strideUnit() * (info.height - 1) + info.width * pixelSize();
    pixels.resize(info.height > 0 ? static_cast<std::size_t>(size) : 0);
    uint32_t noise = 7;
    for (uint8_t& byte : pixels) byte = static_cast<uint8_t>((noise = noise * 1664525 + 1) >> 23);
  }

  // Of each pixel the samples written, of each of these the bytes written.
  std::string strip() const {
    std::string out;
    for (int y = 0; y < info.height; ++y) {
      for (int i = 0; i < info.width * pixelSize(); ++i) {
        const bool kept = i % pixelSize() < samples() * sampleSize() && i % sampleSize() >= info.conversion;
        if (kept) out += static_cast<char>(row(y)[i]);
      }
    }
    return out;
  }

  int write(const char* path) const {
    return buf2tif(row(0), &info, stride, bytesAt(icc), &meta, &gps, static_cast<int>(iptc.size()), bytesAt(iptc),
                   method, kZeros, static_cast<int>(xmp.size()), bytesAt(xmp), path);
  }
};

std::string shortOrLong(int value) { return (value > 65535 ? "l" : "s") + std::to_string(std::max(value, 0)); }

std::string three(int number) { return "3#3'" + numbers(16, std::vector(3, static_cast<uint32_t>(number))) + "'"; }

// Type, count of units and bytes, zeros behind them where the last unit wants them.
std::string blob(const char* type, const std::string& bytes, std::size_t unit = 1) {
  const std::size_t count = (bytes.size() + unit - 1) / unit;
  return type + std::to_string(count) + "'" + bytes + std::string(count * unit - bytes.size(), '\0') + "'";
}

// The whole file, `packet` as it is to be written. A camera's metadata are those of cameraMeta.
std::string fileOf(const Picture& p, const std::string& packet) {
  const std::string strip = p.strip();
  const bool rgb = p.samples() == 3;
  const bool camera = p.meta.model[0] != '\0';
  const std::string height = shortOrLong(p.info.height);
  std::string line = "100=" + shortOrLong(p.info.width) + "; 101=" + height;
  line += "; 102=" + (rgb ? three(p.bits()) : shortOrLong(p.bits())) + "; 103=s1; 106=" + (rgb ? "s2" : "s1");
  if (camera) line += "; 10F='Canon'; 110='Canon EOS 5D'";
  line += std::string("; 111=l8; 112=s6; 115=") + (rgb ? "s3" : "s1") + "; 116=" + height;
  const std::string resolution = std::to_string(static_cast<uint32_t>(p.info.resolution) * 1000) + "/1000";
  line += "; 117=l" + std::to_string(strip.size()) + "; 11C=s1; 11A=" + resolution + "; 11B=" + resolution + "; 128=s2";
  if (p.isFloat()) line += "; 131='Lumenforge Merge To 32-bit HDR'; 153=" + three(3);
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

// The file replaces one that is longer than nothing. Megabytes that differ are told by their place.
void expectFile(const Picture& picture, int result, const std::string& packet = "") {
  const TifImageInfo& info = picture.info;
  SCOPED_TRACE(testing::PrintToString(std::tuple(info.width, info.height, info.channels, info.bitsPerSample)));
  TempFile file(std::string(999, 'x'));
  EXPECT_EQ(picture.write(file.path()), result);
  const std::string bytes = file.bytes();
  const std::string expected = fileOf(picture, packet);
  if (bytes == expected) return;
  const auto place = std::ranges::mismatch(bytes, expected).in1 - bytes.begin();
  ADD_FAILURE() << "differs at " << place << "; " << bytes.size() << " bytes, not " << expected.size();
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
      for (const int stride : {tight + 6, -tight, 0, tight}) {
        picture.setStride(stride);
        expectFile(picture, 5, kKept);
      }
    }
  }
  for (const char* profile : {"small", "1234567890123456GRAY", "1234567890123456RGB x", "1234567890123456RGb x"}) {
    expectFile({2, 2, 1, 16, 0, profile}, 2);
  }
  for (const int resolution : {-1, 4294968}) {  // of which 32 bits count
    Picture picture(2, 2, 3, 8);
    picture.info.resolution = resolution;
    picture.info.iccLength = -1;  // none
    expectFile(picture, 2);
  }
}

TEST(TiffFile, GoesOutInBlocksOfOneMebibyte) {
  const int kCases[][6] = {
      {3, 0, 3, 8, 0, 0},         {65535, 1, 1, 8, 0, 1},     {3, -5, 1, 8, 0, 0},      {70000, 1, 1, 8, 0, 1},
      {1, 65536, 2, 8, 0, 65536}, {1000, 262, 4, 8, 0, 262},  {1000, 263, 4, 8, 0, 1},  {1000, 350, 3, 8, 0, 1},
      {1000, 350, 3, 8, 1, 1},    {1000, 132, 4, 3216, 0, 1}, {1024, 1025, 1, 8, 0, 1},
  };
  for (const auto& [width, height, channels, depth, conversion, lastBlockRows] : kCases) {
    expectFile({width, height, channels, depth, conversion}, lastBlockRows);
  }
  for (const auto& [width, height] : {std::pair{350000, 2}, {130000, 3}}) {  // one row a block, though larger, and two
    Picture wide(width, height, 1, 32);
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
  struct Case {
    std::string given;
    int method;
    const char* lens;
    std::string written;
  };
  const char* lens = "EF 50mm";
  const std::string nul(1, '\0');
  const std::string bare = "<x:xmpmeta xmlns:x='adobe:ns:meta/'/>";
  const std::string large = bare + std::string(900, ' ');
  const std::string forLens = generated(0, lens);
  const auto padded = [](std::string text, std::size_t size) { return text.resize(size, ' '), text; };
  std::vector<Case> cases = {
      // The host's, with settings that are kept, goes without its terminator.
      {kKept + nul, 14, lens, kKept},
      {kKept, 0, lens, kKept},
      // Settings cannot be seen in a packet without terminator, but for method 0.
      {kKept, 14, lens, generated(14, lens) + " "},
      {kKept, -1, "", kKept.substr(0, kKept.size() - 1)},
      {kKept, -1, lens, padded(forLens, kKept.size() - 1)},
      // Without settings it is replaced for a lens, in its place where that suffices.
      {large + nul, 0, "", large},
      {large, 0, "", large},
      {large + nul, 0, lens, padded(forLens, large.size())},
      {large, 0, lens, padded(forLens, large.size())},
      {bare, 0, lens, forLens},
      {nul, 0, "", ""},
      {nul, 0, lens, forLens},
      // None given.
      {"", 1, "", generated(1, "") + " "},
      {"", 214, "", generated(214, "") + " "},
      {"", 0, lens, forLens + " "},
  };
  for (int method = 1; method <= 15; ++method) {
    const std::string given = generated(method, "");
    const bool kept = method < 5 || method == 10 || method == 11 || method == 15;
    cases.push_back({given + nul, 14, "", kept ? given : generated(14, "") + " "});
  }
  for (const Case& c : cases) {
    Picture picture(2, 2, 3, 8);
    picture.xmp = c.given;
    picture.method = c.method;
    std::strcpy(picture.meta.lens, c.lens);
    expectFile(picture, 2, c.written);
  }
}

TEST(TiffFile, IsNotBegunForAnUnsupportedDescription) {
  // The last files would have more than 4 GiB - 1: by one pixel, by far, and 2^64 bytes and a few.
  const int kCases[][5] = {{0, 2, 3, 8, 0},
                           {2, 2, 0, 8, 0},
                           {2, 2, 5, 8, 0},
                           {2, 2, 3, 24, 0},
                           {2, 2, 3, 8, 2},
                           {2, 2, 3, 16, 1},
                           {1431655700, 3, 1, 8, 0},
                           {1 << 30, 4, 1, 8, 0},
                           {INT_MAX, INT_MAX, 4, 32, 0},
                           {1669354673, 920852050, 3, 32, 0}};
  Picture picture(2, 2, 3, 8);
  TempFile file("untouched");
  for (const auto& [width, height, channels, depth, conversion] : kCases) {
    picture.info = {width, height, channels, depth, 300, 0, 0, conversion, {}, 1};
    EXPECT_EQ(picture.write(file.path()), -6) << width << ' ' << channels;
    EXPECT_EQ(file.bytes(), "untouched");
  }
  // The largest file that there may be is begun; on a full disk this fails at once.
  picture.info = {1431655699, 3, 1, 8, 300, 0, 0, 0, {}, 1};
  EXPECT_EQ(picture.write("/dev/full"), -2);
  testing::internal::CaptureStderr();
  EXPECT_EQ(picture.write("/no/such/%s %d.tif"), -1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "Could not open for writing file:  /no/such/%s %d.tif\n");
}

}  // namespace
