// Totals of pixel blocks with AVX2, eight 32-bit integers at a time. Each function carries the
// target, so that the rest of the library runs on every x86-64 processor.
#include <immintrin.h>

#include <algorithm>
#include <array>

#include "hdr/brightness.h"

namespace lumenforge {
namespace {

struct Lanes {
  __m256i smallest;  // less 1, so that 0 becomes the largest number
  __m256i largest;
  // Sums modulo 2^64 of words of two 32-bit integers, and of what their upper halves hold.
  __m256i words;
  __m256i uppers;
};

[[gnu::target("avx2")]] inline __m256i load(const uint8_t* bytes) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes));
}

// Sixteen weighted mantissas, of red and blue bytes in turn and green bytes widened to 16 bits.
[[gnu::target("avx2")]] inline __m256i weigh(__m256i redBlue, __m256i green) {
  const __m256i weights = _mm256_set1_epi16(kBlueWeight << 8 | kRedWeight);
  const __m256i sum = _mm256_add_epi16(_mm256_maddubs_epi16(redBlue, weights),
                                       _mm256_mullo_epi16(green, _mm256_set1_epi16(kGreenWeight)));
  return _mm256_srli_epi16(sum, kWeightBits);
}

[[gnu::target("avx2")]] inline void addExtremes(__m256i values, Lanes& lanes) {
  const __m256i lessOne = _mm256_add_epi32(values, _mm256_set1_epi32(-1));
  lanes.smallest = _mm256_min_epu32(lanes.smallest, lessOne);
  lanes.largest = _mm256_max_epu32(lanes.largest, values);
}

// Sixteen pixels, given as 16-bit mantissas and shifts.
[[gnu::target("avx2")]] inline void addPixels(__m256i mantissas, __m256i shifts, Lanes& lanes) {
  const __m256i low16 = _mm256_set1_epi32(0xFFFF);
  const __m256i even =
      _mm256_sllv_epi32(_mm256_and_si256(mantissas, low16), _mm256_and_si256(shifts, low16));
  const __m256i odd =
      _mm256_sllv_epi32(_mm256_srli_epi32(mantissas, 16), _mm256_srli_epi32(shifts, 16));
  addExtremes(even, lanes);
  addExtremes(odd, lanes);
  const __m256i both = _mm256_add_epi32(even, odd);
  lanes.words = _mm256_add_epi64(lanes.words, both);
  lanes.uppers = _mm256_add_epi64(lanes.uppers, _mm256_srli_epi64(both, 32));
}

[[gnu::target("avx2")]] BlockTotals totalsOf(const Lanes& lanes) {
  const __m256i lowers = _mm256_sub_epi64(lanes.words, _mm256_slli_epi64(lanes.uppers, 32));
  const __m256i sum = _mm256_add_epi64(lowers, lanes.uppers);
  std::array<uint32_t, 8> smallest;
  std::array<uint32_t, 8> largest;
  std::array<uint64_t, 4> sums;
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(smallest.data()), lanes.smallest);
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(largest.data()), lanes.largest);
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(sums.data()), sum);
  return {*std::min_element(smallest.begin(), smallest.end()) + 1,
          *std::max_element(largest.begin(), largest.end()), sums[0] + sums[1] + sums[2] + sums[3]};
}

}  // namespace

[[gnu::target("avx2")]] BlockTotals blockTotalsAvx2(const PixelPlanes& pixels, std::size_t count,
                                                    int base) {
  const __m256i zero = _mm256_setzero_si256();
  const __m256i bases = _mm256_set1_epi8(static_cast<char>(base));
  Lanes lanes = {_mm256_set1_epi32(-1), zero, zero, zero};
  for (std::size_t x = 0; x < count; x += kBlockPixels) {
    const __m256i red = load(pixels.red() + x);
    const __m256i green = load(pixels.green() + x);
    const __m256i blue = load(pixels.blue() + x);
    const __m256i shifts = _mm256_sub_epi8(load(pixels.exponent() + x), bases);
    addPixels(weigh(_mm256_unpacklo_epi8(red, blue), _mm256_unpacklo_epi8(green, zero)),
              _mm256_unpacklo_epi8(shifts, zero), lanes);
    addPixels(weigh(_mm256_unpackhi_epi8(red, blue), _mm256_unpackhi_epi8(green, zero)),
              _mm256_unpackhi_epi8(shifts, zero), lanes);
  }
  return totalsOf(lanes);
}

}  // namespace lumenforge
