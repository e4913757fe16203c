// The header texts of the simple picture formats, read within their bytes.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace lfmeta {

class TextCursor {
 public:
  explicit TextCursor(std::span<const unsigned char> bytes) : rest_(bytes) {}

  std::span<const unsigned char> rest() const { return rest_; }
  // The next run of characters that are no white space; comments from # to the line's end are
  // passed over. Takes the one white-space character behind it, too. Empty at the end.
  std::string_view word();
  // Up to the line feed, which is taken, too. Throws std::runtime_error when the bytes end first.
  std::string_view line();
  // The next word as a decimal number of at most `largest`. Throws std::runtime_error.
  uint32_t number(uint32_t largest);

 private:
  std::span<const unsigned char> rest_;
};

// The whole text as a number of at most `largest`. Throws std::runtime_error.
uint32_t parseNumber(std::string_view text, uint32_t largest);

}  // namespace lfmeta
