// An ICC profile for pixels that are proportional to light.
#pragma once

#include <array>

#include "base/whole_file.h"

namespace lfmeta {

struct Chromaticity {
  double x;
  double y;
};

// Of red, green, blue and white. The profile (ICC.1, version 2.1) has the primaries adapted to its
// white D50 by the Bradford transform, and identity curves. Empty for chromaticities that span no
// colours.
Bytes linearProfile(const std::array<Chromaticity, 4>& colors);

}  // namespace lfmeta
