// One pass over a packet: the first settings declaration, the method after it, and then the first
// place of every element up to the end of the text, whichever description it stands in.
#include "settings/settings_reader.h"

#include <array>
#include <cstdint>

#include "LumenforgeMetaLib.h"
#include "base/result.h"
#include "settings/schema.h"
#include "settings/text_search.h"
#include "settings/value_text.h"

namespace lumenforge {

namespace {

constexpr Needle kDeclarationNeedle{kNamespaceDeclaration, 7};  // "fs"
constexpr Needle kMethodNeedle{kMethodElement, 1};
constexpr Needle kPrefixNeedle{kPrefix, 1};

// How many bytes stand between a name's end and its value: ">", or "=" and a quote. The form of the
// method element is the form of all.
enum Form : std::size_t { kElementForm = 1, kAttributeForm = 2 };

// Where each element's value begins; 0 when the packet does not hold it.
using Places = std::array<uint32_t, kNameCount>;

// The first element of a name counts, also when its text is not a value. The smoothing mode is
// known by its name alone; every other name must be followed by the form's terminator.
Places findValues(std::string_view text, std::size_t from, Form form) {
  Places places{};
  const std::string_view modeName = textOf(Name::smoothingMode);
  const char terminator = form == kAttributeForm ? '=' : '>';
  std::string_view last;  // the name found last, with the byte behind it
  Occurrences prefixes(text, from, kPrefixNeedle);
  for (std::size_t at = prefixes.next(); at != kNowhere; at = prefixes.next()) {
    const std::size_t nameBegin = at + kPrefix.size();
    const std::string_view rest = text.substr(nameBegin);
    const bool isItsEndTag = !last.empty() && last.size() <= rest.size() &&
                             sameBytes(rest.data(), last.data(), last.size());
    if (isItsEndTag) continue;
    std::size_t length = rest.substr(0, kLongestName + 1).find(terminator);
    Name name = length != kNowhere ? nameOf(rest.substr(0, length)) : Name::none;
    if (name == Name::none && rest.starts_with(modeName)) {
      name = Name::smoothingMode;
      length = modeName.size();
    }
    if (name == Name::none) continue;
    last = rest.substr(0, length + 1);
    uint32_t& place = places[static_cast<std::size_t>(name)];
    if (place == 0) place = static_cast<uint32_t>(nameBegin + length + form);
  }
  return places;
}

// The values of one packet on their way into a record that holds the method's defaults.
struct RecordReader {
  std::string_view text;
  Places places;
  float* params;

  std::size_t place(Name name) const {
    return name != Name::none ? places[static_cast<std::size_t>(name)] : 0;
  }
  void read(const Element& element);
  void readValue(const Element& element, std::size_t value);
  void readSmoothing(const Element& element, std::size_t value);
};

void RecordReader::read(const Element& element) {
  const std::size_t other = place(element.other.name);
  const std::size_t current = place(element.name);
  if (other != 0 && (element.other.wins || current == 0)) {
    float& slot = params[element.slot];
    readNumber(text, other, slot);
    if (element.other.convert != nullptr) slot = element.other.convert(slot);
  } else if (current != 0) {
    readValue(element, current);
  }
}

// A conversion applies to whatever the slot holds then: the default when the text did not parse.
void RecordReader::readValue(const Element& element, std::size_t value) {
  float& slot = params[element.slot];
  switch (element.text) {
    case ValueText::absent:
      break;
    case ValueText::oneDecimal:
    case ValueText::sixDecimals:
      readNumber(text, value, slot);
      break;
    case ValueText::clipCurve:
      readNumber(text, value, slot);
      slot = fromClipCurve(slot);
      break;
    case ValueText::yesNo:
      readYesNo(text, value, slot);
      break;
    case ValueText::listOfEight:
      readList(text, value, &slot);
      break;
    case ValueText::modeWord:
      readWord(text, value, kSmoothingModes, slot);
      break;
    case ValueText::levelOrNumber:
      readSmoothing(element, value);
      break;
  }
}

// The mode was read before: its row comes first.
void RecordReader::readSmoothing(const Element& element, std::size_t value) {
  if (params[kSmoothingModeSlot] == kSmoothingByLevel) {
    readWord(text, value, kSmoothingLevels, params[kSmoothingLevelSlot]);
  } else {
    readNumber(text, value, params[element.slot]);
  }
}

void readRecord(std::string_view text, std::size_t methodPlace, Form form, int method,
                float* params) {
  def_param(method, params);
  RecordReader reader{text, findValues(text, methodPlace, form), params};
  if (const Method* known = methodOf(method)) {
    for (const Element& element : known->elements) reader.read(element);
  }
  for (const Element& element : commonElements()) reader.read(element);
}

// A packet that declares the namespace and names no method has no settings. Asked for the unknown
// method, it gives a record of zeros.
int readWithoutMethod(int selector, std::string_view text, std::size_t afterDeclaration,
                      float* params) {
  if (selector != kUnknownMethod) return kOtherMethod;
  def_param(kUnknownMethod, params);
  const std::size_t name = kMethodElement.size();
  return static_cast<int>(text.size() > afterDeclaration + name ? text.size() - name
                                                                : afterDeclaration);
}

}  // namespace

std::size_t findDeclaration(std::string_view text, std::size_t from) {
  return findQuoted(text, from, kDeclarationNeedle, kNamespaceBase);
}

int readSettings(int selector, std::string_view text, char* lensOut, float* params) {
  if (text.empty() || text.back() != '\0') return kNotTerminated;
  if (selector == kLensQuery) return readLens(text, lensOut);

  const std::size_t declaration = findDeclaration(text, 0);
  if (declaration == kNowhere) return 0;
  const std::size_t afterDeclaration = declaration + kDeclarationLength;
  const std::size_t place = find(text, afterDeclaration, kMethodNeedle);
  if (place == kNowhere) return readWithoutMethod(selector, text, afterDeclaration, params);

  const std::size_t nameEnd = place + kMethodElement.size();
  const Form form = textFrom(text, nameEnd).starts_with('=') ? kAttributeForm : kElementForm;
  const int method = methodNamedBy(textFrom(text, nameEnd + form));
  if (selector == kMethodQuery) return method;
  if (selector != method) return kOtherMethod;
  readRecord(text, place, form, method, params);
  return static_cast<int>(place);
}

}  // namespace lumenforge

int get_settings_from_xmp(int selector, int length, const unsigned char* xmp, char* lensOut,
                          float* params) {
  if (length < 1) return lumenforge::kNotTerminated;
  return lumenforge::readSettings(
      selector, lumenforge::asText(xmp, static_cast<std::size_t>(length)), lensOut, params);
}
