// How the pixels of a TIFF picture lie in its file.
#pragma once

#include <cstddef>
#include <cstdint>

#include "pictures/picture.h"
#include "pictures/tiff_reader.h"

namespace lfmeta {

struct TiffLayout {
  uint32_t width;
  uint32_t height;
  uint16_t bits;
  uint16_t samples;  // of a pixel in the file
  uint16_t photometric;
  uint16_t compression;
  uint16_t format;
  bool planar;
  bool tiled;

  int colors() const { return photometric == PHOTOMETRIC_RGB ? 3 : 1; }
  bool isPalette() const { return photometric == PHOTOMETRIC_PALETTE; }
  bool isFloat() const { return format == SAMPLEFORMAT_IEEEFP; }
  std::size_t samplesTogether() const { return planar ? 1 : samples; }
  std::size_t bytesOf(std::size_t pixels) const {
    return (pixels * samplesTogether() * bits + 7) / 8;
  }
  Sample sample() const {
    if (isFloat()) return bits == 16 ? Sample::half : Sample::float32;
    return bits > 8 && !isPalette() ? Sample::integer16 : Sample::integer8;
  }
};

// Throws where the picture is of a kind that is not read. JPEG pixels in YCbCr are had as RGB.
TiffLayout tiffLayoutOf(const TiffReader& reader);

}  // namespace lfmeta
