// An image description text -> exposure time and ISO speed.
//
// The text is a list of items, a comma and a space between them. Item 7, counted from 0, holds the
// exposure time, e.g. "1/250s"; items 8 to 10 hold three channel values, e.g. "R60", "G58", "B61".
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <span>
#include <string_view>

#include "LumenforgeMetaLib.h"
#include "base/growing_buffer.h"

namespace lumenforge {
namespace {

constexpr std::string_view kSeparator = ", ";
constexpr int kExposureItem = 7;
constexpr int kLastChannelItem = 10;
constexpr std::size_t kMaxTokenLength = 6;
constexpr int kNotFound = -1;

struct Description {
  int numerator = 0;
  int64_t denominator = 0;
  int red = kNotFound;
  int green = kNotFound;
  int blue = kNotFound;
  int lastChannel = 0;
  bool stopped = false;  // by an overlong token, or by the last channel
};

bool readText(std::FILE* f, std::size_t length, GrowingBuffer& text) {
  while (text.size() < length) {
    const std::span<uint8_t> next = text.extend(length - text.size());
    if (next.empty() || std::fread(next.data(), 1, next.size(), f) < next.size()) return false;
  }
  return true;
}

std::string_view tokenAt(std::string_view text, std::size_t begin, std::string_view delimiters) {
  return text.substr(begin, text.find_first_of(delimiters, begin) - begin);
}

// At most six characters, each taken for a digit whatever it is.
int decimalValue(std::string_view token) {
  int value = 0;
  for (const char c : token) value = 10 * value + (static_cast<unsigned char>(c) - '0');
  return value;
}

// Of a fraction the digits after its last full stop. An overlong token stops all parsing.
int exposureNumber(std::string_view token, Description& d) {
  if (token.size() > kMaxTokenLength) {
    d.stopped = true;
    return 0;
  }
  return decimalValue(token.substr(token.rfind('.') + 1));
}

// The first number that is not 0, and what follows its slash. Only a space or an "s" ends a
// denominator: one that neither ends within the item takes the item's comma for a digit.
void parseExposure(std::string_view text, std::size_t begin, Description& d) {
  const std::size_t end = std::min(text.find(kSeparator, begin), text.size());
  std::size_t at = begin;
  while (at < end && d.numerator == 0 && !d.stopped) {
    if (text[at] == ' ') {
      ++at;
      continue;
    }
    const std::string_view numerator = tokenAt(text, at, " /s");
    d.numerator = exposureNumber(numerator, d);
    at += numerator.size();
    if (text.substr(at, 1) == "/") {
      const std::string_view denominator = tokenAt(text, at + 1, " s");
      d.denominator += exposureNumber(denominator, d);
      at += denominator.size();
    }
    ++at;
  }
}

int* channelOf(char letter, Description& d) {
  switch (letter) {
    case 'R':
      return &d.red;
    case 'G':
      return &d.green;
    case 'B':
      return &d.blue;
    default:
      return nullptr;
  }
}

void parseChannels(std::string_view text, std::size_t begin, Description& d) {
  const std::size_t end = std::min(text.find(kSeparator, begin), text.size());
  for (std::size_t at = begin; at < end && !d.stopped; ++at) {
    int* channel = channelOf(text[at], d);
    if (channel == nullptr) continue;
    const std::string_view token = tokenAt(text, at + 1, ",. ");
    d.stopped = token.size() > kMaxTokenLength || channel == &d.blue;
    d.lastChannel = token.size() > kMaxTokenLength ? 0 : decimalValue(token);
    *channel = d.lastChannel;
    at += token.size();
  }
}

Description parse(std::string_view text) {
  Description d;
  std::size_t begin = 0;
  for (int item = 1; item <= kLastChannelItem; ++item) {
    const std::size_t separator = text.find(kSeparator, begin);
    if (separator == std::string_view::npos) break;
    begin = separator + kSeparator.size();
    if (item == kExposureItem) parseExposure(text, begin, d);
    if (item > kExposureItem) parseChannels(text, begin, d);
  }
  return d;
}

// ISO 200, m/30 stops up, in steps of 200.
uint32_t isoOf(int m) {
  constexpr uint32_t kStep = 200;
  constexpr uint32_t kMostSteps = std::numeric_limits<uint32_t>::max() / kStep;
  const double steps = std::exp2(m * 0.03333333333333333);
  return kStep * static_cast<uint32_t>(std::min<double>(steps, kMostSteps));
}

void store(const Description& d, ExifInfo& info) {
  const auto [lowest, highest] = std::minmax({d.red, d.green, d.blue});
  if (lowest < 0) return;
  info.iso = isoOf((lowest + highest) / 2);
  if (d.denominator < 1) return;
  info.exposureTime = static_cast<float>(d.numerator) / static_cast<float>(d.denominator);
  const auto isPlausible = [](int value) { return value >= 1 && value <= 99998; };
  if (isPlausible(d.numerator) && isPlausible(d.lastChannel)) info.valueSource = 2;
}

}  // namespace
}  // namespace lumenforge

int parse_image_description(FILE* f, int length, ExifInfo* info) {
  using namespace lumenforge;
  if (length <= 0) return LUMENFORGE_CANNOT_READ;
  GrowingBuffer buffer;
  if (!readText(f, static_cast<std::size_t>(length), buffer)) return LUMENFORGE_CANNOT_READ;
  // A stored length counts the final NUL, or several; no token shall take them for digits.
  const std::string_view text = buffer.text();
  const Description d = parse(text.substr(0, text.find_last_not_of('\0') + 1));
  store(d, *info);
  return d.lastChannel;
}
