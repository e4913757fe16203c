#include "base/json.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <string_view>

#include "base/characters.h"
#include "base/json_text.h"

namespace lfmeta {

namespace {

bool isPlain(char c) {
  return c >= ' ' && c < 0x7F;
}

// Characters beyond 16 bits as two surrogates.
void appendEscaped(std::string& out, char32_t code) {
  if (code >= 0x10000) {
    appendEscaped(out, 0xD7C0 + (code >> 10));
    code = 0xDC00 + (code & 0x3FF);
  }
  out += "\\u";
  appendHex(out, code, 4);
}

}  // namespace

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
