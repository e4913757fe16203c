// The range of a stretch's exponents, which tells whether its pixels can be measured as integers.
#include <emmintrin.h>

#include "hdr/brightness.h"

namespace lumenforge {

static_assert(kStretchPixels / 16 <= 255, "zeros are counted in bytes, one for every 16 pixels");

ExponentRange exponentRange(const uint8_t* exponents, std::size_t count) {
  const __m128i zero = _mm_setzero_si128();
  const __m128i ones = _mm_set1_epi8(-1);
  __m128i lowest = ones;  // less 1, so that 0 becomes the largest number
  __m128i highest = zero;
  __m128i zeros = zero;
  for (std::size_t x = 0; x < count; x += 16) {
    const __m128i e = _mm_loadu_si128(reinterpret_cast<const __m128i*>(exponents + x));
    lowest = _mm_min_epu8(lowest, _mm_add_epi8(e, ones));
    highest = _mm_max_epu8(highest, e);
    zeros = _mm_sub_epi8(zeros, _mm_cmpeq_epi8(e, zero));
  }
  // One byte of each is left once the vector has been folded in half four times.
  lowest = _mm_min_epu8(lowest, _mm_srli_si128(lowest, 8));
  lowest = _mm_min_epu8(lowest, _mm_srli_epi64(lowest, 32));
  lowest = _mm_min_epu8(lowest, _mm_srli_epi32(lowest, 16));
  lowest = _mm_min_epu8(lowest, _mm_srli_epi16(lowest, 8));
  highest = _mm_max_epu8(highest, _mm_srli_si128(highest, 8));
  highest = _mm_max_epu8(highest, _mm_srli_epi64(highest, 32));
  highest = _mm_max_epu8(highest, _mm_srli_epi32(highest, 16));
  highest = _mm_max_epu8(highest, _mm_srli_epi16(highest, 8));
  zeros = _mm_sad_epu8(zeros, zero);
  zeros = _mm_add_epi64(zeros, _mm_srli_si128(zeros, 8));
  return {(_mm_cvtsi128_si32(lowest) & 0xFF) + 1, _mm_cvtsi128_si32(highest) & 0xFF,
          static_cast<std::size_t>(_mm_cvtsi128_si64(zeros))};
}

}  // namespace lumenforge
