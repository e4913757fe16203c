// The names of the elements that hold values, each written once. Everywhere else a name is taken by
// its text, name("Strength"), and one that is not listed here does not compile.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace lumenforge {

inline constexpr std::array<std::string_view, 45> kNames{
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

inline constexpr std::size_t kLongestName =
    std::max_element(kNames.begin(), kNames.end(),
                     [](auto a, auto b) { return a.size() < b.size(); }) -> size();

// A place in kNames.
enum class Name : uint8_t {};

// Of a slot that has a default and no element.
inline constexpr Name kNoName{kNames.size()};

void noSuchName();  // not defined

consteval Name name(std::string_view text) {
  const auto* const found = std::find(kNames.begin(), kNames.end(), text);
  if (found == kNames.end()) noSuchName();
  return static_cast<Name>(found - kNames.begin());
}

constexpr std::size_t indexOf(Name name) {
  return static_cast<std::size_t>(name);
}

// A name's text, without the prefix.
constexpr std::string_view textOf(Name name) {
  return kNames[indexOf(name)];
}

// kNoName when the schema has no such element.
Name nameOf(std::string_view text);

}  // namespace lumenforge
