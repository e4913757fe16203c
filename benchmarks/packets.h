// Settings packets of any size.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "LumenforgeMetaLib.h"

namespace bench {

inline constexpr int kDetailsEnhancer = 1;

inline std::array<float, kSettingsParamsSlots> someSettings() {
  std::array<float, kSettingsParamsSlots> params;
  def_param(kDetailsEnhancer, params.data());
  for (std::size_t slot = 0; slot < params.size(); ++slot) {
    if (slot != 16) params[slot] += static_cast<float>(slot) * 1.7F - 20;
  }
  return params;
}

inline std::string settingsPacket() {
  const auto params = someSettings();
  std::string packet(
      static_cast<std::size_t>(embed_xmp(0, kDetailsEnhancer, params.data(), 0, nullptr, nullptr)),
      '\0');
  embed_xmp(1, kDetailsEnhancer, params.data(), 0, nullptr, packet.data());
  return packet;
}

// A packet of `size` bytes with its settings last, and what editors write before them.
inline std::string packetOf(std::size_t size) {
  constexpr std::string_view kOther =
      "   <crs:ToneCurvePV2012Red>\n    <rdf:Seq>\n     <rdf:li>0, 0</rdf:li>\n"
      "     <rdf:li>255, 255</rdf:li>\n    </rdf:Seq>\n   </crs:ToneCurvePV2012Red>\n"
      "     <rdf:li stEvt:action=\"saved\" stEvt:softwareAgent=\"Some Editor 12.1\"\n"
      "      stEvt:changed=\"/metadata\" stEvt:when=\"2024-06-01T12:30:00+02:00\"/>\n"
      "   <dc:rights><rdf:Alt><rdf:li xml:lang=\"x-default\">half of "
      "itself</rdf:li></rdf:Alt></dc:rights>\n";
  const std::string settings = settingsPacket();
  std::string text = settings.substr(0, 104);
  while (text.size() + kOther.size() + settings.size() < size) text += kOther;
  text.resize(size - (settings.size() - 104) - 1, ' ');
  return text + settings.substr(104) + '\0';
}

inline const unsigned char* bytesOf(const std::string& text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

}  // namespace bench
