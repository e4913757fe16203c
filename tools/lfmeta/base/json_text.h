// Values appended to a line of JSON, without a tree of them: for what is written in thousands.
#pragma once

#include <charconv>
#include <cmath>
#include <concepts>
#include <string>
#include <string_view>

namespace lfmeta {

// As jsonLine of base/json.h writes it, with its quotes.
void appendJsonText(std::string& out, std::string_view text);

// The shortest decimal that reads back as the same number; null for one that is not finite.
template <typename Number>
requires std::integral<Number> || std::floating_point<Number>
void appendNumber(std::string& out, Number number) {
  if constexpr (std::floating_point<Number>) {
    if (!std::isfinite(number)) {
      out += "null";
      return;
    }
  }
  char text[32];
  out.append(text, std::to_chars(text, text + sizeof text, number).ptr);
}

// A file's name for a program that needs its bytes: empty when the name is UTF-8, for then the name
// itself serves; else each backslash, control and byte beyond ASCII as \xNN, as printf '%b' reads.
std::string bytesOfName(const std::string& name);

}  // namespace lfmeta
