// The lens of a packet: aux:Lens as an element, or as an attribute that a double quote closes.
#include <algorithm>

#include "settings/packet.h"
#include "settings/text_search.h"
#include "settings/xmp_texts.h"

namespace lumenforge {
namespace {

constexpr Needle kDeclaration{"xmlns:aux=", 7};  // "ux"
constexpr std::size_t kDeclarationSize = kDeclaration.text.size() + 1 + kAuxNamespace.size();
static_assert(kDeclarationSize == 44);
constexpr Needle kLens{"aux:Lens", 1};
constexpr std::string_view kEndTag = "</aux:Lens";

// aux:Lens followed by "=" or ">"; other names of the schema begin with the same letters.
std::size_t findName(std::string_view text, std::size_t from) {
  Candidates names(text, from, kLens);
  for (std::size_t at = names.next(); at != kNowhere; at = names.next()) {
    if (!text.substr(at).starts_with(kLens.text)) continue;
    const std::string_view rest = text.substr(at + kLens.text.size());
    if (rest.starts_with('=') || rest.starts_with('>')) return at;
  }
  return kNowhere;
}

// The text from `begin` to `closing`, unless it is longer than a lens may be.
PacketLens lensUpTo(std::string_view closing, std::string_view text, std::size_t begin,
                    std::size_t searchEnd) {
  const std::size_t stop = std::min(begin + kLongestLens + 1, searchEnd);
  for (std::size_t end = begin; end < stop; ++end) {
    if (textFrom(text, end).starts_with(closing)) return {text.substr(begin, end - begin), end};
  }
  return {{}, std::max(begin, stop)};
}

}  // namespace

PacketLens findLens(std::string_view text) {
  const std::size_t declaration = findQuoted(text, 0, kDeclaration, kAuxNamespace);
  if (declaration == kNowhere) return {{}, endOfPlaces(text, 0, kDeclarationSize)};
  const std::size_t from = declaration + kDeclarationSize;
  const std::size_t name = findName(text, from);
  if (name == kNowhere) return {{}, endOfPlaces(text, from, kLens.text.size())};

  const std::size_t terminator = name + kLens.text.size();
  if (text[terminator] == '>') {
    const std::size_t value = terminator + 1;
    return lensUpTo(kEndTag, text, value, endOfPlaces(text, value, kEndTag.size()));
  }
  return lensUpTo("\"", text, terminator + 2, text.size() + 1);
}

}  // namespace lumenforge
