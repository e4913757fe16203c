#include "pictures/header_text.h"

#include <charconv>
#include <stdexcept>

namespace lfmeta {

namespace {

bool isSpace(unsigned char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

std::string_view textOf(std::span<const unsigned char> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace

std::string_view TextCursor::word() {
  std::size_t start = 0;
  bool comment = false;
  for (; start < rest_.size(); ++start) {
    const unsigned char c = rest_[start];
    comment = comment ? c != '\n' : c == '#';
    if (!comment && !isSpace(c)) break;
  }
  std::size_t end = start;
  while (end < rest_.size() && !isSpace(rest_[end])) ++end;
  const std::string_view found = textOf(rest_.subspan(start, end - start));
  rest_ = rest_.subspan(end < rest_.size() ? end + 1 : end);
  return found;
}

std::string_view TextCursor::line() {
  const std::string_view text = textOf(rest_);
  const std::size_t end = text.find('\n');
  if (end == std::string_view::npos) throw std::runtime_error("ends within its header");
  rest_ = rest_.subspan(end + 1);
  return text.substr(0, end);
}

uint32_t TextCursor::number(uint32_t largest) {
  return parseNumber(word(), largest);
}

uint32_t parseNumber(std::string_view text, uint32_t largest) {
  uint32_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (text.empty() || error != std::errc() || end != text.data() + text.size() || value > largest) {
    throw std::runtime_error(text.empty() ? "ends too early"
                                          : "has \"" + std::string(text.substr(0, 20)) +
                                                "\" where a number of at most " +
                                                std::to_string(largest) + " should stand");
  }
  return value;
}

}  // namespace lfmeta
