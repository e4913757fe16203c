#include "pictures/brightness.h"

#include <LumenforgeMetaLib.h>

#include <algorithm>
#include <cmath>
#include <new>
#include <stdexcept>
#include <vector>

#include "pictures/radiance.h"
#include "pictures/sample_depth.h"

namespace lfmeta {

namespace {

constexpr std::array kWeights{19, 183, 54};  // of 256, of red, green and blue

Brightness measureRadiance(const PictureFile& file) {
  // The library's brightness counts mantissas as integers, a picture's counts them as 256ths.
  constexpr float kMantissaUnit = 1.0F / 256;
  constexpr int kExponentOfOne = 128 + 8;
  const Image planes = readRadiancePlanes(file);
  std::array<float, 3> result{};
  if (hdrMinMax(planes.width, planes.height, planes.pixels.get(), result.data()) < 0) {
    throw std::bad_alloc();
  }
  Brightness found;
  found.width = planes.width;
  found.height = planes.height;
  found.maximum = result[1] * kMantissaUnit;
  if (!found.isBlack()) found.minimum = result[0] * kMantissaUnit;
  found.mean = result[2] * kMantissaUnit;

  const auto width = static_cast<std::size_t>(planes.width);
  for (int y = 0; y < planes.height; ++y) {
    const unsigned char* row = planes.row(y);
    for (std::size_t x = 0; x < width; ++x) {
      int mantissa = 0;
      for (std::size_t c = 0; c < 3; ++c) mantissa += kWeights[c] * row[c * width + x];
      mantissa >>= 8;
      const int exponent = row[3 * width + x];
      if (exponent == 0 || mantissa == 0) {
        ++found.black;
      } else {
        found.stops.add(std::ilogb(static_cast<float>(mantissa)) + exponent - kExponentOfOne);
      }
    }
  }
  return found;
}

double brightnessOf(const float* pixel, int channels) {
  if (channels == 1) return static_cast<double>(*pixel);
  double sum = 0;
  for (std::size_t c = 0; c < 3; ++c) sum += kWeights[c] * static_cast<double>(pixel[c]);
  return sum / 256;
}

Brightness measureFloats(const Image& image) {
  Brightness found;
  found.width = image.width;
  found.height = image.height;
  found.minimum = HUGE_VALF;
  double sum = 0;
  uint64_t counted = 0;
  const auto channels = static_cast<std::size_t>(image.channels);
  std::vector<float> row(static_cast<std::size_t>(image.width) * channels);
  for (int y = 0; y < image.height; ++y) {
    floatsOfRow(image, y, row);
    for (std::size_t i = 0; i < row.size(); i += channels) {
      const auto brightness = static_cast<float>(brightnessOf(&row[i], image.channels));
      if (!std::isfinite(brightness)) {
        ++found.notFinite;
      } else if (!(brightness > 0)) {
        ++found.black;
      } else {
        found.minimum = std::min(found.minimum, brightness);
        found.maximum = std::max(found.maximum, brightness);
        sum += static_cast<double>(brightness);
        ++counted;
        found.stops.add(std::ilogb(brightness));
      }
    }
  }
  if (counted > 0) found.mean = static_cast<float>(sum / static_cast<double>(counted));
  return found;
}

}  // namespace

int StopCounts::first() const {
  const auto found = std::find_if(counts_.begin(), counts_.end(), [](uint64_t n) { return n > 0; });
  return kLowest + static_cast<int>(found - counts_.begin());
}

std::span<const uint64_t> StopCounts::counts() const {
  const auto start = static_cast<std::size_t>(first() - kLowest);
  std::size_t end = counts_.size();
  while (end > start && counts_[end - 1] == 0) --end;
  return std::span(counts_).subspan(start, end - start);
}

double Brightness::range() const {
  return std::log2(static_cast<double>(maximum) / static_cast<double>(minimum));
}

Brightness measureBrightness(const PictureFile& file) {
  if (isRadiance(file)) return measureRadiance(file);
  const Image image = decodePicture(file);
  if (image.sample != Sample::half && image.sample != Sample::float32) {
    throw std::runtime_error(
        "has integers for samples, whose brightness depends on a tone curve; hdr measures "
        "floating-point pictures");
  }
  return measureFloats(image);
}

}  // namespace lfmeta
