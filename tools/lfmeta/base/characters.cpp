#include "base/characters.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace lfmeta {

namespace {

struct Range {
  char32_t first;
  char32_t last;
};

// Controls, marks of direction, joiners and spaces without width, separators of lines, tags.
constexpr Range kHidden[] = {
    {0x00, 0x1F},     {0x7F, 0x9F},     {0xAD, 0xAD},       {0x61C, 0x61C},
    {0x180E, 0x180E}, {0x200B, 0x200F}, {0x2028, 0x202E},   {0x2060, 0x206F},
    {0xFEFF, 0xFEFF}, {0xFFF9, 0xFFFB}, {0xE0000, 0xE007F},
};

}  // namespace

Character firstCharacter(std::string_view text) {
  constexpr std::array<char32_t, 5> kLeastOfLength{0, 0, 0x80, 0x800, 0x10000};
  const auto lead = static_cast<unsigned char>(text.front());
  const Character unknown{lead, 1, false};
  if (lead < 0x80) return {lead, 1, true};
  if (lead < 0xC0 || lead > 0xF4) return unknown;
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (text.size() < length) return unknown;
  char32_t code = lead & (0x7FU >> length);
  for (const char next : text.substr(1, length - 1)) {
    const auto byte = static_cast<unsigned char>(next);
    if ((byte & 0xC0U) != 0x80) return unknown;
    code = code << 6 | (byte & 0x3FU);
  }
  const bool surrogate = code >= 0xD800 && code < 0xE000;
  if (code < kLeastOfLength[length] || surrogate || code > 0x10FFFF) return unknown;
  return {code, length, true};
}

bool isUtf8(std::string_view text) {
  while (!text.empty()) {
    const Character next = firstCharacter(text);
    if (!next.known) return false;
    text.remove_prefix(next.length);
  }
  return true;
}

bool isHidden(char32_t code) {
  return std::any_of(std::begin(kHidden), std::end(kHidden),
                     [&](const Range& range) { return code >= range.first && code <= range.last; });
}

void appendHex(std::string& out, uint32_t number, int digits) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  while (digits-- > 0) out += kDigits[number >> (4 * digits) & 15];
}

}  // namespace lfmeta
