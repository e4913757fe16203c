#include "photos/iptc_keywords.h"

#include <LumenforgeMetaLib.h>

#include <algorithm>
#include <string_view>

#include "base/characters.h"
#include "base/failure.h"

namespace lfmeta {

namespace {

using namespace std::string_view_literals;

constexpr auto kUtf8 = "\x1B%G"sv;  // the escape sequence of ISO 2022 that announces it
constexpr std::size_t kHeaderSize = 5;

bool isAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

void addKeyword(const std::string& keyword, const std::string& photo, Bytes& iptc) {
  constexpr std::size_t kMostAdded = 12;  // a new block's first dataset and the keyword's header
  Bytes longer(iptc.size() + kMostAdded + keyword.size());
  const int result =
      add_iptc_keyword(static_cast<int>(iptc.size()), iptc.data(), static_cast<int>(keyword.size()),
                       reinterpret_cast<const unsigned char*>(keyword.data()), longer.data());
  if (result == -2) throw UsageFailure("--keyword", "takes at most 65535 bytes");
  if (result < 0) throw Failure(photo, "has a damaged IPTC block; no keyword can be added to it");
  longer.resize(longer.size() - (iptc.empty() ? 0 : 7));
  iptc = std::move(longer);
}

struct CharacterSet {
  bool announced = false;
  bool utf8 = true;       // as announced, else as the texts allow
  std::size_t place = 0;  // where its dataset belongs
};

CharacterSet characterSetOf(const Bytes& iptc) {
  CharacterSet found;
  const std::string_view all(reinterpret_cast<const char*>(iptc.data()), iptc.size());
  std::size_t at = 0;
  while (at + kHeaderSize <= iptc.size() && iptc[at] == 0x1C) {
    const std::size_t size = std::size_t{iptc[at + 3]} << 8 | iptc[at + 4];
    const bool envelope = iptc[at + 1] == 1;
    if (size > iptc.size() - at - kHeaderSize) break;
    const std::string_view data = all.substr(at + kHeaderSize, size);
    if (envelope && iptc[at + 2] == 90) return {true, data == kUtf8, 0};
    if (envelope && iptc[at + 2] < 90) found.place = at + kHeaderSize + size;
    found.utf8 &= isUtf8(data);
    at += kHeaderSize + size;
  }
  return found;
}

}  // namespace

void addKeywords(const std::vector<std::string>& keywords, const std::string& photo, Bytes& iptc) {
  const bool ascii = std::all_of(keywords.begin(), keywords.end(), isAscii);
  if (!std::all_of(keywords.begin(), keywords.end(), isUtf8)) {
    throw UsageFailure("--keyword", "takes text in UTF-8");
  }
  if (!ascii && !characterSetOf(iptc).utf8) {
    throw Failure(photo,
                  "has IPTC texts in another character set than UTF-8; only a keyword in "
                  "ASCII can be added to them");
  }
  for (const std::string& keyword : keywords) addKeyword(keyword, photo, iptc);
  const CharacterSet present = characterSetOf(iptc);
  if (ascii || present.announced) return;
  constexpr auto kDataset = "\x1C\x01\x5A\0\x03\x1B%G"sv;
  iptc.insert(iptc.begin() + static_cast<std::ptrdiff_t>(present.place), kDataset.begin(),
              kDataset.end());
}

}  // namespace lfmeta
