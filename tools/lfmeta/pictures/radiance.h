// Radiance pictures (.hdr, .pic): three 8-bit mantissas and a shared 8-bit exponent a pixel.
#pragma once

#include <memory>
#include <span>

namespace lfmeta {

struct RadiancePicture {
  int width = 0;        // pixels of a scanline
  int height = 0;       // scanlines
  int orientation = 1;  // TIFF code of how the scanlines lie
  // Scanlines without gaps, each as four planes of `width` bytes: red, green, blue, exponent.
  std::unique_ptr<unsigned char[]> planes;
};

// Reads flat and run-length scanlines, of the old and the new kind. Throws std::runtime_error.
RadiancePicture readRadiance(std::span<const unsigned char> file);

}  // namespace lfmeta
