#include "pictures/header_text.h"

#include <charconv>
#include <stdexcept>

namespace lfmeta {

namespace {

constexpr std::size_t kLongestText = 256;

bool isSpace(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

void append(std::string& text, char c) {
  if (text.size() < kLongestText) text += c;
}

}  // namespace

unsigned char TextReader::byte() {
  const int c = getc_unlocked(stream_);
  if (c == EOF) throw std::runtime_error("ends too early");
  return static_cast<unsigned char>(c);
}

void TextReader::bytes(std::span<unsigned char> out) {
  if (fread_unlocked(out.data(), 1, out.size(), stream_) != out.size()) {
    throw std::runtime_error("ends before its pixels do");
  }
}

char TextReader::character() {
  for (bool comment = false;;) {
    const char c = static_cast<char>(byte());
    comment = comment ? c != '\n' : c == '#';
    if (!comment && !isSpace(c)) return c;
  }
}

std::string TextReader::word() {
  std::string found(1, character());
  for (int c = getc_unlocked(stream_); c != EOF && !isSpace(static_cast<char>(c));
       c = getc_unlocked(stream_)) {
    append(found, static_cast<char>(c));
  }
  return found;
}

std::string TextReader::line() {
  std::string found;
  for (char c = static_cast<char>(byte()); c != '\n'; c = static_cast<char>(byte())) {
    append(found, c);
  }
  return found;
}

uint32_t TextReader::number(uint32_t largest) {
  const std::string text = word();
  uint32_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || value > largest) {
    throw std::runtime_error("has \"" + text.substr(0, 20) + "\" where a number of at most " +
                             std::to_string(largest) + " should stand");
  }
  return value;
}

}  // namespace lfmeta
