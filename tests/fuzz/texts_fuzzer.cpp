// Image descriptions, dates, and names of profiles.
#include "fuzzing.h"

void fuzz::check(std::string input) {
  const int given = take<int32_t>(input);
  const int length = given == 0 ? static_cast<int>(input.size()) : given;
  ExifInfo info{};
  const int result = parse_image_description(MemoryStream(input).get(), length, &info);
  if (length <= 0 || length > std::ssize(input)) require(result == -1 && bytesOf(info) == bytesOf(ExifInfo{}));
  require(info.valueSource == 0 || (info.valueSource == 2 && info.exposureTime > 0));
  require(info.iso % 200 == 0);

  const Block date(input + '\0');
  float seconds = 1;
  const int known = time_from_datetime(date.chars(), 0, &seconds);
  require(known == 1 ? seconds <= 0 : known == -1 && seconds == 1);

  const Block profile(input);
  const Block name(std::string(32, 'Z'));
  const int end = get_profile_name(profile.size(), profile.bytes(), name.chars());
  require(isOneOf(end, {32, 12, 9, 4, -1}) && (end == 32 || name.text().ends_with(std::string(20, '\0'))));
}
