#include "pictures/picture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <new>
#include <stdexcept>
#include <string_view>

#include "base/failure.h"
#include "base/input_file.h"

namespace lfmeta {

namespace {

using namespace std::string_view_literals;

struct Format {
  std::string_view signature;
  Image (*decode)(const PictureFile&);
};

constexpr std::array kFormats{
    Format{"\x89PNG\r\n\x1A\n"sv, decodePng},
    Format{"\xFF\xD8\xFF"sv, decodeJpeg},
    Format{"II*\0"sv, decodeTiff},
    Format{"MM\0*"sv, decodeTiff},
    Format{"II+\0"sv, decodeTiff},
    Format{"MM\0+"sv, decodeTiff},
    Format{"v/1\x01"sv, decodeOpenExr},
    Format{"P1"sv, decodeNetpbm},
    Format{"P2"sv, decodeNetpbm},
    Format{"P3"sv, decodeNetpbm},
    Format{"P4"sv, decodeNetpbm},
    Format{"P5"sv, decodeNetpbm},
    Format{"P6"sv, decodeNetpbm},
    Format{"P7\n"sv, decodeNetpbm},
    Format{"Pf"sv, decodePfm},
    Format{"PF"sv, decodePfm},
    Format{"#?"sv, decodeRadiance},
};

}  // namespace

std::size_t sizeOf(Sample sample) {
  constexpr std::array<std::size_t, 4> kSizes{1, 2, 2, 4};
  return kSizes[static_cast<std::size_t>(sample)];
}

std::size_t Image::rowSize() const {
  return static_cast<std::size_t>(width) * static_cast<std::size_t>(channels) * sizeOf(sample);
}

std::size_t Image::sampleCount() const {
  return static_cast<std::size_t>(width) * static_cast<std::size_t>(channels) *
         static_cast<std::size_t>(height);
}

uint64_t memoryFor(uint64_t fileSize, std::optional<uint64_t> asked) {
  constexpr uint64_t kAlwaysAllowed = uint64_t{64} << 20;
  constexpr uint64_t kBestRatio =
      1032;  // of deflate, the tightest of what pictures are packed with
  constexpr uint64_t kMostEver = uint64_t{1} << 40;
  if (asked) return std::min(*asked, kMostEver);
  return std::clamp(std::min(fileSize, kUsualMemory) * kBestRatio, kAlwaysAllowed, kUsualMemory);
}

void requireMemory(uint64_t needed, uint64_t allowed) {
  constexpr uint64_t kMebi = uint64_t{1} << 20;
  if (needed <= allowed) return;
  throw std::runtime_error("needs " + std::to_string((needed - 1) / kMebi + 1) +
                           " MiB for its pixels, and " +
                           (allowed < kMebi ? "less than 1" : std::to_string(allowed / kMebi)) +
                           " MiB are allowed for this file; --max-memory allows more");
}

void allocatePixels(const PictureFile& file, Image& image, uint64_t width, uint64_t height,
                    int channels, Sample sample) {
  constexpr uint64_t kLargest = std::numeric_limits<int>::max();
  if (width < 1 || height < 1) throw std::runtime_error("has no pixels");
  const uint64_t pixelSize = static_cast<uint64_t>(channels) * sizeOf(sample);
  if (width > kLargest / pixelSize || height > kLargest) {
    throw std::runtime_error("is larger than a TIFF file can be");
  }
  const uint64_t size = width * pixelSize * height;  // less than 2^62
  requireMemory(size, file.memory);
  image.width = static_cast<int>(width);
  image.height = static_cast<int>(height);
  image.channels = channels;
  image.sample = sample;
  image.pixels.reset(static_cast<unsigned char*>(std::malloc(size)));
  if (!image.pixels) throw std::bad_alloc();
}

int resolutionFrom(double pixelsPerInch) {
  constexpr double kHighest = 1e6;
  return pixelsPerInch >= 0.5 && pixelsPerInch <= kHighest
             ? static_cast<int>(std::lround(pixelsPerInch))
             : 0;
}

Image decodePicture(const PictureFile& file) {
  std::array<char, 8> bytes{};
  const std::size_t count = std::fread(bytes.data(), 1, bytes.size(), file.stream);
  const std::string_view start(bytes.data(), count);
  std::rewind(file.stream);
  for (const Format& format : kFormats) {
    if (start.starts_with(format.signature)) return format.decode(file);
  }
  throw std::runtime_error("is no PNG, JPEG, TIFF, OpenEXR, PNM, PAM, PFM or Radiance picture");
}

Image decodeImage(const std::string& path, std::optional<uint64_t> memoryAsked) {
  const InputFile file(path);
  try {
    return decodePicture({file.stream(), file.size(), memoryFor(file.size(), memoryAsked)});
  } catch (const std::runtime_error& error) {
    throw Failure(path, error.what());
  }
}

}  // namespace lfmeta
