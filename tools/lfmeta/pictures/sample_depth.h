// Samples of one kind to samples of another.
#pragma once

#include <cstdint>
#include <span>

#include "pictures/picture.h"

namespace lfmeta {

// Gives the image other samples, in the memory of its pixels: integers and the range 0 to 1 of
// floating-point numbers correspond; a float below 0 or not a number becomes 0 and one above 1 the
// largest integer, rounded to the nearest. 8 bits become 16 times 257, 16 become 8 by their high
// byte. Throws std::runtime_error when the pixels would take more than `memory` bytes.
void convertSamples(Image& image, Sample sample, uint64_t memory);

// Row y of an image of floating-point samples, one float for each.
void floatsOfRow(const Image& image, int y, std::span<float> floats);

// The half (IEEE 754 binary16) nearest to the float, ties to even; infinite from 65,520 on.
uint16_t halfFrom(float value);
float floatFrom(uint16_t half);

}  // namespace lfmeta
