#include "settings/schema.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "settings/text_search.h"

namespace lumenforge {

namespace {

constexpr std::array<std::string_view, kNameCount> kNameTexts{
    "Accentuation",
    "BlackClip",
    "BlendWithEV",
    "BlendingOpacity",
    "BlendingPoint",
    "Boost",
    "Brightness",
    "BrightnessIndividualColors",
    "ColorSaturation",
    "ColorTemperature",
    "Compression",
    "Contrast",
    "DepthHighlights",
    "DetailContrast",
    "ExposureBalance",
    "Gamma",
    "Highlights",
    "HighlightsSmoothing",
    "IsPano360",
    "Lighting",
    "LightingEffect",
    "LocalContrast",
    "Luminance",
    "Luminosity",
    "Microcontrast",
    "Microsmoothing",
    "Midtone",
    "MidtonesAdjustment",
    "NoiseSmoothing",
    "Radius",
    "Saturation",
    "SaturationHighlights",
    "SaturationIndividualColors",
    "SaturationShadows",
    "Shadows",
    "ShadowsClipping",
    "ShadowsContrast",
    "ShadowsSmoothing",
    "Sharpness",
    "Smoothing",
    "SmoothingMode",
    "Strength",
    "TemperatureIndividualColors",
    "ToneCompression",
    "WhiteClip",
};
static_assert(std::is_sorted(kNameTexts.begin(), kNameTexts.end()));
static_assert(std::max_element(kNameTexts.begin(), kNameTexts.end(), [](auto a, auto b) {
                return a.size() < b.size();
              })->size() == kLongestName);

// Names by hash, so that a name found in a packet costs one comparison. No two names share a place.
constexpr std::size_t kHashPlaces = 128;

constexpr std::size_t placeOf(std::string_view text) {
  const std::size_t first = static_cast<unsigned char>(text.front());
  const std::size_t last = static_cast<unsigned char>(text.back());
  return (text.size() * 5 + first * 14 + last * 7) % kHashPlaces;
}

constexpr auto kNamesByHash = [] {
  std::array<Name, kHashPlaces> names{};
  names.fill(Name::none);
  for (std::size_t i = 0; i < kNameCount; ++i) {
    names[placeOf(kNameTexts[i])] = static_cast<Name>(i);
  }
  return names;
}();
static_assert(std::count(kNamesByHash.begin(), kNamesByHash.end(), Name::none) ==
                  kHashPlaces - kNameCount,
              "two names share a place: change the factors of placeOf");

float fromColorSaturation(float text) {
  return static_cast<float>(static_cast<double>(text) * 0.2 - 10.0);
}

// -10 log2 g above 1, -(20/3) log2 g below.
float fromGamma(float gamma) {
  const double factor = gamma > 1 ? -14.426950408889635 : -9.617966939259757;
  return static_cast<float>(factor * std::log(static_cast<double>(gamma)));
}

constexpr OtherName older(Name name, float (*convert)(float) = nullptr) {
  return {name, true, convert};
}
constexpr OtherName newer(Name name) {
  return {name, false, nullptr};
}

using enum Name;
using enum ValueText;

// Columns: slot, name written, text, default, other name read.
constexpr Element kDetailsEnhancer[]{
    {1, strength, oneDecimal, 70},
    {0, toneCompression, oneDecimal, 0, older(luminosity)},
    {6, detailContrast, oneDecimal, 0, older(microcontrast)},
    {3, whiteClip, sixDecimals, 0.25F},
    {4, blackClip, sixDecimals},
    {kSmoothingModeSlot, smoothingMode, modeWord, kSmoothingBySlider},
    {kSmoothingLevelSlot, none, absent, 1},
    {17, smoothing, levelOrNumber},
    {7, microsmoothing, oneDecimal, 2, older(noiseSmoothing)},
    {9, highlightsSmoothing, oneDecimal},
    {10, shadowsSmoothing, oneDecimal},
    {11, shadowsClipping, oneDecimal},
    {13, saturationHighlights, oneDecimal},
    {14, saturationShadows, oneDecimal},
    {15, isPano360, yesNo},
    {2, saturation, oneDecimal, 0, older(colorSaturation, fromColorSaturation)},
    {12, colorTemperature, oneDecimal},
    {8, brightness, oneDecimal, 0, older(gamma, fromGamma)},
};

constexpr Element kToneCompressor[]{
    {1, compression, oneDecimal}, {2, contrast, oneDecimal},    {3, whiteClip, sixDecimals},
    {4, blackClip, sixDecimals},  {13, saturation, oneDecimal}, {12, colorTemperature, oneDecimal},
    {0, brightness, oneDecimal},
};

constexpr Element kContrastOptimizer[]{
    {0, strength, oneDecimal, 50},
    {1, toneCompression, oneDecimal},
    {2, lightingEffect, oneDecimal, 20},
    {3, whiteClip, clipCurve, 0.6F},
    {4, blackClip, clipCurve, 0.25F},
    {9, luminance, oneDecimal},
    {15, isPano360, yesNo},
    {13, saturation, oneDecimal},
    {12, colorTemperature, oneDecimal},
    {8, brightness, oneDecimal, 0, older(midtone)},
};

constexpr float kWhiteClipOfFour = 0.60359085F;  // 4.000 on the clip curve
static_assert(std::bit_cast<uint32_t>(kWhiteClipOfFour) == 0x3F1A84EE);

constexpr Element kToneBalancer[]{
    {0, strength, oneDecimal, 50},
    {1, lighting, oneDecimal},
    {2, boost, oneDecimal},
    {5, microcontrast, oneDecimal},
    {3, whiteClip, clipCurve, kWhiteClipOfFour},
    {4, blackClip, clipCurve},
    {15, isPano360, yesNo},
    {13, saturation, oneDecimal},
    {12, colorTemperature, oneDecimal},
    {8, brightness, oneDecimal},
};

constexpr Element kFusionNatural[]{
    {0, strength, oneDecimal, 0, older(accentuation)},
    {1, exposureBalance, oneDecimal, 0, older(blendingPoint)},
    {2, shadowsContrast, oneDecimal, 0, newer(shadows)},
    {4, whiteClip, sixDecimals},
    {5, blackClip, sixDecimals},
    {7, isPano360, yesNo},
    {8, sharpness, oneDecimal, 2},
    {3, saturation, oneDecimal},
    {12, colorTemperature, oneDecimal},
    {6, brightness, oneDecimal, 0, older(midtonesAdjustment)},
};

constexpr Element kFusionIntensive[]{
    {0, strength, oneDecimal},          {2, radius, oneDecimal, 70}, {1, saturation, oneDecimal},
    {12, colorTemperature, oneDecimal}, {6, brightness, oneDecimal},
};

// No packet names method 12; it has defaults only.
constexpr Element kMethodTwelve[]{{8, none, absent, 2}, {9, none, absent, 1}};

constexpr Element kAverage[]{
    {13, saturation, oneDecimal},
    {12, colorTemperature, oneDecimal},
    {6, brightness, oneDecimal},
};

constexpr Element kFusionInterior[]{
    {1, highlights, oneDecimal},       {2, shadows, oneDecimal},
    {8, localContrast, oneDecimal, 2}, {9, none, absent, 1},
    {0, depthHighlights, oneDecimal},  {7, isPano360, yesNo},
    {3, saturation, oneDecimal},       {12, colorTemperature, oneDecimal},
    {6, brightness, oneDecimal},
};

constexpr Element kCommonElements[]{
    {21, saturationIndividualColors, listOfEight},
    {31, temperatureIndividualColors, listOfEight},
    {41, brightnessIndividualColors, listOfEight},
    {51, blendingOpacity, oneDecimal},
    {52, blendWithEV, oneDecimal},
};

constexpr Method kMethods[]{
    {1, "Details Enhancer", {"Contrast Enhancer"}, kDetailsEnhancer},
    {2, "Tone Compressor", {"Smooth Adaptation"}, kToneCompressor},
    {3, "Contrast Optimizer", {}, kContrastOptimizer},
    {4, "Tone Balancer", {}, kToneBalancer},
    {10, "Fusion/Natural", {"Fusion/Adjust"}, kFusionNatural},
    {11, "Fusion/Intensive", {}, kFusionIntensive},
    {12, "", {}, kMethodTwelve},
    {13, "Fusion/2 images", {}, kAverage},
    {14, "Average", {}, kAverage},
    {15, "Fusion/Interior", {"Fusion/Realistic", "Fusion/Real-Estate"}, kFusionInterior},
};

constexpr double kClipExponent = 0.3263790046007694;
constexpr double kInverseClipExponent = 3.063922574380088;

}  // namespace

std::string_view textOf(Name name) {
  return kNameTexts[static_cast<std::size_t>(name)];
}

Name nameOf(std::string_view text) {
  if (text.empty()) return Name::none;
  const Name name = kNamesByHash[placeOf(text)];
  if (name == Name::none || textOf(name).size() != text.size()) return Name::none;
  return sameBytes(textOf(name).data(), text.data(), text.size()) ? name : Name::none;
}

const Method* methodOf(int number) {
  const auto* method = std::find_if(std::begin(kMethods), std::end(kMethods),
                                    [number](const Method& m) { return m.number == number; });
  return method != std::end(kMethods) ? method : nullptr;
}

int methodNamedBy(std::string_view text) {
  const auto begins = [text](std::string_view name) {
    return !name.empty() && text.starts_with(name);
  };
  for (const Method& method : kMethods) {
    if (begins(method.name) ||
        std::any_of(method.olderNames.begin(), method.olderNames.end(), begins)) {
      return method.number;
    }
  }
  return kUnknownMethod;
}

std::span<const Element> commonElements() {
  return kCommonElements;
}

float toClipCurve(float value) {
  return static_cast<float>(10.0 * std::pow(static_cast<double>(value) * 0.1, kClipExponent));
}

float fromClipCurve(float text) {
  return static_cast<float>(10.0 * std::pow(0.1 * static_cast<double>(text), kInverseClipExponent));
}

}  // namespace lumenforge
