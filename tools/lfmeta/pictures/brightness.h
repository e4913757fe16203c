// How bright the pixels of a floating-point picture are.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "pictures/picture.h"

namespace lfmeta {

// Pixels counted by stops: stop n is the brightness from 2^n to below 2^(n + 1).
class StopCounts {
 public:
  static constexpr int kLowest = -149;  // of a float
  static constexpr int kHighest = 127;

  void add(int stop) { ++counts_[static_cast<std::size_t>(stop - kLowest)]; }
  // From the first stop that has pixels to the last; none when no stop has.
  int first() const;
  std::span<const uint64_t> counts() const;

 private:
  std::array<uint64_t, kHighest - kLowest + 1> counts_{};
};

// In the picture's own units. Pixels of brightness 0 or less are black and count for nothing else,
// as do those that are not finite.
struct Brightness {
  int width = 0;
  int height = 0;
  float minimum = 0;  // nothing when all pixels are black
  float maximum = 0;  // 0 when all pixels are black
  float mean = 0;
  uint64_t black = 0;
  uint64_t notFinite = 0;
  StopCounts stops;

  bool isBlack() const { return !(maximum > 0); }
  double range() const;  // from minimum to maximum, in stops
};

// The brightness is (19 red + 183 green + 54 blue) / 256, that of Radiance pictures as hdrMinMax
// has it. Throws std::runtime_error, for a picture of integers, too.
Brightness measureBrightness(const PictureFile& file);

}  // namespace lfmeta
