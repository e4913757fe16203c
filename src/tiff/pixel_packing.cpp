#include "tiff/pixel_packing.h"

#include <tmmintrin.h>

namespace lumenforge {
namespace {

constexpr std::size_t kVectorSize = 16;
constexpr std::size_t kVectorsAtOnce = 4;  // a cache line
constexpr std::size_t kPrefetchDistance = 8192;

// Moves the kept bytes of a vector of units to the front, zeros behind them.
using Pattern = std::array<uint8_t, kVectorSize>;

Pattern patternFor(const PixelPacking& packing) {
  constexpr uint8_t kZero = 0x80;
  Pattern pattern;
  pattern.fill(kZero);
  for (std::size_t i = 0; i < kVectorSize / packing.unitSize * packing.keptCount; ++i) {
    pattern[i] = static_cast<uint8_t>(i / packing.keptCount * packing.unitSize +
                                      packing.kept[i % packing.keptCount]);
  }
  return pattern;
}

__attribute__((target("ssse3"))) inline void packVector(const uint8_t* units, __m128i shuffle,
                                                        uint8_t* out) {
  const __m128i vector = _mm_loadu_si128(reinterpret_cast<const __m128i*>(units));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_shuffle_epi8(vector, shuffle));
}

// As many units as fill a vector at a time; each store overwrites what the one before has left
// behind its kept bytes. Returns the units done; the last few, where a whole vector would not fit,
// are left.
__attribute__((target("ssse3"))) std::size_t packVectors(const PixelPacking& packing,
                                                         const uint8_t* units,
                                                         std::size_t unitCount,
                                                         std::span<uint8_t> out) {
  const Pattern pattern = patternFor(packing);
  const __m128i shuffle = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pattern.data()));
  const std::size_t unitsPerVector = kVectorSize / packing.unitSize;
  const std::size_t step = unitsPerVector * packing.keptCount;
  std::size_t left = unitCount / unitsPerVector;
  const auto fits = [&](std::size_t vectors) {
    return left >= vectors && out.size() >= (vectors - 1) * step + kVectorSize;
  };
  while (fits(kVectorsAtOnce)) {
    // Reading is what takes the time, and the hardware looks ahead within a page only. At two pages
    // packing takes little longer than reading alone; wider vectors or other hints gain nothing.
    _mm_prefetch(reinterpret_cast<const char*>(units) + kPrefetchDistance, _MM_HINT_T0);
    for (std::size_t i = 0; i < kVectorsAtOnce; ++i) {
      packVector(units + i * kVectorSize, shuffle, out.data() + i * step);
    }
    units += kVectorsAtOnce * kVectorSize;
    out = out.subspan(kVectorsAtOnce * step);
    left -= kVectorsAtOnce;
  }
  while (fits(1)) {
    packVector(units, shuffle, out.data());
    units += kVectorSize;
    out = out.subspan(step);
    --left;
  }
  return (unitCount / unitsPerVector - left) * unitsPerVector;
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
