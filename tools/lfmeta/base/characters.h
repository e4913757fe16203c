// UTF-8, character by character, which characters a terminal must not be given, and how else they
// are shown.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace lfmeta {

struct Character {
  char32_t code;
  std::size_t length;  // in bytes; 1 for a byte that begins no character
  bool known;          // false for such a byte
};

// The first character of a text that is not empty.
Character firstCharacter(std::string_view text);

bool isUtf8(std::string_view text);

// Drives the terminal, turns the direction of the text or cannot be seen.
bool isHidden(char32_t code);

// The number's last `digits` digits of base 16.
void appendHex(std::string& out, uint32_t number, int digits);

}  // namespace lfmeta
