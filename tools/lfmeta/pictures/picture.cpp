#include "pictures/picture.h"

#include <array>
#include <limits>
#include <stdexcept>
#include <string_view>

#include "base/failure.h"

namespace lfmeta {

namespace {

using namespace std::string_view_literals;

struct Format {
  std::string_view signature;
  Image (*decode)(std::span<const unsigned char>);
};

constexpr std::array kFormats{
    Format{"\x89PNG\r\n\x1A\n"sv, decodePng},
    Format{"\xFF\xD8\xFF"sv, decodeJpeg},
    Format{"P2"sv, decodeNetpbm},
    Format{"P3"sv, decodeNetpbm},
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

void allocatePixels(Image& image, uint64_t width, uint64_t height, int channels, Sample sample) {
  constexpr uint64_t kLargestSide = std::numeric_limits<int>::max();
  constexpr uint64_t kLargestFile = std::numeric_limits<uint32_t>::max();
  if (width < 1 || height < 1) throw std::runtime_error("has no pixels");
  const uint64_t pixelSize = static_cast<uint64_t>(channels) * sizeOf(sample);
  if (width > kLargestSide / pixelSize || height > kLargestSide ||
      height > kLargestFile / (width * pixelSize)) {
    throw std::runtime_error("is larger than a TIFF file can be");
  }
  image.width = static_cast<int>(width);
  image.height = static_cast<int>(height);
  image.channels = channels;
  image.sample = sample;
  image.pixels = std::make_unique_for_overwrite<unsigned char[]>(width * height * pixelSize);
}

Image decodeImage(const std::string& path) {
  const Bytes file = readWholeFile(path);
  const std::string_view start(reinterpret_cast<const char*>(file.data()), file.size());
  for (const Format& format : kFormats) {
    if (start.starts_with(format.signature)) {
      try {
        return format.decode(file);
      } catch (const std::runtime_error& error) {
        throw Failure(path, error.what());
      }
    }
  }
  throw Failure(path, "is no PNG, JPEG, PNM, PAM, PFM or Radiance picture");
}

}  // namespace lfmeta
