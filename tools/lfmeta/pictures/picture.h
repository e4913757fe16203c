// A picture in memory, as a decoder leaves it and as the TIFF writer takes it.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>

#include "base/whole_file.h"

namespace lfmeta {

enum class Sample { integer8, integer16, half, float32 };

std::size_t sizeOf(Sample sample);

struct Image {
  int width = 0;
  int height = 0;
  int channels = 0;     // 1 to 4, the last of two or four being opacity
  int orientation = 0;  // TIFF code of how the rows lie, 0 when the picture does not say
  Sample sample = Sample::integer8;
  std::unique_ptr<unsigned char[]> pixels;  // rows without gaps, samples in the machine's order
  Bytes iccProfile;                         // the one in the picture, empty when there is none

  std::size_t rowSize() const;
  std::size_t sampleCount() const;
  unsigned char* row(int y) { return pixels.get() + rowSize() * static_cast<std::size_t>(y); }
};

// Gives the image its size and pixels, which are not cleared: pages that no row reaches cost
// nothing, whatever size a damaged file claims. Throws std::runtime_error for a size that no TIFF
// file can hold.
void allocatePixels(Image& image, uint64_t width, uint64_t height, int channels, Sample sample);

// Decodes a PNG, JPEG, PNM, PAM, PFM or Radiance picture, known by its first bytes. Throws Failure.
Image decodeImage(const std::string& path);

// One format each; all throw std::runtime_error with what is wrong.
Image decodePng(std::span<const unsigned char> file);
Image decodeJpeg(std::span<const unsigned char> file);
Image decodeNetpbm(std::span<const unsigned char> file);  // P2, P3, P5, P6 and P7
Image decodePfm(std::span<const unsigned char> file);     // Pf and PF
Image decodeRadiance(std::span<const unsigned char> file);

}  // namespace lfmeta
