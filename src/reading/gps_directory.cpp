// A GPS directory (EXIF 2.3) -> the GPS fields of ExifInfo, as they stand in the file.
#include "reading/gps_directory.h"

#include <algorithm>
#include <span>

#include "reading/host_stream.h"

namespace lumenforge {
namespace {

constexpr int32_t kDateStampLength = 10;  // YYYY:MM:DD

// Whole fractions only, from the front, as many as the file holds of `count`.
void readFractions(Reading& reading, const TiffFrame& frame, uint64_t offset, int32_t count,
                   std::span<uint32_t> words) {
  const std::size_t wanted =
      count <= 0
          ? 0
          : std::min<std::size_t>(words.size(), std::size_t{2} * static_cast<uint32_t>(count));
  for (std::size_t i = 0; i < wanted; i += 2) {
    const uint8_t* fraction = reading.window.view(offset + 4 * i, 8);
    if (fraction == nullptr) return;
    words[i] = load32(fraction, frame.order);
    words[i + 1] = load32(fraction + 4, frame.order);
  }
}

void readDateStamp(Reading& reading, uint64_t offset, int32_t count) {
  if (count <= 5) return;
  const int32_t length = count > kDateStampLength ? kDateStampLength : count - 1;
  readLine(reading.window, offset,
           std::span(reading.info.gpsDateStamp).first(static_cast<std::size_t>(length) + 1));
}

void takeEntry(Reading& reading, const TiffFrame& frame, const DirectoryEntry& entry) {
  ExifInfo& info = reading.info;
  // Unlike in the other directories, a SHORT is never taken from the first half of the field.
  const uint64_t target = frame.base + entry.raw;
  const auto count = static_cast<int32_t>(entry.count);
  switch (entry.tag) {
    case Tag::gpsLatitudeRef:
      info.gpsLatitudeRef = static_cast<char>(entry.field[0]);
      return;
    case Tag::gpsLongitudeRef:
      info.gpsLongitudeRef = static_cast<char>(entry.field[0]);
      return;
    case Tag::gpsAltitudeRef:
      info.gpsAltitudeRef = entry.field[0];
      return;
    case Tag::gpsLatitude:
      return readFractions(reading, frame, target, count, info.gpsLatitude);
    case Tag::gpsLongitude:
      return readFractions(reading, frame, target, count, info.gpsLongitude);
    case Tag::gpsTimeStamp:
      return readFractions(reading, frame, target, count, info.gpsTimeStamp);
    case Tag::gpsAltitude:
      return readFractions(reading, frame, target, 1, info.gpsAltitude);
    case Tag::gpsDateStamp:
      return readDateStamp(reading, target, count);
    default:
      return;
  }
}

}  // namespace

void readGpsDirectory(Reading& reading, const TiffFrame& frame, uint64_t offset) {
  DirectoryReader directory(reading.window, offset, frame, reading.entriesLeft);
  while (const auto entry = directory.next()) takeEntry(reading, frame, *entry);
}

}  // namespace lumenforge

int parse_gps_data(FILE* f, int /*count*/, int byteOrder, int base, ExifInfo* info) {
  return lumenforge::readFromStream(f, byteOrder, base, *info, lumenforge::readGpsDirectory);
}
