#include "settings/names.h"

namespace lumenforge {
namespace {

// Names by hash, so that a name found in a packet costs one comparison. No two names share a place.
constexpr std::size_t kHashPlaces = 128;

constexpr std::size_t placeOf(std::string_view text) {
  const std::size_t first = static_cast<unsigned char>(text.front());
  const std::size_t last = static_cast<unsigned char>(text.back());
  return (text.size() * 5 + first * 14 + last * 7) % kHashPlaces;
}

constexpr auto kNamesByHash = [] {
  std::array<Name, kHashPlaces> names{};
  names.fill(kNoName);
  for (std::size_t i = 0; i < kNames.size(); ++i) names[placeOf(kNames[i])] = static_cast<Name>(i);
  return names;
}();
static_assert(std::count(kNamesByHash.begin(), kNamesByHash.end(), kNoName) ==
                  kHashPlaces - kNames.size(),
              "two names share a place: change the factors of placeOf");

}  // namespace

Name nameOf(std::string_view text) {
  if (text.empty()) return kNoName;
  const Name name = kNamesByHash[placeOf(text)];
  return name != kNoName && textOf(name) == text ? name : kNoName;
}

}  // namespace lumenforge
