#include "photos/packet_edit.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <string_view>

namespace lfmeta {

namespace {

using namespace std::string_view_literals;

constexpr auto kSettingsHost = "http://ns.lumenforge.org/"sv;
constexpr auto kDeclaration = "xmlns:"sv;
constexpr auto kBlanks = " \t\r\n"sv;

std::string_view textOf(const Bytes& packet) {
  return {reinterpret_cast<const char*>(packet.data()), packet.size()};
}

bool isOfSettings(std::string_view name) {
  return name.starts_with(kSettingsHost);
}

// Up to two line feeds, as they end a block of settings.
std::size_t behindLineFeeds(const Bytes& packet, std::size_t at) {
  for (int i = 0; i < 2 && at < packet.size() && packet[at] == '\n'; ++i) ++at;
  return at;
}

// The attributes of an opening tag, as ranges of the packet, with the blanks before each.
struct Attribute {
  std::size_t start;
  std::size_t end;
  std::string_view name;
  std::string_view value;
};

std::vector<Attribute> attributesOf(std::string_view packet, const PacketDescription& description) {
  std::vector<Attribute> attributes;
  std::size_t at = packet.find_first_of(kBlanks, description.start);
  while (at < description.openingEnd) {
    const std::size_t name = packet.find_first_not_of(kBlanks, at);
    const std::size_t equals = packet.find('=', name);
    if (equals >= description.openingEnd) break;
    const std::size_t quote = packet.find_first_not_of(kBlanks, equals + 1);
    const std::size_t end = packet.find(packet[quote], quote + 1) + 1;
    const std::size_t nameEnd = std::min(packet.find_first_of(kBlanks, name), equals);
    attributes.push_back(
        {at, end, packet.substr(name, nameEnd - name), packet.substr(quote + 1, end - quote - 2)});
    at = end;
  }
  return attributes;
}

// Those of the settings, and the declaration of their namespace.
std::vector<PacketEdit> withoutSettingsAttributes(std::string_view packet,
                                                  const PacketDescription& description) {
  const std::vector<Attribute> attributes = attributesOf(packet, description);
  std::string_view prefix;
  std::vector<PacketEdit> edits;
  for (const Attribute& own : attributes) {
    if (own.name.starts_with(kDeclaration) && isOfSettings(own.value)) {
      prefix = own.name.substr(kDeclaration.size());
      edits.push_back({own.start, own.end, {}});
    }
  }
  for (const Attribute& own : attributes) {
    if (own.name.size() > prefix.size() && own.name.starts_with(prefix) &&
        own.name[prefix.size()] == ':') {
      edits.push_back({own.start, own.end, {}});
    }
  }
  return edits;
}

// The local name of a setting that is an element; empty for any other property.
std::string_view settingName(const PacketProperty& property) {
  if (property.attribute || !isOfSettings(property.name)) return {};
  return std::string_view(property.name).substr(property.name.rfind(' ') + 1);
}

const PacketProperty* findMethodElement(const PacketDescription& description) {
  for (const PacketProperty& own : description.properties) {
    if (settingName(own) == "Method") return &own;
  }
  return nullptr;
}

std::string padding(std::size_t size) {
  constexpr std::size_t kLine = 100;
  std::string text(size, ' ');
  for (std::size_t i = 0; i < size; i += kLine) text[i] = '\n';
  return text;
}

}  // namespace

Bytes newPacket() {
  const std::string text =
      "<?xpacket begin='\xEF\xBB\xBF' id='W5M0MpCehiHzreSzNTczkc9d'?>\n"
      "<x:xmpmeta xmlns:x='adobe:ns:meta/'>\n<rdf:RDF xmlns:rdf='" +
      std::string(kRdfNamespace) + "'>\n\n</rdf:RDF>\n</x:xmpmeta>\n<?xpacket end='w'?>";
  return {text.begin(), text.end()};
}

Bytes edited(const Bytes& packet, std::vector<PacketEdit> edits) {
  std::stable_sort(edits.begin(), edits.end(),
                   [](const PacketEdit& a, const PacketEdit& b) { return a.start < b.start; });
  Bytes after;
  auto at = packet.begin();
  for (const PacketEdit& edit : edits) {
    const auto start = packet.begin() + static_cast<std::ptrdiff_t>(edit.start);
    after.insert(after.end(), at, start);
    after.insert(after.end(), edit.text.begin(), edit.text.end());
    at = packet.begin() + static_cast<std::ptrdiff_t>(edit.end);
  }
  after.insert(after.end(), at, packet.end());
  return after;
}

PacketEdit insertFirst(const Bytes& packet, const PacketOutline& outline, std::string text) {
  // Where the library puts a block: a second and a third line feed stay behind it.
  std::size_t at = outline.contentStart;
  for (int i = 0; i < 2 && at + 1 < packet.size() && packet[at + 1] == '\n'; ++i) ++at;
  return {at, at, std::move(text)};
}

PacketEdit insertLast(const PacketOutline& outline, std::string text) {
  return {outline.contentEnd, outline.contentEnd, std::move(text)};
}

std::vector<SettingsSet> settingsSets(const PacketOutline& outline) {
  constexpr auto kPath = "lumenforge_settings"sv;
  std::vector<SettingsSet> sets;
  for (std::size_t i = 0; i < outline.descriptions.size(); ++i) {
    for (const std::string_view uri : outline.descriptions[i].declared) {
      if (!isOfSettings(uri)) continue;
      SettingsSet set{0, i};
      const std::string_view path = uri.substr(kSettingsHost.size());
      if (path.starts_with(kPath)) {
        std::from_chars(path.data() + kPath.size(), path.data() + path.size(), set.number);
      }
      sets.push_back(set);
    }
  }
  return sets;
}

std::string settingsBeforeMethod(const PacketDescription& description) {
  std::string names;
  const PacketProperty* method = findMethodElement(description);
  for (const PacketProperty& own : description.properties) {
    const std::string_view name = settingName(own);
    if (method == nullptr || name.empty() || name == "Version" || own.start >= method->start) {
      continue;
    }
    names.append(names.empty() ? "" : ", ").append(name);
  }
  return names;
}

Bytes methodFirst(const Bytes& packet, const PacketDescription& description) {
  const auto at = [&](std::size_t place) {
    return packet.begin() + static_cast<std::ptrdiff_t>(place);
  };
  Bytes text(at(description.start), at(description.end));
  const PacketProperty* method = findMethodElement(description);
  if (method != nullptr) {
    text.insert(
        text.begin() + static_cast<std::ptrdiff_t>(description.openingEnd - description.start),
        at(method->start), at(method->end));
  }
  return text;
}

std::vector<PacketEdit> replaceSettings(const Bytes& packet, const PacketDescription& description,
                                        std::string block) {
  const auto& properties = description.properties;
  const std::size_t end = behindLineFeeds(packet, description.end);
  if (std::all_of(properties.begin(), properties.end(),
                  [](const PacketProperty& own) { return isOfSettings(own.name); })) {
    return {{description.start, end, std::move(block)}};
  }
  std::vector<PacketEdit> edits = withoutSettingsAttributes(textOf(packet), description);
  for (const PacketProperty& own : properties) {
    if (own.attribute || !isOfSettings(own.name)) continue;
    const bool line = own.end < packet.size() && packet[own.end] == '\n';
    edits.push_back({own.start, own.end + (line ? 1 : 0), {}});
  }
  edits.push_back({end, end, std::move(block)});
  return edits;
}

void refitPadding(Bytes& packet, std::size_t size, std::size_t most) {
  constexpr std::size_t kNewPadding = 2048;
  const std::string_view text = textOf(packet);
  const std::size_t end = text.rfind("<?xpacket end");
  if (end == std::string_view::npos || end == 0) return;
  const std::size_t last = text.find_last_not_of(kBlanks, end - 1);
  const std::size_t start = last == std::string_view::npos ? 0 : last + 1;
  const std::size_t content = packet.size() - (end - start);
  std::size_t wanted = std::max(size, content + 1);
  if (wanted > size) wanted = std::max(content + 1, std::min(content + kNewPadding, most));
  if (wanted != packet.size()) packet = edited(packet, {{start, end, padding(wanted - content)}});
}

}  // namespace lfmeta
