#include "tiff/xmp_choice.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "settings/packet.h"

namespace lumenforge {
namespace {

// The bytes of the packet that go into the file when it is written as it stands: those before its
// terminator. Only when no settings are to be written may that be missing; otherwise the last byte
// counts as it, whatever it is.
std::string_view givenText(const XmpRequest& request) {
  const auto length = static_cast<std::size_t>(request.packetLength);
  const bool complete = request.method == 0 && request.packet[length - 1] != 0;
  return {reinterpret_cast<const char*>(request.packet), complete ? length : length - 1};
}

// Whether the packet holds settings that the host keeps as they are. One whose terminator is
// missing holds none.
bool isKept(const XmpRequest& request) {
  const auto length = static_cast<std::size_t>(request.packetLength);
  if (request.method != 0 && request.packet[length - 1] != 0) return false;
  const Method* method = findSettings(givenText(request)).method;
  return method != nullptr && method->kept;
}

PacketContent generatedPacket(const XmpRequest& request) {
  PacketContent content = packetOf(request.method, request.settings);
  if (request.lensLength > 0) {
    const char* lens = request.meta->lens;
    content.lens = {lens, strnlen(lens, static_cast<std::size_t>(request.lensLength))};
  }
  return content;
}

}  // namespace

XmpChoice chooseXmp(const XmpRequest& request) {
  const bool wantsLens = request.lensLength > 0;
  const bool wantsSettings = request.method > 0;
  const bool wantsPacket = wantsLens || wantsSettings;
  if (request.packetLength > 0) {
    const std::size_t size = givenText(request).size();
    if (!wantsPacket || isKept(request)) return {size, false};
    if (!wantsSettings) {  // the lens takes the packet's place, and more room where it needs more
      return {std::max(size, measurePacket(generatedPacket(request))), true};
    }
  }
  if (!wantsPacket) return {};
  return {measurePacket(generatedPacket(request)) + 1, true};
}

void writeXmp(const XmpRequest& request, const XmpChoice& choice, std::span<uint8_t> out) {
  if (!choice.generated) {
    std::copy_n(request.packet, out.size(), out.begin());
    return;
  }
  TextSink sink(reinterpret_cast<char*>(out.data()), out.size());
  writePacket(sink, generatedPacket(request));
  std::ranges::fill(out.subspan(sink.length()), ' ');
}

}  // namespace lumenforge
