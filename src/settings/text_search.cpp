#include "settings/text_search.h"

#include <emmintrin.h>

#include <array>
#include <cstring>

namespace lumenforge {
namespace {

// The places of two neighbouring bytes: which of 64 places, or whether any of 128; reads one byte
// more.
class PairPlaces {
 public:
  static constexpr std::size_t kBlock = 64;

  explicit PairPlaces(const char* pair)
      : first_(_mm_set1_epi8(pair[0])), second_(_mm_set1_epi8(pair[1])) {}

  bool anyInTwoBlocks(const char* p) const {
    return bits(_mm_or_si128(any(p), any(p + kBlock))) != 0;
  }

  uint64_t inBlock(const char* p) const {
    return bits(at(p)) | bits(at(p + 16)) << 16 | bits(at(p + 32)) << 32 | bits(at(p + 48)) << 48;
  }

 private:
  static __m128i load(const char* p) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
  }
  static uint64_t bits(__m128i places) { return static_cast<uint32_t>(_mm_movemask_epi8(places)); }
  __m128i at(const char* p) const {
    return _mm_and_si128(_mm_cmpeq_epi8(load(p), first_), _mm_cmpeq_epi8(load(p + 1), second_));
  }
  __m128i any(const char* p) const {
    return _mm_or_si128(_mm_or_si128(at(p), at(p + 16)), _mm_or_si128(at(p + 32), at(p + 48)));
  }

  __m128i first_;
  __m128i second_;
};

}  // namespace

Candidates::Candidates(std::string_view text, std::size_t from, const Needle& needle)
    : text_(text), needle_(needle), unseen_(from + needle.anchor) {}

// Moves on to the next block with candidates. The last places of the text are looked at in a copy
// with zeros behind it, which no needle holds.
bool Candidates::findBlock() {
  constexpr std::size_t kBlock = PairPlaces::kBlock;
  const PairPlaces places(needle_.text.data() + needle_.anchor);
  while (unseen_ < text_.size()) {
    const char* const p = text_.data() + unseen_;
    const std::size_t left = text_.size() - unseen_;
    if (left > kBlock) {
      bits_ = places.inBlock(p);
    } else {
      std::array<char, kBlock + 1> last{};
      std::memcpy(last.data(), p, left);
      bits_ = places.inBlock(last.data());
    }
    block_ = unseen_;
    unseen_ += kBlock;
    if (bits_ != 0) return true;
    while (unseen_ + 2 * kBlock < text_.size() && !places.anyInTwoBlocks(text_.data() + unseen_)) {
      unseen_ += 2 * kBlock;
    }
  }
  return false;
}

std::size_t find(std::string_view text, std::size_t from, const Needle& needle) {
  Candidates candidates(text, from, needle);
  std::size_t at = candidates.next();
  while (at != kNowhere && !text.substr(at).starts_with(needle.text)) at = candidates.next();
  return at;
}

std::size_t findQuoted(std::string_view text, std::size_t from, const Needle& needle,
                       std::string_view rest) {
  Candidates candidates(text, from, needle);
  for (std::size_t at = candidates.next(); at != kNowhere; at = candidates.next()) {
    if (!text.substr(at).starts_with(needle.text)) continue;
    const std::string_view quoted = textFrom(text, at + needle.text.size());
    if ((quoted.starts_with('\'') || quoted.starts_with('"')) &&
        quoted.substr(1).starts_with(rest)) {
      return at;
    }
  }
  return kNowhere;
}

}  // namespace lumenforge
