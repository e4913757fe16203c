// The lens of a packet: aux:Lens as an element or as an attribute in double quotes.
#include <algorithm>
#include <cstring>

#include "settings/settings_reader.h"
#include "settings/text_search.h"
#include "settings/xmp_texts.h"

namespace lumenforge {

namespace {

constexpr Needle kDeclaration{"xmlns:aux=", 7};  // "ux"
constexpr std::size_t kDeclarationSize = kDeclaration.text.size() + 1 + kAuxNamespace.size();
static_assert(kDeclarationSize == 44);
constexpr Needle kLens{"aux:Lens", 1};
constexpr std::string_view kEndTag = "</aux:Lens";
constexpr std::size_t kLongestLens = 63;

// aux:Lens followed by "=" or ">"; other names of the schema begin with the same letters.
std::size_t findLens(std::string_view text, std::size_t from) {
  Occurrences names(text, from, kLens);
  std::size_t at = names.next();
  while (at != kNowhere) {
    const std::string_view rest = textFrom(text, at + kLens.text.size());
    if (rest.starts_with('=') || rest.starts_with('>')) break;
    at = names.next();
  }
  return at;
}

// Copies the text from `begin` to `closing`, unless it is longer than a lens may be.
std::size_t copyLens(std::string_view text, std::size_t begin, std::string_view closing,
                     std::size_t searchEnd, char* lensOut) {
  const std::size_t stop = std::min(begin + kLongestLens + 1, searchEnd);
  for (std::size_t end = begin; end < stop; ++end) {
    if (!text.substr(end).starts_with(closing)) continue;
    std::memcpy(lensOut, text.data() + begin, end - begin);
    return end;
  }
  return stop;
}

}  // namespace

int readLens(std::string_view text, char* lensOut) {
  const std::size_t length = text.size();
  if (length <= kDeclarationSize) return 0;
  const std::size_t declaration = findQuoted(text, 0, kDeclaration, kAuxNamespace);
  if (declaration == kNowhere) return static_cast<int>(length - kDeclarationSize);
  const std::size_t from = declaration + kDeclarationSize;
  if (length <= from + kLens.text.size()) return static_cast<int>(from);
  const std::size_t name = findLens(text, from);
  if (name == kNowhere) return static_cast<int>(length - kLens.text.size());

  const std::size_t terminator = name + kLens.text.size();
  const bool isAttribute = text[terminator] == '=';
  const std::size_t value = terminator + (isAttribute ? 2 : 1);
  const std::string_view closing = isAttribute ? std::string_view("\"") : kEndTag;
  const std::size_t searchEnd = isAttribute ? length : length - kEndTag.size();
  if (value >= searchEnd) return static_cast<int>(value);
  return static_cast<int>(copyLens(text, value, closing, searchEnd, lensOut));
}

}  // namespace lumenforge
