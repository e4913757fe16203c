// Byte-exact searches in packet texts. A text is bytes with a length; a NUL in it is one of them.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace lumenforge {

inline constexpr std::size_t kNowhere = std::string_view::npos;

// A fixed text to look for, at least two bytes and no NUL in them. `anchor` is the place of two
// neighbouring bytes of it that are rare in packets.
struct Needle {
  std::string_view text;
  std::size_t anchor = 0;
};

// The places where a needle may stand in a text, one after the other, in one pass: those of its two
// rare bytes, looked for at 64 places at a time. Whether the rest stands there as well is for the
// caller to see. Reads nothing outside the text.
class Candidates {
 public:
  Candidates(std::string_view text, std::size_t from, const Needle& needle);

  // The next place, or kNowhere when there is none left.
  std::size_t next() {
    if (bits_ == 0 && !findBlock()) return kNowhere;
    const auto inBlock = static_cast<std::size_t>(std::countr_zero(bits_));
    bits_ &= bits_ - 1;
    return block_ + inBlock - needle_.anchor;
  }

 private:
  bool findBlock();

  std::string_view text_;
  Needle needle_;
  std::size_t unseen_;     // where the next block of 64 places begins
  std::size_t block_ = 0;  // where the current one begins
  uint64_t bits_ = 0;      // its places still to come, from the lowest bit on
};

// The first place of the needle at or after `from`, or kNowhere.
std::size_t find(std::string_view text, std::size_t from, const Needle& needle);

// The first place of a needle that an apostrophe or a double quote and then `rest` follow, as in
// the declaration of a namespace.
std::size_t findQuoted(std::string_view text, std::size_t from, const Needle& needle,
                       std::string_view rest);

// What stands at and after `offset`, which may lie beyond the text.
constexpr std::string_view textFrom(std::string_view text, std::size_t offset) {
  return offset < text.size() ? text.substr(offset) : std::string_view();
}

// Behind the last place, at or after `from`, at which `size` bytes of the text stand.
constexpr std::size_t endOfPlaces(std::string_view text, std::size_t from, std::size_t size) {
  return std::max(from + size, text.size() + 1) - size;
}

}  // namespace lumenforge
