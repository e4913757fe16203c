#include "settings/schema.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "LumenforgeMetaLib.h"

namespace lumenforge {
namespace {

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

using enum ValueText;

// Columns: slot, name written, text, default, other name read.
constexpr Element kDetailsEnhancer[]{
    {1, name("Strength"), oneDecimal, 70},
    {0, name("ToneCompression"), oneDecimal, 0, older(name("Luminosity"))},
    {6, name("DetailContrast"), oneDecimal, 0, older(name("Microcontrast"))},
    {3, name("WhiteClip"), sixDecimals, 0.25F},
    {4, name("BlackClip"), sixDecimals},
    {kSmoothingModeSlot, name("SmoothingMode"), modeWord, 1},
    {kSmoothingLevelSlot, kNoName, absent, 1},
    {17, name("Smoothing"), levelOrNumber},
    {7, name("Microsmoothing"), oneDecimal, 2, older(name("NoiseSmoothing"))},
    {9, name("HighlightsSmoothing"), oneDecimal},
    {10, name("ShadowsSmoothing"), oneDecimal},
    {11, name("ShadowsClipping"), oneDecimal},
    {13, name("SaturationHighlights"), oneDecimal},
    {14, name("SaturationShadows"), oneDecimal},
    {15, name("IsPano360"), yesNo},
    {2, name("Saturation"), oneDecimal, 0, older(name("ColorSaturation"), fromColorSaturation)},
    {12, name("ColorTemperature"), oneDecimal},
    {8, name("Brightness"), oneDecimal, 0, older(name("Gamma"), fromGamma)},
};

constexpr Element kToneCompressor[]{
    {1, name("Compression"), oneDecimal}, {2, name("Contrast"), oneDecimal},
    {3, name("WhiteClip"), sixDecimals},  {4, name("BlackClip"), sixDecimals},
    {13, name("Saturation"), oneDecimal}, {12, name("ColorTemperature"), oneDecimal},
    {0, name("Brightness"), oneDecimal},
};

constexpr Element kContrastOptimizer[]{
    {0, name("Strength"), oneDecimal, 50},
    {1, name("ToneCompression"), oneDecimal},
    {2, name("LightingEffect"), oneDecimal, 20},
    {3, name("WhiteClip"), clipCurve, 0.6F},
    {4, name("BlackClip"), clipCurve, 0.25F},
    {9, name("Luminance"), oneDecimal},
    {15, name("IsPano360"), yesNo},
    {13, name("Saturation"), oneDecimal},
    {12, name("ColorTemperature"), oneDecimal},
    {8, name("Brightness"), oneDecimal, 0, older(name("Midtone"))},
};

constexpr float kWhiteClipOfFour = 0.60359085F;  // 4.000 on the clip curve
static_assert(std::bit_cast<uint32_t>(kWhiteClipOfFour) == 0x3F1A84EE);

constexpr Element kToneBalancer[]{
    {0, name("Strength"), oneDecimal, 50},
    {1, name("Lighting"), oneDecimal},
    {2, name("Boost"), oneDecimal},
    {5, name("Microcontrast"), oneDecimal},
    {3, name("WhiteClip"), clipCurve, kWhiteClipOfFour},
    {4, name("BlackClip"), clipCurve},
    {15, name("IsPano360"), yesNo},
    {13, name("Saturation"), oneDecimal},
    {12, name("ColorTemperature"), oneDecimal},
    {8, name("Brightness"), oneDecimal},
};

constexpr Element kFusionNatural[]{
    {0, name("Strength"), oneDecimal, 0, older(name("Accentuation"))},
    {1, name("ExposureBalance"), oneDecimal, 0, older(name("BlendingPoint"))},
    {2, name("ShadowsContrast"), oneDecimal, 0, newer(name("Shadows"))},
    {4, name("WhiteClip"), sixDecimals},
    {5, name("BlackClip"), sixDecimals},
    {7, name("IsPano360"), yesNo},
    {8, name("Sharpness"), oneDecimal, 2},
    {3, name("Saturation"), oneDecimal},
    {12, name("ColorTemperature"), oneDecimal},
    {6, name("Brightness"), oneDecimal, 0, older(name("MidtonesAdjustment"))},
};

constexpr Element kFusionIntensive[]{
    {0, name("Strength"), oneDecimal},   {2, name("Radius"), oneDecimal, 70},
    {1, name("Saturation"), oneDecimal}, {12, name("ColorTemperature"), oneDecimal},
    {6, name("Brightness"), oneDecimal},
};

// No packet names method 12; it has defaults only.
constexpr Element kMethodTwelve[]{{8, kNoName, absent, 2}, {9, kNoName, absent, 1}};

constexpr Element kAverage[]{
    {13, name("Saturation"), oneDecimal},
    {12, name("ColorTemperature"), oneDecimal},
    {6, name("Brightness"), oneDecimal},
};

constexpr Element kFusionInterior[]{
    {1, name("Highlights"), oneDecimal},       {2, name("Shadows"), oneDecimal},
    {8, name("LocalContrast"), oneDecimal, 2}, {9, kNoName, absent, 1},
    {0, name("DepthHighlights"), oneDecimal},  {7, name("IsPano360"), yesNo},
    {3, name("Saturation"), oneDecimal},       {12, name("ColorTemperature"), oneDecimal},
    {6, name("Brightness"), oneDecimal},
};

constexpr Element kCommonElements[]{
    {21, name("SaturationIndividualColors"), listOfEight},
    {31, name("TemperatureIndividualColors"), listOfEight},
    {41, name("BrightnessIndividualColors"), listOfEight},
    {51, name("BlendingOpacity"), oneDecimal},
    {52, name("BlendWithEV"), oneDecimal},
};

// clang-format off
constexpr Method kMethods[]{
    {LUMENFORGE_UNKNOWN_METHOD, false, false, "", {}, {}},
    {LUMENFORGE_DETAILS_ENHANCER, true, true, "Details Enhancer", {"Contrast Enhancer"},
     kDetailsEnhancer},
    {LUMENFORGE_TONE_COMPRESSOR, true, true, "Tone Compressor", {"Smooth Adaptation"},
     kToneCompressor},
    {LUMENFORGE_CONTRAST_OPTIMIZER, true, true, "Contrast Optimizer", {}, kContrastOptimizer},
    {LUMENFORGE_TONE_BALANCER, true, true, "Tone Balancer", {}, kToneBalancer},
    {LUMENFORGE_FUSION_NATURAL, true, true, "Fusion/Natural", {"Fusion/Adjust"}, kFusionNatural},
    {LUMENFORGE_FUSION_INTENSIVE, true, true, "Fusion/Intensive", {}, kFusionIntensive},
    {LUMENFORGE_METHOD_TWELVE, true, false, "", {}, kMethodTwelve},
    {LUMENFORGE_FUSION_2_IMAGES, false, false, "Fusion/2 images", {}, kAverage},
    {LUMENFORGE_AVERAGE, false, false, "Average", {}, kAverage},
    {LUMENFORGE_FUSION_INTERIOR, true, true, "Fusion/Interior",
     {"Fusion/Realistic", "Fusion/Real-Estate"}, kFusionInterior},
};
// clang-format on
constexpr const Method& kUnknownMethod = kMethods[0];

constexpr double kClipExponent = 0.3263790046007694;
constexpr double kInverseClipExponent = 3.063922574380088;

}  // namespace

const Method* methodOf(int number) {
  const auto* method = std::find_if(std::begin(kMethods), std::end(kMethods),
                                    [number](const Method& m) { return m.number == number; });
  return method != std::end(kMethods) ? method : nullptr;
}

const Method& methodNamedBy(std::string_view text) {
  const auto begins = [text](std::string_view name) {
    return !name.empty() && text.starts_with(name);
  };
  for (const Method& method : kMethods) {
    if (begins(method.name) ||
        std::any_of(method.olderNames.begin(), method.olderNames.end(), begins)) {
      return method;
    }
  }
  return kUnknownMethod;
}

std::span<const Element> commonElements() {
  return kCommonElements;
}

void setDefaults(const Method* method, float* params) {
  std::fill_n(params, kSettingsParamsSlots, 0.0F);
  if (method == nullptr) return;
  for (const Element& element : method->elements) params[element.slot] = element.defaultValue;
}

std::optional<std::size_t> wordIndex(float slot, std::size_t words) {
  if (!(slot > -1 && slot < static_cast<float>(words))) return std::nullopt;
  return static_cast<std::size_t>(static_cast<int>(slot));
}

std::optional<SmoothingMode> smoothingModeOf(const float* params) {
  const auto index = wordIndex(params[kSmoothingModeSlot], kSmoothingModes.size());
  if (!index) return std::nullopt;
  return static_cast<SmoothingMode>(*index);
}

float toClipCurve(float value) {
  return static_cast<float>(10.0 * std::pow(static_cast<double>(value) * 0.1, kClipExponent));
}

float fromClipCurve(float text) {
  return static_cast<float>(10.0 * std::pow(0.1 * static_cast<double>(text), kInverseClipExponent));
}

}  // namespace lumenforge
