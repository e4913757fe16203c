// Pixels in memory -> pixels in the file, where not every byte of a pixel is written: the sample of
// two or four that is dropped, the low byte of a 16-bit sample that becomes one of 8 bits.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace lumenforge {

// Which bytes of each unit are written, in ascending order. A unit is a pixel, or a single sample
// where all samples are written alike; 1, 2, 4, 8 or 16 bytes.
struct PixelPacking {
  std::size_t unitSize = 0;
  std::size_t unitsPerPixel = 1;
  std::size_t keptCount = 0;
  std::array<uint8_t, 16> kept{};
};

// `samples`: of a pixel in memory; `samplesKept`: of these, from the front; `sampleSize`: bytes of
// a sample in memory; `highByteOnly`: write the last byte of each sample only.
PixelPacking packingFor(std::size_t samples, std::size_t samplesKept, std::size_t sampleSize,
                        bool highByteOnly);

// `out` holds unitCount * keptCount bytes. The plain function is the definition; the other does the
// same with the instructions that this machine has.
void packUnitsPlain(const PixelPacking& packing, const uint8_t* units, std::size_t unitCount,
                    std::span<uint8_t> out);
void packUnits(const PixelPacking& packing, const uint8_t* units, std::size_t unitCount,
               std::span<uint8_t> out);

}  // namespace lumenforge
