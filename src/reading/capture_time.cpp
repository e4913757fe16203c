// An EXIF date text (EXIF 2.3, DateTimeOriginal) -> seconds from it to a reference time.
#include <charconv>
#include <ctime>
#include <iterator>
#include <optional>
#include <string_view>

#include "LumenforgeMetaLib.h"

namespace {

constexpr int kNoTime = -1;

void skipBlanks(std::string_view& text) {
  const std::size_t blanks = text.find_first_not_of(" \t\n\v\f\r");
  text.remove_prefix(blanks == std::string_view::npos ? text.size() : blanks);
}

// A decimal integer as C's "%d" reads it; none also where it does not fit an int.
std::optional<int> takeInteger(std::string_view& text) {
  skipBlanks(text);
  if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
  int number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc()) return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return number;
}

// "year:month:day hour:minute:second". The blank stands for any white space, also for none.
std::optional<std::tm> parseDate(std::string_view text) {
  std::tm date{};
  int* const fields[] = {&date.tm_year, &date.tm_mon, &date.tm_mday,
                         &date.tm_hour, &date.tm_min, &date.tm_sec};
  constexpr std::string_view kSeparators = ":: ::";
  for (std::size_t i = 0; i < std::size(fields); ++i) {
    if (i > 0 && kSeparators[i - 1] == ':') {
      if (!text.starts_with(':')) return std::nullopt;
      text.remove_prefix(1);
    }
    const auto number = takeInteger(text);
    if (!number) return std::nullopt;
    *fields[i] = *number;
  }
  if (__builtin_sub_overflow(date.tm_year, 1900, &date.tm_year)) return std::nullopt;
  if (__builtin_sub_overflow(date.tm_mon, 1, &date.tm_mon)) return std::nullopt;
  date.tm_isdst = -1;
  return date;
}

}  // namespace

int time_from_datetime(const char* text, time_t reference, float* seconds) {
  auto date = parseDate(text);
  if (!date) return kNoTime;
  const std::time_t time = std::mktime(&*date);
  if (time <= 0) return kNoTime;
  *seconds = static_cast<float>(std::difftime(reference, time));
  return LUMENFORGE_OK;
}
