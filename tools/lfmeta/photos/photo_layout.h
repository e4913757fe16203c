// Where a photograph's picture and its EXIF data stand, found apart from the library: so that a
// file without EXIF data can be told from a damaged one, and one that is sound from one in which
// the library's rules end before its EXIF data. ITU-T T.81 annex B, Photoshop file format.
#pragma once

#include <cstdint>
#include <optional>

#include "photos/photo_type.h"

namespace lfmeta {

struct PhotoLayout {
  bool sound = false;  // its structure could be followed as far as the picture
  uint32_t width = 0;  // pixels; 0 where it does not say
  uint32_t height = 0;
  std::optional<uint64_t> exif;   // the TIFF header of its EXIF data
  bool fillBytes = false;         // stand before a marker of a JPEG
  const char* notRead = nullptr;  // the rule by which the library does not come to its EXIF data
};

// The size of a TIFF stands in its directory and is left out here.
PhotoLayout findLayout(PhotoFile& file, PhotoType type);

}  // namespace lfmeta
