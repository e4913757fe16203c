#include "tiff/pixel_packing.h"

#include <tmmintrin.h>

namespace lumenforge {

namespace {

constexpr std::size_t kVectorSize = 16;

// As many units as fill a vector at a time: one byte shuffle moves the bytes that are kept to the
// front, and each store overwrites what the one before left behind them. Returns the units done;
// the last few, where a whole vector would not fit, are left.
__attribute__((target("ssse3"))) std::size_t packVectors(const PixelPacking& packing,
                                                         const uint8_t* units,
                                                         std::size_t unitCount,
                                                         std::span<uint8_t> out) {
  const std::size_t unitsPerVector = kVectorSize / packing.unitSize;
  const std::size_t step = unitsPerVector * packing.keptCount;

  std::array<uint8_t, kVectorSize> pattern;
  pattern.fill(0x80);  // a byte that becomes zero
  for (std::size_t i = 0; i < step; ++i) {
    pattern[i] = static_cast<uint8_t>(i / packing.keptCount * packing.unitSize +
                                      packing.kept[i % packing.keptCount]);
  }
  const __m128i shuffle = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pattern.data()));

  std::size_t done = 0;
  while (unitCount - done >= unitsPerVector && out.size() >= kVectorSize) {
    const __m128i vector = _mm_loadu_si128(reinterpret_cast<const __m128i*>(units));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out.data()), _mm_shuffle_epi8(vector, shuffle));
    units += kVectorSize;
    out = out.subspan(step);
    done += unitsPerVector;
  }
  return done;
}

}  // namespace

PixelPacking packingFor(std::size_t samples, std::size_t samplesKept, std::size_t sampleSize,
                        bool highByteOnly) {
  PixelPacking packing;
  if (samples == samplesKept) {  // every sample is a unit of its own
    packing.unitsPerPixel = samples;
    samples = samplesKept = 1;
  }
  packing.unitSize = samples * sampleSize;
  for (std::size_t i = 0; i < samplesKept * sampleSize; ++i) {
    if (highByteOnly && i % sampleSize != sampleSize - 1) continue;
    packing.kept[packing.keptCount++] = static_cast<uint8_t>(i);
  }
  return packing;
}

void packUnitsPlain(const PixelPacking& packing, const uint8_t* units, std::size_t unitCount,
                    std::span<uint8_t> out) {
  uint8_t* to = out.data();
  for (std::size_t unit = 0; unit < unitCount; ++unit) {
    for (std::size_t i = 0; i < packing.keptCount; ++i) *to++ = units[packing.kept[i]];
    units += packing.unitSize;
  }
}

void packUnits(const PixelPacking& packing, const uint8_t* units, std::size_t unitCount,
               std::span<uint8_t> out) {
  const std::size_t done =
      __builtin_cpu_supports("ssse3") ? packVectors(packing, units, unitCount, out) : 0;
  packUnitsPlain(packing, units + done * packing.unitSize, unitCount - done,
                 out.subspan(done * packing.keptCount));
}

}  // namespace lumenforge
