// An ICC profile (ICC.1, the profile description tag) -> a display name.
#include <cstring>
#include <string_view>

#include "LumenforgeMetaLib.h"

namespace {

using namespace std::string_view_literals;

constexpr int kNoDescription = -1;
constexpr int kNameSize = 32;
constexpr int kMinProfileSize = 49;
constexpr std::size_t kSearchStart = 32;
// The description tag's type, its reserved bytes, and the high bytes of a count below 256.
constexpr auto kDescriptionStart = "desc\0\0\0\0\0\0\0"sv;
constexpr std::size_t kCountOffset = kDescriptionStart.size();
constexpr std::size_t kTextOffset = kCountOffset + 1;
constexpr std::size_t kLastStart = 17;  // a description begins at least so far before the end

constexpr char kKnownNames[][13] = {"sRGB", "Adobe RGB", "ProPhoto RGB"};

// The known name that comes first in a description of `count` characters at the start of `text`.
std::string_view findKnownName(std::string_view text, std::size_t count) {
  for (std::size_t i = 0; i < count && i < text.size(); ++i) {
    for (const std::string_view name : kKnownNames) {
      if (text.substr(i).starts_with(name)) return name;
    }
  }
  return {};
}

}  // namespace

int get_profile_name(int size, const unsigned char* profile, char* name) {
  std::memset(name, 0, kNameSize);
  if (size < kMinProfileSize) return kNoDescription;
  const std::string_view bytes(reinterpret_cast<const char*>(profile),
                               static_cast<std::size_t>(size));
  const std::size_t start = bytes.find(kDescriptionStart, kSearchStart);
  if (start == std::string_view::npos || start > bytes.size() - kLastStart) return kNoDescription;

  const std::string_view text = bytes.substr(start + kTextOffset);
  const std::size_t count = profile[start + kCountOffset];
  const std::string_view known = findKnownName(text, count);
  if (!known.empty()) {
    known.copy(name, known.size());
    return static_cast<int>(known.size());
  }
  text.copy(name, kNameSize);
  return kNameSize;
}
