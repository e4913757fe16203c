// Image descriptions, and dates.
#include "fuzzing.h"

void fuzz::check(std::string input) {
  const int given = take<int32_t>(input);
  const int length = given == 0 ? static_cast<int>(input.size()) : given;
  ExifInfo info{};
  const int result = parse_image_description(MemoryStream(input).get(), length, &info);
  ExifInfo kept{};
  if (length <= 0 || length > std::ssize(input)) {
    require(result == -1);
  } else {
    kept.valueSource = info.valueSource;
    kept.exposureTime = info.exposureTime;
    kept.iso = info.iso;
    require(info.valueSource == 0 || (info.valueSource == 2 && info.exposureTime > 0));
    require(info.iso % 200 == 0);
  }
  require(bytesOf(info) == bytesOf(kept));

  const Block date(input + '\0');
  float seconds = 1;
  const int known = time_from_datetime(date.chars(), 0, &seconds);
  require(known == 1 ? seconds <= 0 : known == -1 && seconds == 1);
}
