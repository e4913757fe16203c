// Pixels and records in, whole TIFF files out: byte for byte, stage by stage, and in the eyes of
// other readers.
#include <gtest/gtest.h>

#include <climits>
#include <deque>
#include <tuple>

#include "LumenforgeMetaLib.h"
#include "support/tiff_records.h"

namespace {

using namespace build;

struct Picture {
  TifImageInfo info;
  std::string icc, iptc, xmp;
  int method = 0;
  MetadataBuf meta{};
  GpsBuf gps{};
  int stride = 0;
  int firstRow = 0;
  std::vector<uint8_t> pixels;

  Picture(int width, int height, int channels, int depth, int conversion = 0)
      : info{width, height, channels, depth, 300, 0, 0, conversion, {}, 6} {
    setStride(width * channels * sampleSize() / unit());
  }

  int unit() const { return 1 + info.conversion; }  // bytes that the stride counts in
  int bits() const { return info.bitsPerSample == 3216 ? 16 : info.bitsPerSample; }
  int sampleSize() const { return bits() / 8 + info.conversion; }
  int samples() const { return info.channels < 3 ? 1 : 3; }
  bool isFloat() const { return info.bitsPerSample >= 32; }

  // Exactly the memory that rows at this distance take.
  void setStride(int newStride) {
    stride = newStride;
    const int distance = std::abs(stride) * unit() * std::max(info.height - 1, 0);
    const int row = info.height > 0 ? info.width * info.channels * sampleSize() : 0;
    firstRow = stride < 0 ? distance : 0;
    pixels.resize(static_cast<std::size_t>(distance + row));
    uint32_t noise = 7;
    for (uint8_t& byte : pixels) byte = static_cast<uint8_t>((noise = noise * 1664525 + 1) >> 23);
  }

  int write(const std::string& path) const {
    const SettingsParams settings{};
    return buf2tif(pixels.data() + firstRow, &info, stride, bytesAt(icc), &meta, &gps, static_cast<int>(iptc.size()),
                   bytesAt(iptc), method, settings, static_cast<int>(xmp.size()), bytesAt(xmp), path.c_str());
  }
};

std::string pixelsOf(const Picture& p) {
  std::string out;
  for (int y = 0; y < p.info.height; ++y) {
    const uint8_t* pixel = p.pixels.data() + p.firstRow + std::ptrdiff_t{y} * p.stride * p.unit();
    for (int x = 0; x < p.info.width; ++x, pixel += p.info.channels * p.sampleSize()) {
      for (int i = 0; i < p.samples() * p.sampleSize(); ++i) {
        if (i % p.sampleSize() >= p.info.conversion) out += static_cast<char>(pixel[i]);
      }
    }
  }
  return out;
}

Entry number(uint16_t tag, int value) {
  const auto word = static_cast<uint32_t>(std::max(value, 0));
  return word > 65535 ? kTiff.longEntry(tag, word) : kTiff.shortEntry(tag, word);
}

Entry blob(uint16_t tag, uint16_t type, const std::string& bytes, uint32_t unit = 1) {
  const auto count = (static_cast<uint32_t>(bytes.size()) + unit - 1) / unit;
  return {tag, type, count, bytes + std::string(count * unit - bytes.size(), '\0')};
}

// With everything that the picture holds, `packet` as it is to be written.
std::string fileOf(const Picture& p, const std::string& packet) {
  const std::string strip = pixelsOf(p);
  const auto bits = static_cast<uint32_t>(p.bits());
  const bool rgb = p.samples() == 3;
  const bool camera = p.meta.model[0] != '\0';
  std::vector<Entry> entries = {number(0x100, p.info.width), number(0x101, p.info.height)};
  const auto add = [&](bool present, const std::vector<Entry>& more) {
    if (present) entries.insert(entries.end(), more.begin(), more.end());
  };
  add(!rgb, {number(0x102, p.bits())});
  add(rgb, {blob(0x102, 3, numbers(16, {bits, bits, bits}), 2)});
  add(true, {number(0x103, 1), number(0x106, rgb ? 2 : 1)});
  add(camera, {Tiff::text(0x10F, "Canon"), Tiff::text(0x110, "Canon EOS 5D")});
  add(true, {kTiff.longEntry(0x111, 8), number(0x112, 6), number(0x115, p.samples())});
  add(true, {number(0x116, p.info.height), kTiff.longEntry(0x117, strip.size())});
  add(true, {number(0x11C, 1), fractions(0x11A, {300000, 1000}), fractions(0x11B, {300000, 1000})});
  add(true, {number(0x128, 2)});
  add(p.isFloat(), {Tiff::text(0x131, "Lumenforge Merge To 32-bit HDR")});
  add(p.isFloat(), {blob(0x153, 3, numbers(16, {3, 3, 3}), 2)});
  add(!p.icc.empty() && (p.icc.size() < 21 || p.icc[18] == 'B'), {blob(0x8773, 7, p.icc)});
  add(!packet.empty(), {blob(0x2BC, 1, packet)});
  add(!p.iptc.empty(), {blob(0x83BB, 4, p.iptc, 4)});
  add(camera, {kTiff.longEntry(0x8769, 0), kTiff.longEntry(0x8825, 0)});
  const uint64_t at = 8 + strip.size();
  std::string file = kTiff.header(at) + strip;
  if (!camera) return file + kTiff.directory(at, entries);
  const uint64_t exifAt = at + kTiff.directory(at, entries).size();
  const std::string exif = kTiff.directory(exifAt, kExif);
  entries.end()[-2] = kTiff.longEntry(0x8769, exifAt);
  entries.back() = kTiff.longEntry(0x8825, exifAt + exif.size());
  return file + kTiff.directory(at, entries) + exif + kTiff.directory(exifAt + exif.size(), kGps);
}

void expectFile(const Picture& picture, int result, const std::string& packet) {
  TempFile file("something that is longer than nothing");
  EXPECT_EQ(picture.write(file.path()), result);
  EXPECT_EQ(file.bytes(), fileOf(picture, packet))
      << picture.info.channels << ' ' << picture.info.bitsPerSample << ' ' << picture.stride;
}

void setProfile(Picture& picture, const std::string& profile) {
  picture.icc = profile;
  picture.info.iccLength = static_cast<int>(profile.size());
}

const std::string kKept = packet("Fusion/Intensive", "Old lens");

// Every kind of picture that there is, with everything that a photograph may say.
std::vector<Picture> everyKind() {
  std::vector<Picture> all;
  for (const auto& [depth, conversion] : {std::pair{8, 0}, {16, 0}, {32, 0}, {3216, 0}, {8, 1}}) {
    for (int channels = 1; channels <= 4; ++channels) {
      Picture& picture = all.emplace_back(37, 5, channels, depth, conversion);
      picture.meta = cameraMeta();
      picture.gps = kCameraGps;
      setProfile(picture, std::string(16, 'p') + "RGB" + std::string(181, 'p'));
      picture.iptc = (channels == 4 ? dataset(2, 0, "\0\2"s) : "") + dataset(2, 25, "keyword1");
      picture.xmp = kKept;
    }
  }
  return all;
}

TEST(TiffFile, HoldsEveryKindByteForByte) {
  for (Picture& picture : everyKind()) {
    const int tight = picture.stride;
    for (const int stride : {tight, tight + 6, -tight, 0}) {
      picture.setStride(stride);
      expectFile(picture, 5, kKept);
    }
  }
  const int kSizes[][3] = {{100, 50, 3}, {70000, 1, 1}, {1, 65536, 2}, {65535, 1, 3}, {3, 0, 3}, {3, -5, 1}};
  for (const auto& [width, height, channels] : kSizes) {
    expectFile({width, height, channels, 8}, std::max(height, 0), "");
  }
  for (const char* profile : {"small", "1234567890123456GRAY", "1234567890123456RGB x", "1234567890123456RGb x"}) {
    Picture picture(2, 2, 1, 16);
    setProfile(picture, profile);
    expectFile(picture, 2, "");
  }
}

// The result is the number of rows of the last block.
TEST(TiffFile, GoesOutInBlocksOfOneMebibyte) {
  // Channels, depth, conversion; rows of a block of 1,000 pixels each.
  const int kCases[][4] = {{3, 8, 0, 349}, {4, 8, 0, 262}, {4, 16, 0, 131}, {3, 8, 1, 349}};
  for (const auto& [channels, depth, conversion, rows] : kCases) {
    expectFile({1000, rows, channels, depth, conversion}, rows, "");
    expectFile({1000, rows + 1, channels, depth, conversion}, 1, "");
  }
  Picture wide(350000, 2, 1, 32);  // a row is larger than a block
  wide.setStride(-wide.stride - 4);
  expectFile(wide, 1, "");
}

std::string generated(int method, const char* lens) {
  const SettingsParams zeros{};
  std::string text(static_cast<std::size_t>(embed_xmp(0, method, zeros, *lens, lens, nullptr)), '?');
  embed_xmp(1, method, zeros, *lens, lens, text.data());
  return text;
}

TEST(TiffFile, HoldsThePacketThatTheRulesChoose) {
  const std::string none = "<x:xmpmeta xmlns:x='adobe:ns:meta/'/>";
  const std::string large = none + std::string(900, ' ');
  const std::string two = packet("Fusion/2 images", "");
  const std::string lensOnly = generated(0, "EF 50mm");
  const std::string average = generated(14, "");
  const std::string both = generated(14, "EF 50mm");
  const std::string blanks(large.size() - lensOnly.size() - 1, ' ');
  const std::string nul(1, '\0');
  // Packet given, method, with a lens; packet written.
  const std::tuple<std::string, int, bool, std::string> kCases[] = {
      {kKept + nul, 2, false, kKept},
      {kKept + nul, 14, true, kKept},
      {kKept, 0, true, kKept},
      {kKept, 14, true, both + " "},
      {kKept, -1, false, kKept.substr(0, kKept.size() - 1)},
      {two + nul, 0, false, two},
      {two, 0, false, two},
      {two + nul, 14, false, average + " "},
      {large + nul, 0, true, lensOnly + blanks + " "},
      {large, 0, true, lensOnly + blanks + " "},
      {kKept, -1, true, lensOnly + std::string(kKept.size() - 1 - lensOnly.size(), ' ')},
      {none, 0, true, lensOnly},
      {nul, 0, false, ""},
      {nul, 0, true, lensOnly},
      {"", -3, false, ""},
      {"", 14, false, average + " "},
      {"", 0, true, lensOnly + " "}};
  for (const auto& [given, method, lens, written] : kCases) {
    Picture picture(2, 2, 3, 8);
    picture.xmp = given;
    picture.method = method;
    if (lens) std::strcpy(picture.meta.lens, "EF 50mm");
    expectFile(picture, 2, written);
  }
}

TEST(TiffFile, IsNotBegunForAnUnsupportedDescription) {
  TempFile file("untouched");
  // Width, height, channels, depth, resolution, profile size, conversion. The last file would have
  // one pixel more than 4 GiB - 1 has room for.
  const int kRows[][7] = {{0, 2, 3, 8, 300, 0, 0},       {2, 2, 0, 8, 300, 0, 0},
                          {2, 2, 5, 8, 300, 0, 0},       {2, 2, 3, 24, 300, 0, 0},
                          {2, 2, 3, 8, -1, 0, 0},        {2, 2, 3, 8, 4294968, 0, 0},
                          {2, 2, 3, 8, 300, -1, 0},      {2, 2, 3, 8, 300, 0, 2},
                          {2, 2, 3, 16, 300, 0, 1},      {INT_MAX, INT_MAX, 4, 32, 300, 0, 0},
                          {1 << 30, 4, 1, 8, 300, 0, 0}, {1431655700, 3, 1, 8, 300, 0, 0}};
  for (const auto& [width, height, channels, depth, resolution, size, conversion] : kRows) {
    Picture picture(2, 2, 3, 8);
    picture.info = {width, height, channels, depth, resolution, 0, size, conversion, {}, 1};
    EXPECT_EQ(picture.write(file.path()), -6) << width << ' ' << channels;
    EXPECT_EQ(file.bytes(), "untouched");
  }
}

TEST(TiffFile, TellsWhichStageFailed) {
  Picture picture(100, 50, 3, 8);
  EXPECT_EQ(picture.write("/dev/full"), -2);
  testing::internal::CaptureStderr();
  EXPECT_EQ(picture.write("/no/such/%s %d.tif"), -1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "Could not open for writing file:  /no/such/%s %d.tif\n");
  picture.info = {1431655699, 3, 1, 8, 300, 0, 0, 0, {}, 1};  // the largest file
  EXPECT_EQ(picture.write("/dev/full"), -2);
}

std::string outputOf(const std::string& command) {
  std::FILE* pipe = ::popen((command + " 2>&1").c_str(), "r");
  std::string output(65536, '\0');
  output.resize(std::fread(output.data(), 1, output.size(), pipe));
  EXPECT_EQ(::pclose(pipe), 0) << command << output;
  return output;
}

TEST(TiffFile, IsReadByOtherReaders) {
  std::string command =
      "exiftool -n -T -ImageWidth -ImageHeight -BitsPerSample -SampleFormat -Compression"
      " -PhotometricInterpretation -SamplesPerPixel -PlanarConfiguration -Make -Model"
      " -IFD0:Orientation -XResolution -YResolution -ResolutionUnit -Software -XMP:Lens"
      " -IPTC:Keywords -FNumber -ISO -DateTimeOriginal -FocalLength -GPSVersionID -GPSLatitudeRef"
      " -GPS:GPSLatitude -GPSLongitudeRef -GPS:GPSLongitude -GPS:GPSAltitude -GPSTimeStamp"
      " -GPSDateStamp";
  std::string expected;
  std::deque<TempFile> files;
  for (Picture& picture : everyKind()) {
    const std::string path = files.emplace_back("").path();
    ASSERT_EQ(picture.write(path), 5);
    command += " " + path;
    const std::string bits = std::to_string(picture.bits());
    expected += "37\t5\t" + (picture.samples() == 3 ? bits + " " + bits + " " + bits : bits) +
                (picture.isFloat() ? "\t3 3 3\t1" : "\t-\t1") + (picture.samples() == 3 ? "\t2\t3\t1" : "\t1\t1\t1") +
                "\tCanon\tCanon EOS 5D\t6\t300\t300\t2\t" +
                (picture.isFloat() ? "Lumenforge Merge To 32-bit HDR" : "-") +
                "\tOld lens\tkeyword1\t5.59\t4464\t2023:05:06 07:08:09\t50\t2 2 0 0\tN\t48\tE"
                "\t11.5824388888889\t519\t12:00:00\t2023:05:06\n";
    TempFile copy("");
    outputOf("tiffcp -c none -r 9999 " + path + " " + copy.path());
    const std::string bytes = copy.bytes();
    EXPECT_NE(bytes.find(pixelsOf(picture)), std::string::npos);
    EXPECT_NE(bytes.find(picture.icc), std::string::npos);
  }
  EXPECT_EQ(outputOf(command), expected);
}
}  // namespace
