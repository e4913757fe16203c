// An image of shared-exponent pixels -> smallest, largest and mean brightness, with the bits of the
// loop that adds pixel by pixel in double precision, at about the speed of memory.
//
// Smallest and largest do not depend on the order of pixels; a rounded sum does. But where every
// number added, and the sum so far, is a multiple of one power of two, and the sum stays below 2^53
// times that power, no addition rounds, and any order gives the same sum. A stretch of pixels is
// therefore measured in integers, and its sum accepted where this holds; otherwise its pixels are
// added in order.
#include <algorithm>
#include <bit>

#include "LumenforgeMetaLib.h"
#include "base/zeroed.h"
#include "hdr/brightness.h"

namespace lumenforge {
namespace {

// With fewer the vector code gains little, and loses where exponents are wild.
constexpr std::size_t kFewestBlockPixels = 3 * kBlockPixels;

// Below this many times a power of two, each multiple of that power is a double.
constexpr double kExactMultiples = 0x1p53;

// The value of the lowest bit set; 0 and infinity are their own.
double lowestBit(double value) {
  constexpr uint64_t kMantissa = (uint64_t{1} << 52) - 1;
  const auto bits = std::bit_cast<uint64_t>(value);
  if ((bits & kMantissa) == 0) return value;
  return value - std::bit_cast<double>(bits & (bits - 1));
}

int baseOf(const ExponentRange& range) {
  return std::min(range.lowest, kMaxBase);
}

// Whether exponents of this range may be worth measuring as integers: once the sum has outgrown
// their unit, it stays so.
bool mayFit(const ExponentRange& range, const double* powers, double sum) {
  const int base = baseOf(range);
  return range.highest - base <= kMaxShift && sum < kExactMultiples * powers[base];
}

// Adds blocks of pixels as integers. False, and nothing added, where that might round.
bool addBlocks(const PixelPlanes& pixels, std::size_t count, const double* powers,
               BlockTotalsFunction blockTotals, Brightness& result) {
  // A look at the first block spares the rest where exponents are wild.
  if (!mayFit(exponentRange(pixels.exponent(), kBlockPixels), powers, result.sum)) return false;
  const ExponentRange range = exponentRange(pixels.exponent(), count);
  if (range.zeros == count) return true;
  if (!mayFit(range, powers, result.sum)) return false;

  const int base = baseOf(range);
  const double unit = powers[base];
  const BlockTotals totals = blockTotals(pixels, count, base);
  const double sum = result.sum + static_cast<double>(totals.sum) * unit;
  const double grain = result.sum > 0 ? std::min(unit, lowestBit(result.sum)) : unit;
  if (!(sum < kExactMultiples * grain)) return false;

  result.sum = sum;
  result.count += count - range.zeros;
  result.maximum = std::max(result.maximum, totals.largest * unit);
  if (totals.smallest > 0) result.minimum = std::min(result.minimum, totals.smallest * unit);
  return true;
}

void addStretch(const PixelPlanes& pixels, std::size_t count, const double* powers,
                BlockTotalsFunction blockTotals, Brightness& result) {
  std::size_t done = count - count % kBlockPixels;
  if (done < kFewestBlockPixels || !addBlocks(pixels, done, powers, blockTotals, result)) done = 0;
  if (done < count) addInOrder(pixels.from(done), count - done, 1, powers, result);
}

}  // namespace

BlockTotalsFunction chooseBlockTotals() {
  return __builtin_cpu_supports("avx2") ? blockTotalsAvx2 : blockTotalsSse2;
}

Brightness measureImage(int width, int height, const uint8_t* data, const double* powers,
                        BlockTotalsFunction blockTotals) {
  Brightness result;
  if (width <= 0 || height <= 0) return result;
  const PixelPlanes pixels = {data, static_cast<std::size_t>(width)};
  const auto rows = static_cast<std::size_t>(height);
  if (pixels.width < kFewestBlockPixels) {
    addInOrder(pixels, pixels.width, rows, powers, result);
    return result;
  }
  for (std::size_t y = 0; y < rows; ++y) {
    const PixelPlanes row = pixels.below(y);
    for (std::size_t x = 0; x < row.width; x += kStretchPixels) {
      addStretch(row.from(x), std::min(kStretchPixels, row.width - x), powers, blockTotals, result);
    }
  }
  return result;
}

}  // namespace lumenforge

int hdrMinMax(int width, int height, const unsigned char* data, float* result) {
  using namespace lumenforge;
  const ZeroedBuffer table = allocateZeroed(256 * sizeof(double));
  if (table == nullptr) return LUMENFORGE_NO_MEMORY;
  auto* powers = reinterpret_cast<double*>(table.get());
  fillPowers(powers);

  const Brightness brightness = measureImage(width, height, data, powers, chooseBlockTotals());
  result[0] = toFloat(brightness.minimum);
  result[1] = toFloat(brightness.maximum);
  result[2] = toFloat(brightness.mean());
  return std::max(height, 0);
}
