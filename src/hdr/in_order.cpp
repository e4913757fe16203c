// The brightness of shared-exponent pixels, one after the other: the definition.
#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "hdr/brightness.h"

namespace lumenforge {

void fillPowers(double* powers) {
  for (int e = 0; e < 256; ++e) powers[e] = std::ldexp(1.0, e - 128);
}

void addInOrder(const PixelPlanes& pixels, std::size_t count, std::size_t rows,
                const double* powers, Brightness& result) {
  double minimum = result.minimum;
  double maximum = 0;
  double sum = result.sum;
  uint64_t counted = 0;
  for (std::size_t y = 0; y < rows; ++y) {
    const PixelPlanes row = pixels.below(y);
    for (std::size_t x = 0; x < count; ++x) {
      const uint8_t exponent = row.exponent()[x];
      if (exponent == 0) continue;
      const int m = (kRedWeight * row.red()[x] + kGreenWeight * row.green()[x] +
                     kBlueWeight * row.blue()[x]) >>
                    kWeightBits;
      const double value = m * powers[exponent];
      maximum = std::max(maximum, value);
      if (value > 0) minimum = std::min(minimum, value);
      sum += value;
      ++counted;
    }
  }
  // A brightness is a number of single precision: one beyond its range is infinite, and so is every
  // sum that it is part of.
  constexpr double kLargest = std::numeric_limits<float>::max();
  if (maximum > kLargest) maximum = sum = std::numeric_limits<double>::infinity();
  result.minimum = minimum;
  result.maximum = std::max(result.maximum, maximum);
  result.sum = sum;
  result.count += counted;
}

double Brightness::mean() const {
  if (count == 0) return 0;
  // The count goes through single precision: hosts compare means with those that they have stored.
  return sum / static_cast<double>(static_cast<float>(count));
}

float toFloat(double value) {
  constexpr double kSmallestNormal = std::numeric_limits<float>::min();
  if (value >= kSmallestNormal) return static_cast<float>(value);
  // A subnormal float is a multiple of 2^-149, and its bits are the factor.
  return std::bit_cast<float>(static_cast<uint32_t>(std::lrint(value * 0x1p149)));
}

}  // namespace lumenforge
