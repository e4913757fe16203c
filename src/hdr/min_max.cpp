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
#include "base/result.h"
#include "base/zeroed.h"
#include "hdr/brightness.h"

namespace lumenforge {
namespace {

// With fewer the vector code is no faster.
constexpr size_t kFewestBlockPixels = 2 * kBlockPixels;

// The sums below this many times a power of two can have that power as their lowest bit.
constexpr double kExactMultiples = 0x1p53;

// The value of the lowest bit set; 0 and infinity are their own.
double lowestBit(double value) {
  constexpr uint64_t kMantissa = (uint64_t{1} << 52) - 1;
  const auto bits = std::bit_cast<uint64_t>(value);
  if ((bits & kMantissa) == 0) return value;
  return value - std::bit_cast<double>(bits & (bits - 1));
}

// Adds blocks of pixels as integers. False, and nothing added, where that might round.
bool addBlocks(const PixelPlanes& pixels, size_t count, const float* powers,
               BlockTotalsFunction blockTotals, Brightness& result) {
  const ExponentRange range = exponentRange(pixels.exponent, count);
  if (range.zeros == count) return true;
  const int base = std::min(range.lowest, kMaxBase);
  const auto unit = static_cast<double>(powers[base]);
  // The sum's size is looked at before, too: once it has outgrown the unit it stays so.
  if (range.highest - base > kMaxShift || !(result.sum < kExactMultiples * unit)) return false;

  const BlockTotals totals = blockTotals(pixels, count, base);
  const double sum = result.sum + static_cast<double>(totals.sum) * unit;
  const double grain = result.sum > 0 ? std::min(unit, lowestBit(result.sum)) : unit;
  if (!(sum < kExactMultiples * grain)) return false;

  result.sum = sum;
  result.count += count - range.zeros;
  result.maximum =
      std::max(result.maximum, static_cast<float>(static_cast<double>(totals.largest) * unit));
  if (totals.smallest > 0) {
    result.minimum =
        std::min(result.minimum, static_cast<float>(static_cast<double>(totals.smallest) * unit));
  }
  return true;
}

void addStretch(const PixelPlanes& pixels, size_t count, const float* powers,
                BlockTotalsFunction blockTotals, Brightness& result) {
  size_t done = count - count % kBlockPixels;
  if (done < kFewestBlockPixels || !addBlocks(pixels, done, powers, blockTotals, result)) done = 0;
  addInOrder(pixels.from(done), count - done, powers, result);
}

}  // namespace

BlockTotalsFunction chooseBlockTotals() {
  return __builtin_cpu_supports("avx2") ? blockTotalsAvx2 : blockTotalsSse2;
}

Brightness measureImage(int width, int height, const uint8_t* data, const float* powers,
                        BlockTotalsFunction blockTotals) {
  Brightness result;
  if (width <= 0) return result;
  const auto rowPixels = static_cast<size_t>(width);
  for (int y = 0; y < height; ++y) {
    const uint8_t* row = data + static_cast<size_t>(y) * 4 * rowPixels;
    const PixelPlanes planes = {row, row + rowPixels, row + 2 * rowPixels, row + 3 * rowPixels};
    for (size_t x = 0; x < rowPixels; x += kStretchPixels) {
      addStretch(planes.from(x), std::min(kStretchPixels, rowPixels - x), powers, blockTotals,
                 result);
    }
  }
  return result;
}

}  // namespace lumenforge

int hdrMinMax(int width, int height, const unsigned char* data, float* result) {
  using namespace lumenforge;
  const ZeroedBuffer table = allocateZeroed(256 * sizeof(float));
  if (table == nullptr) return kNoMemory;
  auto* powers = reinterpret_cast<float*>(table.get());
  fillPowers(powers);

  const Brightness brightness = measureImage(width, height, data, powers, chooseBlockTotals());
  result[0] = brightness.minimum;
  result[1] = brightness.maximum;
  result[2] = brightness.mean();
  return std::max(height, 0);
}
