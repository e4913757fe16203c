// Shared-exponent pixels (three 8-bit mantissas and one 8-bit exponent) and what is measured of
// them.
//
// A pixel of exponent 0 counts for nothing. Any other has the brightness m * 2^(exponent - 128), m
// being the weighted mean of its mantissas, 0 to 255.
#pragma once

#include <cstddef>
#include <cstdint>

namespace lumenforge {

inline constexpr int kRedWeight = 19;
inline constexpr int kGreenWeight = 183;
inline constexpr int kBlueWeight = 54;
inline constexpr int kWeightBits = 8;
static_assert(kRedWeight + kGreenWeight + kBlueWeight == 1 << kWeightBits);

// Pixels of a row, from any of them on: the four planes lie `width` bytes apart, as wide as a row.
struct PixelPlanes {
  const uint8_t* first;
  std::size_t width;

  const uint8_t* red() const { return first; }
  const uint8_t* green() const { return first + width; }
  const uint8_t* blue() const { return first + 2 * width; }
  const uint8_t* exponent() const { return first + 3 * width; }

  PixelPlanes from(std::size_t x) const { return {first + x, width}; }
  PixelPlanes below(std::size_t rows) const { return {first + 4 * width * rows, width}; }
};

// In double precision, where no brightness is subnormal: what a host has told the processor to do
// with subnormal numbers changes nothing.
struct Brightness {
  double minimum = 1e11F;  // smallest above 0
  double maximum = 0;
  double sum = 0;
  uint64_t count = 0;  // pixels whose exponent is not 0

  double mean() const;
};

// powers[e] = 2^(e - 128), for 256 exponents.
void fillPowers(double* powers);

// The definition: `count` pixels of each of `rows` rows, one by one. Every other way to measure
// gives the same bits.
void addInOrder(const PixelPlanes& pixels, std::size_t count, std::size_t rows,
                const double* powers, Brightness& result);

// Rounded once to single precision, subnormal or not.
float toFloat(double value);

// ---- Blocks of pixels as integers

// The pixels that one step of the vector code takes.
inline constexpr std::size_t kBlockPixels = 32;

// How far a pixel's exponent may lie above the base of its blocks: m << 23 fits a signed 32-bit
// number, and the sum of two such an unsigned one.
inline constexpr int kMaxShift = 23;

// The highest base. An exponent of 0 then lies 32 or more above it, modulo 256: a shift that leaves
// nothing. With kMaxShift it also keeps every product within single precision.
inline constexpr int kMaxBase = 224;

// The integers m << (exponent - base) of some blocks: brightness in units of 2^(base - 128).
struct BlockTotals {
  uint32_t smallest;  // above 0; 0 when there is none
  uint32_t largest;
  uint64_t sum;
};

// `count`: a multiple of kBlockPixels, at most 2^20. Exponents are 0 or base to base + kMaxShift.
using BlockTotalsFunction = BlockTotals (*)(const PixelPlanes& pixels, std::size_t count, int base);
BlockTotals blockTotalsSse2(const PixelPlanes& pixels, std::size_t count, int base);
BlockTotals blockTotalsAvx2(const PixelPlanes& pixels, std::size_t count, int base);

// The fastest that this processor has.
BlockTotalsFunction chooseBlockTotals();

struct ExponentRange {
  int lowest;  // above 0; 256 when every exponent is 0
  int highest;
  std::size_t zeros;
};

// `count`: a multiple of kBlockPixels, at most kStretchPixels.
ExponentRange exponentRange(const uint8_t* exponents, std::size_t count);

// ---- Images

// Pixels that are taken as blocks or in order together: few enough that one stray exponent costs
// little, and that what exponentRange has read is still in the cache; many enough that the work per
// stretch does not show.
inline constexpr std::size_t kStretchPixels = 1024;

// `data`: `height` rows of four planes of `width` bytes, without gaps.
Brightness measureImage(int width, int height, const uint8_t* data, const double* powers,
                        BlockTotalsFunction blockTotals);

}  // namespace lumenforge
