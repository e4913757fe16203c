#include "base/report.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdio>

#include "base/characters.h"
#include "base/json_text.h"

namespace lfmeta {

namespace {

bool isPlain(char c) {
  return c >= ' ' && c < 0x7F;
}

void appendHex(std::string& out, const char* prefix, unsigned number, int digits) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  out += prefix;
  while (digits-- > 0) out += kDigits[number >> (4 * digits) & 15];
}

// As JSON has it: characters beyond 16 bits as two surrogates.
void appendEscaped(std::string& out, char32_t code) {
  if (code >= 0x10000) {
    appendHex(out, "\\u", 0xD7C0 + (code >> 10), 4);
    code = 0xDC00 + (code & 0x3FF);
  }
  appendHex(out, "\\u", code, 4);
}

}  // namespace

void printFailure(std::string_view subject, std::string_view message) {
  std::string line = "lfmeta: " + printable(subject);
  if (!subject.empty()) line += ": ";
  line += printable(message) + "\n";
  std::fflush(stdout);
  // At once, and not through stderr, which the library's own messages go to.
  for (std::string_view rest = line; !rest.empty();) {
    const ssize_t count = write(STDERR_FILENO, rest.data(), rest.size());
    if (count < 0 && errno != EINTR) return;
    rest.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
  }
}

std::string printable(std::string_view text) {
  if (std::all_of(text.begin(), text.end(), isPlain)) return std::string(text);
  std::string out;
  while (!text.empty()) {
    const Character next = firstCharacter(text);
    const std::string_view bytes = text.substr(0, next.length);
    if (next.known && !isHidden(next.code)) {
      out += bytes;
    } else {
      for (const char byte : bytes) appendHex(out, "\\x", static_cast<unsigned char>(byte), 2);
    }
    text.remove_prefix(next.length);
  }
  return out;
}

std::string jsonLine(const Json& value) {
  std::string line = value.dump(-1, ' ', false, Json::error_handler_t::replace);
  if (std::all_of(line.begin(), line.end(), isPlain)) return line;
  std::string out;
  for (std::string_view rest = line; !rest.empty();) {
    const Character next = firstCharacter(rest);
    if (isHidden(next.code)) {
      appendEscaped(out, next.code);
    } else {
      out += rest.substr(0, next.length);
    }
    rest.remove_prefix(next.length);
  }
  return out;
}

Json jsonNumber(float value) {
  if (!std::isfinite(value)) return nullptr;
  std::array<char, 32> text{};
  const char* end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
  double number = 0;
  std::from_chars(text.data(), end, number);
  return number;
}

Json textOrNull(const std::string& text) {
  return text.empty() ? Json() : Json(text);
}

Json jsonOfFile(const std::string& path) {
  return {{"file", path}, {"fileBytes", textOrNull(bytesOfName(path))}};
}

}  // namespace lfmeta
