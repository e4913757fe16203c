// Names of ICC profiles.
#include "fuzzing.h"

namespace fuzz {

void check(Input input) {
  const Block profile(input.rest);
  const Block name(32);
  const int result = get_profile_name(profile.size(), profile.bytes(), name.chars());
  if (result == 32) {
    std::string padded(name.text());
    padded.erase(padded.find_last_not_of('\0') + 1);
    return require(profile.text().find(padded) != std::string_view::npos);
  }
  const std::string known = result == 4    ? "sRGB"
                            : result == 9  ? "Adobe RGB"
                            : result == 12 ? "ProPhoto RGB"
                                           : "";
  require(result == (known.empty() ? -1 : std::ssize(known)));
  require(name.text() == known + std::string(32 - known.size(), '\0'));
}

}  // namespace fuzz
