#include "base/number_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

namespace lumenforge {
namespace {

constexpr bool isSpace(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}
constexpr bool isDigit(char c) {
  return c >= '0' && c <= '9';
}
constexpr char lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
}
constexpr bool isHexDigit(char c) {
  return isDigit(c) || (lower(c) >= 'a' && lower(c) <= 'f');
}

// `word` is in lower case.
bool startsWithWord(const char* p, const char* end, std::string_view word) {
  return static_cast<std::size_t>(end - p) >= word.size() &&
         std::equal(word.begin(), word.end(), p, [](char a, char b) { return a == lower(b); });
}

// A parsed magnitude; `end` is null when there is no number.
struct Magnitude {
  float value = 0;
  const char* end = nullptr;
};

// The exponent that follows the digits: its letter, a sign and digits, each but the letter
// optional.
const char* skipExponent(const char* p, const char* end, char letter) {
  if (p == end || lower(*p) != letter) return p;
  ++p;
  if (p != end && (*p == '-' || *p == '+')) ++p;
  while (p != end && isDigit(*p)) ++p;
  return p;
}

// What a number whose digits are not all zero becomes beyond the range of float: the place of its
// leading digit, counted in digits from the point, and the exponent say which end it passed.
float beyondRange(const char* p, const char* end, char exponentLetter, int64_t exponentsPerDigit) {
  constexpr int64_t kFarExponent = 1'000'000'000'000;  // beyond any count of digits in a text
  int64_t place = 0;
  bool seenDigit = false;
  bool seenPoint = false;
  for (; p != end && lower(*p) != exponentLetter; ++p) {
    if (*p == '.') {
      seenPoint = true;
      continue;
    }
    seenDigit = seenDigit || *p != '0';
    if (seenDigit && !seenPoint) ++place;
    if (!seenDigit && seenPoint) --place;
  }
  int64_t exponent = 0;
  const bool negative = end - p > 1 && p[1] == '-';
  for (; p != end; ++p) {
    if (isDigit(*p)) exponent = std::min(exponent * 10 + (*p - '0'), kFarExponent);
  }
  const int64_t total = place * exponentsPerDigit + (negative ? -exponent : exponent);
  return total > 0 ? std::numeric_limits<float>::infinity() : 0.0F;
}

float exactValue(const char* begin, const char* end, std::chars_format format) {
  float value = 0;
  if (std::from_chars(begin, end, value, format).ec != std::errc::result_out_of_range) return value;
  const bool hexadecimal = format == std::chars_format::hex;
  return beyondRange(begin, end, hexadecimal ? 'p' : 'e', hexadecimal ? 4 : 1);
}

Magnitude parseHexadecimal(const char* begin, const char* end) {
  bool seenDigit = false;
  bool seenPoint = false;
  const char* p = begin;
  for (; p != end && (isHexDigit(*p) || (*p == '.' && !seenPoint)); ++p) {
    seenDigit = seenDigit || *p != '.';
    seenPoint = seenPoint || *p == '.';
  }
  if (p == begin) return {};
  if (!seenDigit) return {0, p};  // "0x." reads as its zero
  p = skipExponent(p, end, 'p');
  return {exactValue(begin, p, std::chars_format::hex), p};
}

// A number whose digits and whose power of ten are both exact as floats needs one division, rounded
// once; every other number goes to the general conversion.
Magnitude parseDecimal(const char* begin, const char* end) {
  constexpr uint64_t kExactInteger = 1U << 24;
  constexpr std::array<float, 11> kPowersOfTen{1e0F, 1e1F, 1e2F, 1e3F, 1e4F, 1e5F,
                                               1e6F, 1e7F, 1e8F, 1e9F, 1e10F};
  constexpr std::size_t kMostDigits = 19;  // more may overflow

  uint64_t digits = 0;
  const char* p = begin;
  for (; p != end && isDigit(*p); ++p) digits = digits * 10 + static_cast<uint64_t>(*p - '0');
  auto count = static_cast<std::size_t>(p - begin);
  std::size_t decimals = 0;
  if (p != end && *p == '.') {
    const char* fraction = ++p;
    for (; p != end && isDigit(*p); ++p) digits = digits * 10 + static_cast<uint64_t>(*p - '0');
    decimals = static_cast<std::size_t>(p - fraction);
    count += decimals;
  }
  if (count == 0) return {};
  const bool hasExponent = p != end && lower(*p) == 'e';
  if (!hasExponent && count <= kMostDigits && digits < kExactInteger &&
      decimals < kPowersOfTen.size()) {
    return {static_cast<float>(digits) / kPowersOfTen[decimals], p};
  }
  p = skipExponent(p, end, 'e');
  return {exactValue(begin, p, std::chars_format::general), p};
}

Magnitude parseMagnitude(const char* p, const char* end) {
  if (p == end) return {};
  if (isDigit(*p) || *p == '.') {
    if (startsWithWord(p, end, "0x")) return parseHexadecimal(p + 2, end);
    return parseDecimal(p, end);
  }
  if (startsWithWord(p, end, "nan")) return {std::numeric_limits<float>::quiet_NaN(), p + 3};
  if (!startsWithWord(p, end, "inf")) return {};
  const char* afterInf = p + 3;
  if (afterInf != end && lower(*afterInf) == 'i') {
    if (!startsWithWord(afterInf, end, "inity")) return {};
    afterInf += 5;
  }
  return {std::numeric_limits<float>::infinity(), afterInf};
}

}  // namespace

ParsedFloat parseFloat(std::string_view text) {
  const char* p = text.data();
  const char* const end = p + text.size();
  while (p != end && isSpace(*p)) ++p;
  const bool negative = p != end && *p == '-';
  if (p != end && (*p == '-' || *p == '+')) ++p;
  const Magnitude magnitude = parseMagnitude(p, end);
  if (magnitude.end == nullptr) return {0, 0};
  return {negative ? -magnitude.value : magnitude.value,
          static_cast<std::size_t>(magnitude.end - text.data())};
}

std::size_t formatFixed(float value, int decimals, std::span<char, kFixedTextSize> out) {
  constexpr std::array<double, 7> kPowersOfTen{1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6};
  // Below this, a float times a power of ten has at most 24 + 14 significant bits and fits an
  // integer: the product is exact in a double, and so is the decision how to round it.
  constexpr double kFastLimit = 1e9;

  const double magnitude = std::fabs(static_cast<double>(value));
  if (!(magnitude < kFastLimit)) {
    const auto result = std::to_chars(out.data(), out.data() + out.size(), value,
                                      std::chars_format::fixed, decimals);
    return static_cast<std::size_t>(result.ptr - out.data());
  }
  const double scaled = magnitude * kPowersOfTen[static_cast<std::size_t>(decimals)];
  auto digits = static_cast<uint64_t>(scaled);
  const double rest = scaled - static_cast<double>(digits);
  if (rest > 0.5 || (rest == 0.5 && digits % 2 == 1)) ++digits;

  std::array<char, kFixedTextSize> text;
  std::size_t begin = text.size();
  const auto prepend = [&text, &begin](char c) { text[--begin] = c; };
  const auto prependDigit = [&digits, &prepend] {
    prepend(static_cast<char>('0' + digits % 10));
    digits /= 10;
  };
  for (int i = 0; i < decimals; ++i) prependDigit();
  prepend('.');
  do {
    prependDigit();
  } while (digits != 0);
  if (std::signbit(value)) prepend('-');
  std::memcpy(out.data(), text.data() + begin, text.size() - begin);
  return text.size() - begin;
}

}  // namespace lumenforge
