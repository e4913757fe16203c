#include "settings/text_search.h"

#include <emmintrin.h>

#include <bit>
#include <cstring>

namespace lumenforge {

namespace {

// One bit for each of the sixteen places from `p` on where `first` and `second` stand side by side;
// reads 17 bytes.
class PairFinder {
 public:
  explicit PairFinder(const char* pair)
      : pair_{pair[0], pair[1]}, first_(_mm_set1_epi8(pair[0])), second_(_mm_set1_epi8(pair[1])) {}

  // The first place of the pair in the bytes from `p` to `end`, or `end`.
  const char* find(const char* p, const char* end) const {
    for (; end - p > 64; p += 64) {
      const __m128i places[] = {matches(p), matches(p + 16), matches(p + 32), matches(p + 48)};
      const __m128i any =
          _mm_or_si128(_mm_or_si128(places[0], places[1]), _mm_or_si128(places[2], places[3]));
      if (bits(any) == 0) continue;
      const uint64_t all = uint64_t{bits(places[0])} | uint64_t{bits(places[1])} << 16 |
                           uint64_t{bits(places[2])} << 32 | uint64_t{bits(places[3])} << 48;
      return p + std::countr_zero(all);
    }
    for (; end - p > 16; p += 16) {
      if (const uint32_t found = bits(matches(p)); found != 0) return p + std::countr_zero(found);
    }
    for (; end - p > 1; ++p) {
      if (p[0] == pair_[0] && p[1] == pair_[1]) return p;
    }
    return end;
  }

 private:
  static __m128i load(const char* p) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
  }
  static uint32_t bits(__m128i matches) {
    return static_cast<uint32_t>(_mm_movemask_epi8(matches));
  }
  __m128i matches(const char* p) const {
    return _mm_and_si128(_mm_cmpeq_epi8(load(p), first_), _mm_cmpeq_epi8(load(p + 1), second_));
  }

  char pair_[2];
  __m128i first_;
  __m128i second_;
};

}  // namespace

std::size_t find(std::string_view text, std::size_t from, const Needle& needle) {
  const std::size_t size = needle.text.size();
  if (size < 2) return text.find(needle.text, from);
  if (from > text.size() || size > text.size() - from) return kNowhere;

  const PairFinder pair(needle.text.data() + needle.anchor);
  const char* const end = text.data() + text.size() - (size - needle.anchor - 2);
  const char* p = text.data() + from + needle.anchor;
  while ((p = pair.find(p, end)) != end) {
    const char* start = p - needle.anchor;
    if (std::memcmp(start, needle.text.data(), size) == 0) {
      return static_cast<std::size_t>(start - text.data());
    }
    ++p;
  }
  return kNowhere;
}

std::size_t findQuoted(std::string_view text, std::size_t from, const Needle& needle,
                       std::string_view rest) {
  std::size_t at = from;
  while ((at = find(text, at, needle)) != kNowhere) {
    const std::string_view quoted = textFrom(text, at + needle.text.size());
    if ((quoted.starts_with('\'') || quoted.starts_with('"')) &&
        quoted.substr(1).starts_with(rest)) {
      return at;
    }
    ++at;
  }
  return kNowhere;
}

}  // namespace lumenforge
