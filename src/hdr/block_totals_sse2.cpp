// Totals of pixel blocks with what every x86-64 processor has. It lacks shifts by lane and 32-bit
// minima, so the integers pass through single precision, which holds each of them exactly.
#include <emmintrin.h>

#include <algorithm>
#include <array>
#include <limits>

#include "hdr/brightness.h"

namespace lumenforge {
namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();

struct Lanes {
  __m128 smallest;
  __m128 largest;
  // Sums modulo 2^64 of words of two 32-bit integers, and of what their upper halves hold.
  __m128i words;
  __m128i uppers;
};

inline __m128i load(const uint8_t* bytes) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
}

// Eight weighted mantissas, of bytes widened to 16 bits.
inline __m128i weigh(__m128i red, __m128i green, __m128i blue) {
  const __m128i sum =
      _mm_add_epi16(_mm_add_epi16(_mm_mullo_epi16(red, _mm_set1_epi16(kRedWeight)),
                                  _mm_mullo_epi16(green, _mm_set1_epi16(kGreenWeight))),
                    _mm_mullo_epi16(blue, _mm_set1_epi16(kBlueWeight)));
  return _mm_srli_epi16(sum, kWeightBits);
}

// m << (scale - 1), or 0 for a scale of 0. The scale is the exponent field of a float: 2^(scale -
// 127), or 0.
inline __m128 scaled(__m128i mantissas, __m128i scales) {
  const __m128 powers = _mm_castsi128_ps(_mm_slli_epi32(scales, 23));
  return _mm_mul_ps(_mm_mul_ps(_mm_cvtepi32_ps(mantissas), powers), _mm_set1_ps(0x1p126F));
}

inline void addExtremes(__m128 values, Lanes& lanes) {
  const __m128 isZero = _mm_cmpeq_ps(values, _mm_setzero_ps());
  const __m128 aboveZero = _mm_or_ps(values, _mm_and_ps(isZero, _mm_set1_ps(kInfinity)));
  lanes.smallest = _mm_min_ps(lanes.smallest, aboveZero);
  lanes.largest = _mm_max_ps(lanes.largest, values);
}

// Eight pixels, given as 16-bit mantissas and scales.
inline void addPixels(__m128i mantissas, __m128i scales, Lanes& lanes) {
  const __m128i zero = _mm_setzero_si128();
  const __m128 first =
      scaled(_mm_unpacklo_epi16(mantissas, zero), _mm_unpacklo_epi16(scales, zero));
  const __m128 second =
      scaled(_mm_unpackhi_epi16(mantissas, zero), _mm_unpackhi_epi16(scales, zero));
  addExtremes(first, lanes);
  addExtremes(second, lanes);
  const __m128i both = _mm_add_epi32(_mm_cvttps_epi32(first), _mm_cvttps_epi32(second));
  lanes.words = _mm_add_epi64(lanes.words, both);
  lanes.uppers = _mm_add_epi64(lanes.uppers, _mm_srli_epi64(both, 32));
}

BlockTotals totalsOf(const Lanes& lanes) {
  const __m128i lowers = _mm_sub_epi64(lanes.words, _mm_slli_epi64(lanes.uppers, 32));
  const __m128i sum = _mm_add_epi64(lowers, lanes.uppers);
  std::array<float, 4> smallest;
  std::array<float, 4> largest;
  std::array<uint64_t, 2> sums;
  _mm_storeu_ps(smallest.data(), lanes.smallest);
  _mm_storeu_ps(largest.data(), lanes.largest);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(sums.data()), sum);
  const float least = *std::min_element(smallest.begin(), smallest.end());
  return {least == kInfinity ? 0 : static_cast<uint32_t>(least),
          static_cast<uint32_t>(*std::max_element(largest.begin(), largest.end())),
          sums[0] + sums[1]};
}

}  // namespace

BlockTotals blockTotalsSse2(const PixelPlanes& pixels, std::size_t count, int base) {
  const __m128i zero = _mm_setzero_si128();
  const __m128i belowBase = _mm_set1_epi8(static_cast<char>(base - 1));
  Lanes lanes = {_mm_set1_ps(kInfinity), _mm_setzero_ps(), zero, zero};
  for (std::size_t x = 0; x < count; x += 16) {
    const __m128i red = load(pixels.red() + x);
    const __m128i green = load(pixels.green() + x);
    const __m128i blue = load(pixels.blue() + x);
    const __m128i scales = _mm_subs_epu8(load(pixels.exponent() + x), belowBase);
    addPixels(weigh(_mm_unpacklo_epi8(red, zero), _mm_unpacklo_epi8(green, zero),
                    _mm_unpacklo_epi8(blue, zero)),
              _mm_unpacklo_epi8(scales, zero), lanes);
    addPixels(weigh(_mm_unpackhi_epi8(red, zero), _mm_unpackhi_epi8(green, zero),
                    _mm_unpackhi_epi8(blue, zero)),
              _mm_unpackhi_epi8(scales, zero), lanes);
  }
  return totalsOf(lanes);
}

}  // namespace lumenforge
