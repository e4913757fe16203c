// Changes to the text of an XMP packet that leave every other byte as it was.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "base/whole_file.h"
#include "photos/packet_outline.h"

namespace lfmeta {

// A packet without properties, with the wrapper by which programs find it in any file.
Bytes newPacket();

// A piece of the packet's text and what takes its place.
struct PacketEdit {
  std::size_t start = 0;
  std::size_t end = 0;
  std::string text;
};

// The packet after all edits, which do not overlap.
Bytes edited(const Bytes& packet, std::vector<PacketEdit> edits);

// A text of whole rdf:Description elements before all others, or behind them.
PacketEdit insertFirst(const Bytes& packet, const PacketOutline& outline, std::string text);
PacketEdit insertLast(const PacketOutline& outline, std::string text);

struct SettingsSet {
  int number = 0;
  std::size_t description = 0;  // its index in the outline
};

// The sets of settings that the packet declares, in its order.
std::vector<SettingsSet> settingsSets(const PacketOutline& outline);

// Programs that sort a description's elements put some before the method, where the library reads
// none: the names of those, with commas between, and the description with its method in front.
std::string settingsBeforeMethod(const PacketDescription& description);
Bytes methodFirst(const Bytes& packet, const PacketDescription& description);

// The settings leave the description, and the description goes with them when it holds nothing
// else; `block`, whole descriptions or nothing, takes their place.
std::vector<PacketEdit> replaceSettings(const Bytes& packet, const PacketDescription& description,
                                        std::string block = {});

// The blanks before the packet's end are for growing into: takes as many, or adds as many, as bring
// it back to `size` bytes; a packet too long for that gets new ones as far as it stays within
// `most`. A packet without an end marker is left alone.
void refitPadding(Bytes& packet, std::size_t size, std::size_t most);

}  // namespace lfmeta
