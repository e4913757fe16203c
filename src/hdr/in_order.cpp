// The brightness of shared-exponent pixels, one after the other: the definition.
#include <algorithm>
#include <cmath>

#include "hdr/brightness.h"

namespace lumenforge {

void fillPowers(float* powers) {
  for (int e = 0; e < 256; ++e) powers[e] = std::ldexp(1.0F, e - 128);
}

void addInOrder(const PixelPlanes& pixels, size_t count, size_t rows, const float* powers,
                Brightness& result) {
  float minimum = result.minimum;
  float maximum = 0;
  double sum = result.sum;
  uint64_t counted = 0;
  for (size_t y = 0; y < rows; ++y) {
    const PixelPlanes row = pixels.below(y);
    for (size_t x = 0; x < count; ++x) {
      const uint8_t exponent = row.exponent()[x];
      if (exponent == 0) continue;
      const int m = (kRedWeight * row.red()[x] + kGreenWeight * row.green()[x] +
                     kBlueWeight * row.blue()[x]) >>
                    kWeightBits;
      const float value = static_cast<float>(m) * powers[exponent];
      maximum = std::max(maximum, value);
      if (value > 0) minimum = std::min(minimum, value);
      sum += static_cast<double>(value);
      ++counted;
    }
  }
  result.minimum = minimum;
  result.maximum = std::max(result.maximum, maximum);
  result.sum = sum;
  result.count += counted;
}

float Brightness::mean() const {
  if (count == 0) return 0;
  // The count goes through single precision: hosts compare means with those that they have stored.
  const auto divisor = static_cast<float>(count);
  return static_cast<float>(sum / static_cast<double>(divisor));
}

}  // namespace lumenforge
