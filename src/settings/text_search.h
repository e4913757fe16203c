// Byte-exact searches in packet texts. A text is bytes with a length; a NUL in it is one of them.
#pragma once

#include <cstddef>
#include <string_view>

namespace lumenforge {

inline constexpr std::size_t kNowhere = std::string_view::npos;

// A fixed text to look for. `anchor` is the place of two neighbouring bytes of it that are rare in
// packets: the search looks for these two, sixteen places at a time, and compares the rest there.
struct Needle {
  std::string_view text;
  std::size_t anchor = 0;
};

// The first place of the needle in `text` at or after `from`, or kNowhere. Reads nothing outside
// `text`.
std::size_t find(std::string_view text, std::size_t from, const Needle& needle);

// A needle, an apostrophe or a double quote, and `rest`: the opening of a namespace declaration.
std::size_t findQuoted(std::string_view text, std::size_t from, const Needle& needle,
                       std::string_view rest);

// What stands at and after `offset`, which may lie beyond the text.
constexpr std::string_view textFrom(std::string_view text, std::size_t offset) {
  return offset < text.size() ? text.substr(offset) : std::string_view();
}

// The bytes of a C buffer.
inline std::string_view textOf(const unsigned char* bytes, std::size_t size) {
  return {reinterpret_cast<const char*>(bytes), size};
}

}  // namespace lumenforge
