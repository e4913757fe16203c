// EXIF and GPS directories and Photoshop blocks at any place of a stream.
#include "fuzzing.h"

void fuzz::check(std::string input) {
  const int kind = take<uint8_t>(input) % 3;
  const int byteOrder = take<uint8_t>(input) % 2 == 0 ? 0x4949 : 0x4D4D;
  const int start = take<uint16_t>(input);
  const int number = take<int32_t>(input);  // base of the offsets, or length of the block
  MemoryStream stream(input, start);
  ExifInfo info{};
  if (kind == 0) require(parse_exif_data(stream.get(), 0, byteOrder, number, &info) == 1);
  if (kind == 1) require(parse_gps_data(stream.get(), 0, byteOrder, number, &info) == 1);
  if (kind == 2) {
    const int result = parse_photoshop_data(stream.get(), number, &info);
    require(number < 0 ? result == -4 : isOneOf(result, {1, static_cast<int>(info.thumbLength)}));
  }
  requireTexts(info);
}
