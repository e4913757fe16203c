#include "pictures/sample_depth.h"

#include <bit>
#include <cmath>
#include <cstring>

namespace lfmeta {

namespace {

// Reads samples of type From, one after the other, and writes what `convert` makes of each.
template <typename From, typename To>
void convertAll(const Image& from, Image& to, To (*convert)(From)) {
  const unsigned char* in = from.pixels.get();
  unsigned char* out = to.pixels.get();
  for (std::size_t i = from.sampleCount(); i > 0; --i, in += sizeof(From), out += sizeof(To)) {
    From value;
    std::memcpy(&value, in, sizeof value);
    const To converted = convert(value);
    std::memcpy(out, &converted, sizeof converted);
  }
}

float unitFrom8(uint8_t value) {
  return static_cast<float>(value) / 255.0F;
}

float unitFrom16(uint16_t value) {
  return static_cast<float>(value) / 65535.0F;
}

float toRange(float value, float largest) {
  const float inRange = value > 0 ? std::fmin(value, 1.0F) : 0;  // not a number: 0
  return std::nearbyint(inRange * largest);
}

void convertFrom8(const Image& from, Image& to) {
  switch (to.sample) {
    case Sample::integer16:
      convertAll<uint8_t, uint16_t>(from, to,
                                    [](uint8_t v) { return static_cast<uint16_t>(v * 257); });
      break;
    case Sample::half:
      convertAll<uint8_t, uint16_t>(from, to, [](uint8_t v) { return halfFrom(unitFrom8(v)); });
      break;
    default:
      convertAll<uint8_t, float>(from, to, unitFrom8);
  }
}

void convertFrom16(const Image& from, Image& to) {
  if (to.sample == Sample::half) {
    convertAll<uint16_t, uint16_t>(from, to, [](uint16_t v) { return halfFrom(unitFrom16(v)); });
  } else {
    convertAll<uint16_t, float>(from, to, unitFrom16);
  }
}

void convertFromFloat(const Image& from, Image& to) {
  switch (to.sample) {
    case Sample::integer8:
      convertAll<float, uint8_t>(from, to,
                                 [](float v) { return static_cast<uint8_t>(toRange(v, 255)); });
      break;
    case Sample::integer16:
      convertAll<float, uint16_t>(from, to,
                                  [](float v) { return static_cast<uint16_t>(toRange(v, 65535)); });
      break;
    default:
      convertAll<float, uint16_t>(from, to, halfFrom);
  }
}

}  // namespace

uint16_t halfFrom(float value) {
  constexpr uint32_t kInfinity = 0x7F800000;
  constexpr uint32_t kSmallestNormalHalf = 0x38800000;  // 2^-14
  constexpr uint32_t kRebias = (127 - 15) << 23;
  constexpr uint32_t kHalfInfinity = 0x7C00;
  constexpr uint32_t kQuietNan = 0x7E00;

  const auto bits = std::bit_cast<uint32_t>(value);
  const uint32_t magnitude = bits & 0x7FFFFFFF;
  uint32_t half = kHalfInfinity;
  if (magnitude > kInfinity) {
    half = kQuietNan;
  } else if (magnitude < kSmallestNormalHalf) {
    // The subnormals are the multiples of 2^-24; the largest rounds up to the smallest normal.
    half = static_cast<uint32_t>(std::nearbyint(std::ldexp(std::fabs(value), 24)));
  } else if (magnitude < std::bit_cast<uint32_t>(65520.0F)) {
    const uint32_t odd = magnitude >> 13 & 1;  // ties go to the even half
    half = (magnitude - kRebias + 0xFFF + odd) >> 13;
  }
  return static_cast<uint16_t>(bits >> 16 & 0x8000) | static_cast<uint16_t>(half);
}

Image withSamples(Image image, Sample sample) {
  if (image.sample == sample) return image;
  Image converted;
  allocatePixels(converted, static_cast<uint64_t>(image.width), static_cast<uint64_t>(image.height),
                 image.channels, sample);
  converted.orientation = image.orientation;
  converted.iccProfile = std::move(image.iccProfile);
  switch (image.sample) {
    case Sample::integer8:
      convertFrom8(image, converted);
      break;
    case Sample::integer16:
      convertFrom16(image, converted);
      break;
    default:
      convertFromFloat(image, converted);
  }
  return converted;
}

}  // namespace lfmeta
