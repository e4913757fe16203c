// Changes to the text of an XMP packet that leave every other byte as it was.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "base/whole_file.h"
#include "photos/packet_outline.h"

namespace lfmeta {

// A packet without properties, with the wrapper by which programs find it in any file.
Bytes newPacket();

// Puts a text of whole rdf:Description elements before all others, or behind them.
void insertFirst(Bytes& packet, const PacketOutline& outline, const std::string& text);
void insertLast(Bytes& packet, const PacketOutline& outline, const std::string& text);

struct SettingsSet {
  int number = 0;
  std::size_t description = 0;  // its index in the outline
};

// The sets of settings that the packet declares, in its order.
std::vector<SettingsSet> settingsSets(const PacketOutline& outline);

// Takes the settings out of the description, and the description with them when it holds nothing
// else. Returns the place where it began or, where something is left of it, its new end: there a
// new description may be inserted.
std::size_t removeSettings(Bytes& packet, const PacketDescription& description);

// The blanks before the packet's end are for growing into: takes as many, or adds as many, as bring
// it back to `size` bytes; a packet too long for that gets new ones as far as it stays within
// `most`. A packet without an end marker is left alone.
void refitPadding(Bytes& packet, std::size_t size, std::size_t most);

}  // namespace lfmeta
