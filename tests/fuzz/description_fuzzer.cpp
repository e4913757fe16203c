// Image descriptions, and dates.
#include "fuzzing.h"

namespace fuzz {

void check(Input input) {
  const bool whole = input.take<uint8_t>() % 2 == 0;
  const int length = whole ? static_cast<int>(input.rest.size()) - 4 : input.take<int32_t>();
  if (whole) input.take<int32_t>();
  MemoryFile file(input.rest);
  ExifInfo info{};
  const int result = parse_image_description(openAt(file, 0).get(), length, &info);
  ExifInfo kept{};
  if (length <= 0 || static_cast<std::size_t>(length) > input.rest.size()) {
    require(result == -1);
  } else {
    kept.valueSource = info.valueSource;
    kept.exposureTime = info.exposureTime;
    kept.iso = info.iso;
    require(info.valueSource == 0 || (info.valueSource == 2 && info.exposureTime > 0));
    require(info.iso % 200 == 0);
  }
  require(bytesOf(info) == bytesOf(kept));

  const Block date(std::string(input.rest) + '\0');
  float seconds = -1.5F;
  const int known = time_from_datetime(date.chars(), 0, &seconds);
  require(known == 1 ? seconds <= 0 : known == -1 && seconds == -1.5F);
}

}  // namespace fuzz
