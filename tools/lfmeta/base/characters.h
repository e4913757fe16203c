// UTF-8, character by character, and which characters a terminal must not be given.
#pragma once

#include <cstddef>
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

}  // namespace lfmeta
