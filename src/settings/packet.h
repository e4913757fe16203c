// What the other wings use of this one: the settings and the lens of a packet, found in its text
// and written as text. Texts go without the NUL that ends them at the library's boundary.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "settings/schema.h"
#include "settings/text_sink.h"
#include "settings/value_text.h"

namespace lumenforge {

// The settings of a packet, found and not yet read.
struct PacketSettings {
  bool declared = false;  // the text declares the namespace of settings
  const Method* method =
      nullptr;                // null when none is named; a name of no method's is the unknown's
  Form form = Form::element;  // of the method element, and so of all
  std::size_t place = 0;      // of the method element, or where the search for it ended
};

// The first place of a settings namespace declaration at or after `from`, or kNowhere.
std::size_t findDeclaration(std::string_view text, std::size_t from);

PacketSettings findSettings(std::string_view text);

// The settings into a record of 60 slots; a method has been found.
void readRecord(std::string_view text, const PacketSettings& settings, float* params);

// A packet's lens: aux:Lens (XMP specification, auxiliary schema for camera-specific Exif
// properties), at most 63 bytes of the packet's text, empty when there is none that fits.
struct PacketLens {
  std::string_view text;
  std::size_t place;  // of its end, or where the search ended
};

inline constexpr std::size_t kLongestLens = 63;

PacketLens findLens(std::string_view text);

struct PacketContent {
  int setNumber = 1;  // 0 or less stands for 1
  int method = 0;     // below 1: no settings block
  const float* params = nullptr;
  std::optional<std::string_view> lens = {};  // none: no lens block
  bool wrapped = true;                        // in x:xmpmeta and rdf:RDF
};

// The method as the boundary takes it: above LUMENFORGE_WITHOUT_WRAPPER, the number of a method to
// be written without the wrapper.
PacketContent packetOf(int method, const float* params);

void writePacket(TextSink& sink, const PacketContent& content);

// The length of the packet's text.
std::size_t measurePacket(const PacketContent& content);

}  // namespace lumenforge
