#include "pictures/sample_depth.h"

#include <bit>
#include <cmath>
#include <cstring>
#include <new>
#include <type_traits>

namespace lfmeta {

namespace {

template <typename Integer, int theMaximum>
struct IntegerSample {
  using Type = Integer;
  static float toFloat(Type value) { return static_cast<float>(value) / theMaximum; }
  static Type fromFloat(float value) {
    const float inRange = value > 0 ? std::fmin(value, 1.0F) : 0;  // not a number: 0
    return static_cast<Type>(std::nearbyint(inRange * theMaximum));
  }
};
using Integer8 = IntegerSample<uint8_t, 0xFF>;
using Integer16 = IntegerSample<uint16_t, 0xFFFF>;
struct Half {
  using Type = uint16_t;
  static float toFloat(Type value) { return floatFrom(value); }
  static Type fromFloat(float value) { return halfFrom(value); }
};
struct Float32 {
  using Type = float;
  static float toFloat(Type value) { return value; }
  static Type fromFloat(float value) { return value; }
};

template <typename From, typename To>
typename To::Type convert(typename From::Type value) {
  if constexpr (std::is_same_v<From, Integer8> && std::is_same_v<To, Integer16>) {
    return static_cast<uint16_t>(value * 257);
  } else if constexpr (std::is_same_v<From, Integer16> && std::is_same_v<To, Integer8>) {
    return static_cast<uint8_t>(value >> 8);
  } else {
    return To::fromFloat(From::toFloat(value));
  }
}

// The samples are converted where they lie: from the last to the first when they grow.
template <typename From, typename To>
void convertAll(unsigned char* pixels, std::size_t count) {
  using In = typename From::Type;
  using Out = typename To::Type;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t at = sizeof(Out) > sizeof(In) ? count - 1 - i : i;
    In value;
    std::memcpy(&value, pixels + at * sizeof(In), sizeof value);
    const Out converted = convert<From, To>(value);
    std::memcpy(pixels + at * sizeof(Out), &converted, sizeof converted);
  }
}

using Conversion = void (*)(unsigned char*, std::size_t);

template <typename From>
Conversion conversionFrom(Sample to) {
  constexpr Conversion kConversions[] = {convertAll<From, Integer8>, convertAll<From, Integer16>,
                                         convertAll<From, Half>, convertAll<From, Float32>};
  return kConversions[static_cast<std::size_t>(to)];
}

Conversion conversion(Sample from, Sample to) {
  switch (from) {
    case Sample::integer8:
      return conversionFrom<Integer8>(to);
    case Sample::integer16:
      return conversionFrom<Integer16>(to);
    case Sample::half:
      return conversionFrom<Half>(to);
    default:
      return conversionFrom<Float32>(to);
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

float floatFrom(uint16_t half) {
  constexpr uint32_t kInfinity = 0x7F800000;
  constexpr uint32_t kHalfInfinity = 0x7C00 << 13;
  constexpr float kRebias = 0x1p112F;  // 2^(127 - 15), for subnormals, too
  const uint32_t magnitude = static_cast<uint32_t>(half & 0x7FFF) << 13;
  const float value = magnitude >= kHalfInfinity ? std::bit_cast<float>(magnitude | kInfinity)
                                                 : std::bit_cast<float>(magnitude) * kRebias;
  return (half & 0x8000) == 0 ? value : -value;
}

void convertSamples(Image& image, Sample sample, uint64_t memory) {
  if (image.sample == sample) return;
  const std::size_t size = image.sampleCount() * sizeOf(sample);
  if (size > image.pixelsSize()) {
    requireMemory(size, memory);
    void* larger = std::realloc(image.pixels.get(), size);
    if (larger == nullptr) throw std::bad_alloc();
    (void)image.pixels.release();
    image.pixels.reset(static_cast<unsigned char*>(larger));
  }
  conversion(image.sample, sample)(image.pixels.get(), image.sampleCount());
  image.sample = sample;
}

void floatsOfRow(const Image& image, int y, std::span<float> floats) {
  const unsigned char* in = image.row(y);
  if (image.sample == Sample::float32) {
    std::memcpy(floats.data(), in, floats.size_bytes());
    return;
  }
  for (float& value : floats) {
    uint16_t half;
    std::memcpy(&half, in, sizeof half);
    value = floatFrom(half);
    in += sizeof half;
  }
}

}  // namespace lfmeta
