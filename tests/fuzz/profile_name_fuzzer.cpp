// Names of ICC profiles.
#include "fuzzing.h"

void fuzz::check(std::string input) {
  const Block profile(input);
  const Block name(std::string(32, 'Z'));
  const int result = get_profile_name(profile.size(), profile.bytes(), name.chars());
  if (result == 32) return;
  const std::string known = result == 4 ? "sRGB" : result == 9 ? "Adobe RGB" : result == 12 ? "ProPhoto RGB" : "";
  require(result == (known.empty() ? -1 : std::ssize(known)));
  require(name.text() == known + std::string(32 - known.size(), '\0'));
}
