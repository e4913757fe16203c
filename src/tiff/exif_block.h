// Exif and GPS directories (EXIF 2.3) rebuilt from the host's records, for the stand-alone EXIF
// block and for the TIFF file alike.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "LumenforgeMetaLib.h"
#include "tiff/directory_writer.h"

namespace lumenforge {

using MakeText = std::array<char, 64>;

// Entry counts, value area sizes and text lengths (terminator included), as get_exif_count tells
// them. Values of 0 or less stand for nothing.
struct ExifSizes {
  int32_t exifCount = 0;
  int32_t exifDataSize = 0;
  int32_t gpsCount = 0;
  int32_t gpsDataSize = 0;
  int32_t modelLength = 0;
  int32_t makeLength = 0;
  int32_t dateTimeLength = 0;
  int32_t gpsDateLength = 0;
  int32_t lensLength = 0;
};

// Fills `make` as well, zeros behind the text.
ExifSizes measureExif(const MetadataBuf& meta, const GpsBuf& gps, MakeText& make);

// The pointers to the Exif and the GPS directory, and both directories in the value area.
void addExifDirectories(DirectoryWriter& directory, const ExifSizes& sizes, const MetadataBuf& meta,
                        const GpsBuf& gps);

// A TIFF orientation code; what is none is written as 1.
constexpr uint16_t orientationCode(int32_t orientation) {
  return orientation >= 1 && orientation <= 8 ? static_cast<uint16_t>(orientation) : uint16_t{1};
}

}  // namespace lumenforge
