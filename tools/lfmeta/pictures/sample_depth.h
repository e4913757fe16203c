// Samples of one kind to samples of another.
#pragma once

#include <cstdint>

#include "pictures/picture.h"

namespace lfmeta {

// The image with other samples: integers and the range 0 to 1 of floating-point numbers correspond;
// a float below 0 or not a number becomes 0 and one above 1 the largest integer, rounded to the
// nearest. 16-bit integers are not turned into 8-bit ones here: the TIFF writer does that.
Image withSamples(Image image, Sample sample);

// The half (IEEE 754 binary16) nearest to the float, ties to even; infinite from 65,520 on.
uint16_t halfFrom(float value);

}  // namespace lfmeta
