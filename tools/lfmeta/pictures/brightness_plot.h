// The distribution of brightness as a diagram.
#pragma once

#include "pictures/brightness.h"

namespace lfmeta {

// A PNG picture of bars, one a stop, with axes in stops and in percent of the pixels.
Bytes plotBrightness(const Brightness& brightness);

}  // namespace lfmeta
