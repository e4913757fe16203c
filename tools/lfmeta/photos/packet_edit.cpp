#include "photos/packet_edit.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <string_view>

namespace lfmeta {

namespace {

using namespace std::string_view_literals;

constexpr auto kSettingsHost = "http://ns.lumenforge.org/"sv;
constexpr auto kBlanks = " \t\r\n"sv;

std::string_view textOf(const Bytes& packet) {
  return {reinterpret_cast<const char*>(packet.data()), packet.size()};
}

void insertAt(Bytes& packet, std::size_t at, std::string_view text) {
  packet.insert(packet.begin() + static_cast<std::ptrdiff_t>(at), text.begin(), text.end());
}

void eraseRange(Bytes& packet, std::size_t start, std::size_t end) {
  packet.erase(packet.begin() + static_cast<std::ptrdiff_t>(start),
               packet.begin() + static_cast<std::ptrdiff_t>(end));
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

void eraseSettingsAttributes(Bytes& packet, const PacketDescription& description) {
  const std::vector<Attribute> attributes = attributesOf(textOf(packet), description);
  std::vector<std::string> prefixes;
  for (const Attribute& attribute : attributes) {
    if (attribute.name.starts_with("xmlns:") && isOfSettings(attribute.value)) {
      prefixes.push_back(std::string(attribute.name.substr(6)) + ":");
      prefixes.emplace_back(attribute.name);
    }
  }
  std::vector<std::pair<std::size_t, std::size_t>> ranges;
  for (const Attribute& attribute : attributes) {
    if (std::any_of(prefixes.begin(), prefixes.end(), [&](const std::string& prefix) {
          return attribute.name.starts_with(prefix);
        })) {
      ranges.emplace_back(attribute.start, attribute.end);
    }
  }
  for (auto range = ranges.rbegin(); range != ranges.rend(); ++range) {
    eraseRange(packet, range->first, range->second);
  }
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

void insertFirst(Bytes& packet, const PacketOutline& outline, const std::string& text) {
  // Where the library puts a block: a second and a third line feed stay behind it.
  std::size_t at = outline.contentStart;
  for (int i = 0; i < 2 && at + 1 < packet.size() && packet[at + 1] == '\n'; ++i) ++at;
  insertAt(packet, at, text);
}

void insertLast(Bytes& packet, const PacketOutline& outline, const std::string& text) {
  insertAt(packet, outline.contentEnd, text);
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

std::size_t removeSettings(Bytes& packet, const PacketDescription& description) {
  const auto& properties = description.properties;
  if (std::all_of(properties.begin(), properties.end(),
                  [](const PacketProperty& own) { return isOfSettings(own.name); })) {
    eraseRange(packet, description.start, behindLineFeeds(packet, description.end));
    return description.start;
  }
  const std::size_t before = packet.size();
  for (auto own = properties.rbegin(); own != properties.rend(); ++own) {
    if (own->attribute || !isOfSettings(own->name)) continue;
    const bool line = own->end < packet.size() && packet[own->end] == '\n';
    eraseRange(packet, own->start, own->end + (line ? 1 : 0));
  }
  eraseSettingsAttributes(packet, description);
  return behindLineFeeds(packet, description.end - (before - packet.size()));
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
  if (wanted == packet.size()) return;
  eraseRange(packet, start, end);
  insertAt(packet, start, padding(wanted - content));
}

}  // namespace lfmeta
