// Radiance pictures (.hdr, .pic): three 8-bit mantissas and a shared 8-bit exponent a pixel.
#pragma once

#include <array>
#include <cstddef>
#include <span>

#include "pictures/header_text.h"
#include "pictures/picture.h"

namespace lfmeta {

// Reads scanline by scanline, flat or in run lengths of the old or the new kind. All throw
// std::runtime_error.
class RadianceReader {
 public:
  static constexpr std::size_t kPlanes = 4;

  explicit RadianceReader(std::FILE* stream);

  std::size_t width() const { return width_; }      // pixels of a scanline
  std::size_t height() const { return height_; }    // scanlines
  int orientation() const { return orientation_; }  // TIFF code of how the scanlines lie
  // The next scanline as four planes of width() bytes: red, green, blue, exponent.
  void readScanline(std::span<unsigned char> planes);

 private:
  using Pixel = std::array<unsigned char, kPlanes>;
  void readPlanes(std::span<unsigned char> planes);
  void readPixels(std::span<unsigned char> planes, Pixel pixel);

  TextReader text_;
  std::size_t width_ = 0;
  std::size_t height_ = 0;
  int orientation_ = 0;
};

// Whether the file begins as one; it is left at its start.
bool isRadiance(const PictureFile& file);

// The whole picture, its scanlines in the form of readScanline: four channels of 8 bits.
Image readRadiancePlanes(const PictureFile& file);

}  // namespace lfmeta
