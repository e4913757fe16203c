// Settings and lens to XMP text: RDF descriptions inside x:xmpmeta, one element a line.
#include "settings/packet.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <span>

#include "LumenforgeMetaLib.h"
#include "base/number_text.h"
#include "settings/xmp_texts.h"

namespace lumenforge {
namespace {

// Room for the longest value, a list.
using ValueBuffer = std::array<char, kListLength*(kFixedTextSize + 1)>;

std::string_view fixedText(float value, int decimals, ValueBuffer& buffer) {
  const auto out = std::span(buffer).first<kFixedTextSize>();
  return {buffer.data(), formatFixed(value, decimals, out)};
}

std::string_view listText(const float* slots, ValueBuffer& buffer) {
  std::size_t length = 0;
  for (int i = 0; i < kListLength; ++i) {
    if (i > 0) buffer[length++] = ',';
    length += formatFixed(slots[i], 1, std::span(buffer).subspan(length).first<kFixedTextSize>());
  }
  return {buffer.data(), length};
}

// A mode that is neither is written as the first.
std::string_view modeText(const float* params) {
  return smoothingModeOf(params) == SmoothingMode::bySlider ? kSmoothingModes.back()
                                                            : kSmoothingModes.front();
}

// The word of a level that has none is that of the mode.
std::string_view levelText(float slot) {
  const auto level = wordIndex(slot, kSmoothingLevels.size());
  return level ? kSmoothingLevels[*level] : kSmoothingModes.front();
}

std::string_view valueText(const Element& element, const float* params, ValueBuffer& buffer) {
  const float value = params[element.slot];
  switch (element.text) {
    case ValueText::absent:
      break;
    case ValueText::oneDecimal:
      return fixedText(value, 1, buffer);
    case ValueText::sixDecimals:
      return fixedText(value, 6, buffer);
    case ValueText::clipCurve:
      return fixedText(toClipCurve(value), 3, buffer);
    case ValueText::yesNo:
      return value > 0 ? "Yes" : "No ";
    case ValueText::listOfEight:
      return listText(params + element.slot, buffer);
    case ValueText::modeWord:
      return modeText(params);
    case ValueText::levelOrNumber:
      return smoothingModeOf(params) == SmoothingMode::bySlider
                 ? fixedText(value, 1, buffer)
                 : levelText(params[kSmoothingLevelSlot]);
  }
  return {};
}

void writeLine(TextSink& sink, std::string_view name, std::string_view value) {
  sink.add("<");
  sink.add(kPrefix);
  sink.add(name);
  sink.add(">");
  sink.add(value);
  sink.add("</");
  sink.add(kPrefix);
  sink.add(name);
  sink.add(">\n");
}

void writeElement(TextSink& sink, const Element& element, const float* params) {
  if (element.text == ValueText::absent) return;
  if (element.text == ValueText::levelOrNumber && !smoothingModeOf(params)) {
    // A mode that is neither has no smoothing value; the line of the mode stands there once more.
    return writeLine(sink, textOf(name("SmoothingMode")), modeText(params));
  }
  ValueBuffer buffer;
  writeLine(sink, textOf(element.name), valueText(element, params, buffer));
}

void writeLens(TextSink& sink, std::string_view lens) {
  sink.add("<rdf:Description rdf:about=''\nxmlns:aux='");
  sink.add(kAuxNamespace);
  sink.add("'>\n<aux:Lens>");
  sink.add(lens);
  sink.add("</aux:Lens>\n</rdf:Description>\n\n");
}

void writeNamespace(TextSink& sink, int setNumber) {
  std::array<char, std::numeric_limits<int>::digits10 + 2> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), setNumber).ptr;
  sink.add(kNamespaceDeclaration);
  sink.add("'");
  sink.add(kNamespaceBase);
  sink.add(kNamespacePath);
  if (setNumber < 10) sink.add("0");
  sink.add({digits.data(), static_cast<std::size_t>(end - digits.data())});
  sink.add("'>\n");
}

void writeSettings(TextSink& sink, const PacketContent& content) {
  sink.add("<rdf:Description rdf:about=''\n");
  writeNamespace(sink, std::max(content.setNumber, 1));
  writeLine(sink, "Version", "6.0");
  const Method* method = methodOf(content.method);
  if (method != nullptr && !method->name.empty()) {
    writeLine(sink, kMethodElement.substr(kPrefix.size()), method->name);
    for (const Element& element : method->elements) writeElement(sink, element, content.params);
  }
  for (const Element& element : commonElements()) writeElement(sink, element, content.params);
  sink.add("</rdf:Description>\n\n");
}

}  // namespace

PacketContent packetOf(int method, const float* params) {
  const bool wrapped = method <= LUMENFORGE_WITHOUT_WRAPPER;
  return {.method = wrapped ? method : method - LUMENFORGE_WITHOUT_WRAPPER,
          .params = params,
          .wrapped = wrapped};
}

void writePacket(TextSink& sink, const PacketContent& content) {
  if (content.wrapped) {
    sink.add("<x:xmpmeta xmlns:x='");
    sink.add(kXmpNamespace);
    sink.add("'>\n<rdf:RDF xmlns:rdf='");
    sink.add(kRdfNamespace);
    sink.add("'>\n\n");
  }
  if (content.lens) writeLens(sink, *content.lens);
  if (content.method >= 1) writeSettings(sink, content);
  if (content.wrapped) sink.add("</rdf:RDF>\n</x:xmpmeta>\n");
}

std::size_t measurePacket(const PacketContent& content) {
  TextSink sink;
  writePacket(sink, content);
  return sink.length();
}

}  // namespace lumenforge

int embed_xmp(int setNumber, int method, const float* params, int hasLens, const char* lens,
              char* out) {
  using namespace lumenforge;
  PacketContent content = packetOf(method, params);
  content.setNumber = setNumber;
  if (hasLens > 0) content.lens = lens;
  TextSink sink = setNumber == 0 ? TextSink() : TextSink(out, kUnlimited);
  writePacket(sink, content);
  return static_cast<int>(sink.length());
}
