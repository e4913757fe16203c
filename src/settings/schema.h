// The settings schema: which methods there are, what each slot of a record means for a method, and
// how it stands in a packet. The reader, the writer and the defaults walk the same rows; a new
// method is one more table.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace lumenforge {

// The namespace URI is this base, kNamespacePath and the number of the settings set. A declaration
// is recognised by its prefix and the base alone.
inline constexpr std::string_view kNamespaceBase = "http://ns.lumenforge.org/";
inline constexpr std::string_view kNamespacePath = "lumenforge_settings";
inline constexpr std::string_view kNamespaceDeclaration = "xmlns:lfst=";
inline constexpr std::size_t kDeclarationLength =
    kNamespaceDeclaration.size() + 1 + kNamespaceBase.size();  // to the end of the base
inline constexpr std::string_view kPrefix = "lfst:";
inline constexpr std::string_view kMethodElement = "lfst:Method";

// The elements that hold values, in the alphabetical order of their names.
enum class Name : uint8_t {
  accentuation,
  blackClip,
  blendWithEV,
  blendingOpacity,
  blendingPoint,
  boost,
  brightness,
  brightnessIndividualColors,
  colorSaturation,
  colorTemperature,
  compression,
  contrast,
  depthHighlights,
  detailContrast,
  exposureBalance,
  gamma,
  highlights,
  highlightsSmoothing,
  isPano360,
  lighting,
  lightingEffect,
  localContrast,
  luminance,
  luminosity,
  microcontrast,
  microsmoothing,
  midtone,
  midtonesAdjustment,
  noiseSmoothing,
  radius,
  saturation,
  saturationHighlights,
  saturationIndividualColors,
  saturationShadows,
  shadows,
  shadowsClipping,
  shadowsContrast,
  shadowsSmoothing,
  sharpness,
  smoothing,
  smoothingMode,
  strength,
  temperatureIndividualColors,
  toneCompression,
  whiteClip,
  none,  // of a slot that has a default and no element
};

inline constexpr std::size_t kNameCount = static_cast<std::size_t>(Name::none);
inline constexpr std::size_t kLongestName = 27;

// A name's text without the prefix.
std::string_view textOf(Name name);

// Name::none when the schema has no such element.
Name nameOf(std::string_view text);

// How a value stands in a packet.
enum class ValueText : uint8_t {
  absent,
  oneDecimal,
  sixDecimals,
  clipCurve,      // three decimals, on the curve of the clip sliders
  yesNo,          // "Yes" above 0, else "No "
  listOfEight,    // eight slots, one decimal each, commas between
  modeWord,       // a word of kSmoothingModes
  levelOrNumber,  // by the mode: a word of kSmoothingLevels for its slot, or a number
};

// Another name that a packet may hold for a slot. Only read, never written.
struct OtherName {
  Name name = Name::none;
  bool wins = true;                   // read first; otherwise only when the first is absent
  float (*convert)(float) = nullptr;  // from this element's scale to the slot's
};

struct Element {
  int slot;
  Name name;
  ValueText text;
  float defaultValue = 0;
  OtherName other = {};
};

struct Method {
  int number;
  std::string_view name;  // empty: no packet names it
  std::array<std::string_view, 2> olderNames;
  std::span<const Element> elements;  // in the order written
};

inline constexpr int kUnknownMethod = 0;
inline constexpr int kHighestMethod = 15;

// Null for a number without a table.
const Method* methodOf(int number);

// The number of the method whose name begins `text`, or kUnknownMethod.
int methodNamedBy(std::string_view text);

// The elements that every method has, written after its own.
std::span<const Element> commonElements();

// Method 1 writes its smoothing as one element that holds a word or a number.
inline constexpr int kSmoothingLevelSlot = 5;
inline constexpr int kSmoothingModeSlot = 16;
inline constexpr std::array<std::string_view, 2> kSmoothingModes{"Light", "Slider"};
inline constexpr float kSmoothingByLevel = 0;
inline constexpr float kSmoothingBySlider = 1;

// By the slot's value. The blanks are part of the text written; the reader compares the letters.
inline constexpr std::array<std::string_view, 5> kSmoothingLevels{
    "Very High", "High    ", "Medium  ", "Low     ", "Very Low"};

inline constexpr int kListLength = 8;

// Record value to text value and back, methods 3 and 4.
float toClipCurve(float value);
float fromClipCurve(float text);

}  // namespace lumenforge
