// Numbers to text and back as C's printf and scanf do in the "C" locale, whatever the host's
// locale.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

namespace lumenforge {

struct ParsedFloat {
  float value;
  std::size_t length;  // bytes consumed, with the white space before the number; 0: no number
};

// A float at the start of `text` as scanf's "%f" reads it: white space before it, a sign, decimal
// or hexadecimal digits with an exponent, "inf", "infinity" or "nan" in any case. Rounded once, to
// the nearest float; too large is infinity, too small is zero. As glibc's scanf, an exponent
// without digits ("1e", "0x1p+") is consumed and ignored, "nan" takes no parenthesis, and "infi"
// without the rest is no number.
ParsedFloat parseFloat(std::string_view text);

// The longest text of a float: a sign, 39 digits, a full stop and six digits.
inline constexpr std::size_t kFixedTextSize = 47;

// Writes `value` with 1 to 6 decimals as printf's "%.*f" does and returns the text's length.
std::size_t formatFixed(float value, int decimals, std::span<char, kFixedTextSize> out);

}  // namespace lumenforge
