// One pass over a packet: the first settings declaration, the method after it, and then the first
// place of every element up to the end of the text, whichever description it stands in.
#include <array>
#include <cstdint>

#include "settings/packet.h"
#include "settings/text_search.h"
#include "settings/value_text.h"

namespace lumenforge {
namespace {

constexpr Needle kDeclarationNeedle{kNamespaceDeclaration, 7};  // "fs"
constexpr Needle kMethodNeedle{kMethodElement, 1};
constexpr Needle kPrefixNeedle{kPrefix, 1};

// Where each element's value begins; 0 when the packet does not hold it.
using Places = std::array<uint32_t, kNames.size()>;

// The first element of a name counts, also when its text is not a value. The smoothing mode is
// known by its name alone; every other name must be followed by the form's terminator.
Places findValues(std::string_view text, std::size_t from, Form form) {
  Places places{};
  constexpr Name kMode = name("SmoothingMode");
  const char terminator = form == Form::attribute ? '=' : '>';
  std::string_view last;  // the name found last, with the byte behind it
  Candidates prefixes(text, from, kPrefixNeedle);
  for (std::size_t at = prefixes.next(); at != kNowhere; at = prefixes.next()) {
    if (!text.substr(at).starts_with(kPrefix)) continue;
    const std::size_t nameBegin = at + kPrefix.size();
    const std::string_view rest = text.substr(nameBegin);
    // An end tag mostly repeats the last name, which is known then.
    const bool repeatsLastName = text[at - 1] == '/' && !last.empty() && rest.starts_with(last);
    if (repeatsLastName) continue;
    std::size_t length = rest.substr(0, kLongestName + 1).find(terminator);
    Name found = length != kNowhere ? nameOf(rest.substr(0, length)) : kNoName;
    if (found == kNoName && rest.starts_with(textOf(kMode))) {
      found = kMode;
      length = textOf(kMode).size();
    }
    if (found == kNoName) continue;
    last = rest.substr(0, length + 1);
    uint32_t& place = places[indexOf(found)];
    if (place == 0) place = static_cast<uint32_t>(nameBegin + length + std::size_t(form));
  }
  return places;
}

// The values of one packet on their way into a record that holds the method's defaults.
struct RecordReader {
  std::string_view text;
  Places places;
  float* params;

  std::size_t place(Name name) const { return name != kNoName ? places[indexOf(name)] : 0; }
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
  if (smoothingModeOf(params) == SmoothingMode::byLevel) {
    readWord(text, value, kSmoothingLevels, params[kSmoothingLevelSlot]);
  } else {
    readNumber(text, value, params[element.slot]);
  }
}

}  // namespace

std::size_t findDeclaration(std::string_view text, std::size_t from) {
  return findQuoted(text, from, kDeclarationNeedle, kNamespaceBase);
}

PacketSettings findSettings(std::string_view text) {
  const std::size_t declaration = findDeclaration(text, 0);
  if (declaration == kNowhere) return {};
  const std::size_t from = declaration + kDeclarationLength;
  const std::size_t place = find(text, from, kMethodNeedle);
  if (place == kNowhere) {
    return {.declared = true, .place = endOfPlaces(text, from, kMethodElement.size())};
  }
  const std::size_t nameEnd = place + kMethodElement.size();
  const Form form = textFrom(text, nameEnd).starts_with('=') ? Form::attribute : Form::element;
  const Method& method = methodNamedBy(textFrom(text, nameEnd + std::size_t(form)));
  return {true, &method, form, place};
}

void readRecord(std::string_view text, const PacketSettings& settings, float* params) {
  setDefaults(settings.method, params);
  RecordReader reader{text, findValues(text, settings.place, settings.form), params};
  for (const Element& element : settings.method->elements) reader.read(element);
  for (const Element& element : commonElements()) reader.read(element);
}

}  // namespace lumenforge
