// The brightness of shared-exponent pixels, one after the other: the definition.
#include <cmath>

#include "hdr/brightness.h"

namespace lumenforge {

void fillPowers(float* powers) {
  for (int e = 0; e < 256; ++e) powers[e] = std::ldexp(1.0F, e - 128);
}

void addInOrder(const PixelPlanes& pixels, size_t count, const float* powers, Brightness& result) {
  Brightness b = result;
  for (size_t x = 0; x < count; ++x) {
    if (pixels.exponent[x] == 0) continue;
    const int m = (kRedWeight * pixels.red[x] + kGreenWeight * pixels.green[x] +
                   kBlueWeight * pixels.blue[x]) >>
                  kWeightBits;
    const float value = static_cast<float>(m) * powers[pixels.exponent[x]];
    if (value > b.maximum) b.maximum = value;
    if (value > 0 && value < b.minimum) b.minimum = value;
    b.sum += static_cast<double>(value);
    ++b.count;
  }
  result = b;
}

float Brightness::mean() const {
  if (count == 0) return 0;
  // The count goes through single precision: hosts compare means with those that they have stored.
  const auto divisor = static_cast<float>(count);
  return static_cast<float>(sum / static_cast<double>(divisor));
}

}  // namespace lumenforge
