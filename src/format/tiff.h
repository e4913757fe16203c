// The vocabulary of TIFF files (TIFF 6.0, EXIF 2.3, XMP and ICC in TIFF): what the reader, the
// writer and the lookup of entries call by the same names.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "base/bytes.h"

namespace lumenforge {

// A file begins with a byte-order mark, a number in that order and the first directory's offset.
inline constexpr uint16_t kLittleEndianMark = 0x4949;
inline constexpr uint16_t kBigEndianMark = 0x4D4D;
inline constexpr uint16_t kTiffNumber = 42;
inline constexpr std::size_t kTiffHeaderSize = 8;

// "II" means little-endian, anything else big-endian.
constexpr ByteOrder byteOrderOfMark(int mark) {
  return (mark & 0xFFFF) == kLittleEndianMark ? ByteOrder::little : ByteOrder::big;
}

// A directory is the number of its entries, the entries and the offset of the next directory.
inline constexpr std::size_t kEntrySize = 12;

constexpr uint64_t directorySize(uint64_t entryCount) {
  return 2 + kEntrySize * entryCount + 4;
}

// Of the image file directories, the Exif directory and the GPS directory in turn. Each has its
// own numbers, of which those used here have one meaning only.
enum class Tag : uint16_t {
  imageWidth = 0x0100,
  imageLength = 0x0101,
  bitsPerSample = 0x0102,
  compression = 0x0103,
  photometricInterpretation = 0x0106,
  make = 0x010F,
  model = 0x0110,
  stripOffsets = 0x0111,
  orientation = 0x0112,
  samplesPerPixel = 0x0115,
  rowsPerStrip = 0x0116,
  stripByteCounts = 0x0117,
  xResolution = 0x011A,
  yResolution = 0x011B,
  planarConfiguration = 0x011C,
  resolutionUnit = 0x0128,
  software = 0x0131,
  sampleFormat = 0x0153,
  thumbnailOffset = 0x0201,
  thumbnailLength = 0x0202,
  xmpPacket = 0x02BC,
  iptcNaa = 0x83BB,
  photoshopResources = 0x8649,
  exifPointer = 0x8769,
  iccProfile = 0x8773,
  gpsPointer = 0x8825,

  exposureTime = 0x829A,
  fNumber = 0x829D,
  isoSpeedRatings = 0x8827,
  dateTimeOriginal = 0x9003,
  shutterSpeedValue = 0x9201,
  apertureValue = 0x9202,
  maxApertureValue = 0x9205,
  focalLength = 0x920A,
  focalPlaneXResolution = 0xA20E,
  focalPlaneResolutionUnit = 0xA210,
  exposureIndex = 0xA215,
  focalLengthIn35mmFilm = 0xA405,

  gpsVersionId = 0x0000,
  gpsLatitudeRef = 0x0001,
  gpsLatitude = 0x0002,
  gpsLongitudeRef = 0x0003,
  gpsLongitude = 0x0004,
  gpsAltitudeRef = 0x0005,
  gpsAltitude = 0x0006,
  gpsTimeStamp = 0x0007,
  gpsDateStamp = 0x001D,
};

enum class FieldType : uint16_t {
  byte = 1,
  ascii = 2,
  shortInteger = 3,
  longInteger = 4,
  rational = 5,
  undefined = 7,
};

// Bytes of one element of a type, from a type 0 on; one byte for any above the table. Type 13, a
// directory's offset, has 8: hosts rely on what the table gives, also where it surprises.
inline constexpr std::array<uint8_t, 14> kFieldSizes = {1, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 8};

constexpr std::size_t fieldSize(FieldType type) {
  const auto number = static_cast<std::size_t>(type);
  return number < kFieldSizes.size() ? kFieldSizes[number] : kFieldSizes[0];
}

}  // namespace lumenforge
