// The settings schema: which methods there are, what each slot of a record means for a method, and
// how it stands in a packet. The reader, the writer and the defaults walk the same rows; a new
// method is one more table.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "settings/names.h"

namespace lumenforge {

// The namespace URI is this base, kNamespacePath and the number of the settings set. A declaration
// is recognised by its prefix and the base alone.
inline constexpr std::string_view kNamespaceBase = "http://ns.lumenforge.org/";
inline constexpr std::string_view kNamespacePath = "lumenforge_settings";
inline constexpr std::string_view kNamespaceDeclaration = "xmlns:lfst=";
inline constexpr std::size_t kDeclarationLength =
    kNamespaceDeclaration.size() + 1 + kNamespaceBase.size();  // to the end of the base

inline constexpr std::string_view kMethodElement = "lfst:Method";
inline constexpr std::string_view kPrefix = kMethodElement.substr(0, 5);  // of every element

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
  Name name = kNoName;
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
  bool recorded;          // a photograph's packet of it is recorded on reading
  bool kept;              // a packet of it goes into a TIFF file as it is
  std::string_view name;  // empty: no packet names it
  std::array<std::string_view, 2> olderNames;
  std::span<const Element> elements;  // in the order written
};

// Null for a number that is no method's.
const Method* methodOf(int number);

// The method whose name begins `text`; the unknown method, which has a row as well, when none does.
const Method& methodNamedBy(std::string_view text);

// The elements that every method has, written after its own.
std::span<const Element> commonElements();

// The values that a method starts from, in all slots of a record; zeros for no method.
void setDefaults(const Method* method, float* params);

// Method 1 writes its smoothing as one element that holds a word or a number.
inline constexpr int kSmoothingLevelSlot = 5;
inline constexpr int kSmoothingModeSlot = 16;
inline constexpr std::array<std::string_view, 2> kSmoothingModes{"Light", "Slider"};
enum class SmoothingMode : uint8_t { byLevel, bySlider };

// By the slot's integer part; none when that is neither.
std::optional<SmoothingMode> smoothingModeOf(const float* params);

// By the slot's value. The blanks are part of the text written; the reader compares the letters.
inline constexpr std::array<std::string_view, 5> kSmoothingLevels{
    "Very High", "High    ", "Medium  ", "Low     ", "Very Low"};

inline constexpr int kListLength = 8;

// The index of the word that a slot's integer part selects.
std::optional<std::size_t> wordIndex(float slot, std::size_t words);

// Record value to text value and back, methods 3 and 4.
float toClipCurve(float value);
float fromClipCurve(float text);

}  // namespace lumenforge
