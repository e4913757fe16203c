// What a photograph's EXIF data says beside the library's record (EXIF 2.32, TIFF 6.0), read from
// its first directory and its EXIF directory.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "photos/photo_file.h"

namespace lfmeta {

struct ExifTags {
  std::string make;
  std::string model;  // whole, with its blanks
  std::string serialNumber;
  std::string lens;
  std::string subseconds;  // digits behind the point of dateTimeOriginal's seconds
  uint32_t width = 0;      // of the first directory's picture
  uint32_t height = 0;
  std::optional<float> exposureBias;     // EV
  std::optional<uint32_t> exposureMode;  // 0 automatic, 1 manual, 2 automatic bracket
  std::optional<uint32_t> orientation;   // of the picture itself
  bool hasExposureTime = false;
  bool hasShutterSpeed = false;
};

// The TIFF header is at `base`. What cannot be read is left out. The time it takes is bounded by
// two directories of 65,535 entries.
ExifTags readExifTags(PhotoFile& file, uint64_t base);

}  // namespace lfmeta
