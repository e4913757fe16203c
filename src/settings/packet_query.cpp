#include "settings/packet_query.h"

#include "LumenforgeMetaLib.h"
#include "settings/packet.h"

namespace lumenforge {

std::optional<std::string_view> terminatedText(const unsigned char* bytes, std::size_t length) {
  if (length == 0 || bytes[length - 1] != '\0') return std::nullopt;
  return std::string_view(reinterpret_cast<const char*>(bytes), length - 1);
}

int querySettings(int selector, std::string_view text, std::size_t offset, float* params) {
  const PacketSettings settings = findSettings(text);
  if (!settings.declared) return 0;
  const auto place = static_cast<int>(offset + settings.place);
  if (settings.method == nullptr) {
    // Asked for the unknown method, a packet that names none gives a record of zeros.
    if (selector != LUMENFORGE_UNKNOWN_METHOD) return LUMENFORGE_OTHER_METHOD;
    setDefaults(nullptr, params);
    return place;
  }
  if (selector == LUMENFORGE_SELECT_METHOD) return settings.method->number;
  if (selector != settings.method->number) return LUMENFORGE_OTHER_METHOD;
  readRecord(text, settings, params);
  return place;
}

}  // namespace lumenforge

int get_settings_from_xmp(int selector, int length, const unsigned char* xmp, char* lensOut,
                          float* params) {
  using namespace lumenforge;
  if (length < 1) return LUMENFORGE_NOT_TERMINATED;
  const auto text = terminatedText(xmp, static_cast<std::size_t>(length));
  if (!text) return LUMENFORGE_NOT_TERMINATED;
  if (selector != LUMENFORGE_SELECT_LENS) return querySettings(selector, *text, 0, params);
  const PacketLens lens = findLens(*text);
  lens.text.copy(lensOut, kLongestLens);
  return static_cast<int>(lens.place);
}
