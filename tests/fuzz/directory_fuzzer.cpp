// EXIF and GPS directories and Photoshop blocks at any place of a stream.
#include "fuzzing.h"

namespace fuzz {

void check(Input input) {
  const int kind = input.take<uint8_t>() % 3;
  const int byteOrder = input.take<uint8_t>() % 2 == 0 ? 0x4949 : 0x4D4D;
  const int start = input.take<uint16_t>();
  const int number = input.take<int32_t>();  // base of the offsets, or length of the block
  MemoryFile file(input.rest);
  ExifInfo info{};
  const Stream stream = openAt(file, start);
  ExifInfo kept{};
  if (kind == 0) {
    require(parse_exif_data(stream.get(), 0, byteOrder, number, &info) == 1);
    std::memcpy(&kept, &info, offsetof(ExifInfo, model));
    std::memcpy(kept.dateTimeOriginal, info.dateTimeOriginal, sizeof kept.dateTimeOriginal);
  } else if (kind == 1) {
    require(parse_gps_data(stream.get(), 0, byteOrder, number, &info) == 1);
    std::memcpy(&kept.gpsLatitudeRef, &info.gpsLatitudeRef,
                offsetof(ExifInfo, xmpLength) - offsetof(ExifInfo, gpsLatitudeRef));
  } else {
    const int result = parse_photoshop_data(stream.get(), number, &info);
    require(number < 0 ? result == -4
                       : result == 1 || result == static_cast<int>(info.thumbLength));
    std::memcpy(&kept.thumbWidth, &info.thumbWidth,
                offsetof(ExifInfo, orientation) - offsetof(ExifInfo, thumbWidth));
    kept.iptcLength = info.iptcLength;
    kept.iptcOffset = info.iptcOffset;
  }
  require(bytesOf(info) == bytesOf(kept));  // no field of another structure
  requireTexts(info);
}

}  // namespace fuzz
