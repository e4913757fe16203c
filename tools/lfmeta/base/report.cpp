#include "base/report.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace lfmeta {

void printFailure(std::string_view file, std::string_view message) {
  const std::string line = "lfmeta: " + printable(file) + ": " + printable(message) + "\n";
  std::fflush(stdout);
  std::fwrite(line.data(), 1, line.size(), stderr);
}

std::string printable(std::string_view text) {
  std::string out(text);
  unsigned char before = 0;
  for (std::size_t i = 0; i < out.size(); ++i) {
    const auto byte = static_cast<unsigned char>(out[i]);
    const bool secondSet = before == 0xC2 && byte >= 0x80 && byte < 0xA0;  // U+0080 to U+009F
    if (secondSet) out[i - 1] = '?';
    if (secondSet || byte < 0x20 || byte == 0x7F) out[i] = '?';
    before = byte;
  }
  return out;
}

std::string jsonLine(const Json& value) {
  return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

Json jsonNumber(float value) {
  if (!std::isfinite(value)) return nullptr;
  std::array<char, 32> text{};
  const char* end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
  double number = 0;
  std::from_chars(text.data(), end, number);
  return number;
}

}  // namespace lfmeta
