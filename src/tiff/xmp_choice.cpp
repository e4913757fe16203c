#include "tiff/xmp_choice.h"

#include <algorithm>
#include <array>
#include <limits>

#include "base/zeroed.h"

namespace lumenforge {

namespace {

// A packet that holds settings of these methods goes into the file as it is. Not the set of methods
// whose packets are recorded on reading.
constexpr std::array kKeptMethods = {1, 2, 3, 4, 10, 11, 15};

constexpr int kMethodQuery = -1;

using LensText = std::array<char, sizeof(MetadataBuf::lens)>;

LensText lensOf(const XmpRequest& request) {
  LensText lens{};
  std::copy_n(request.meta->lens, std::max(request.lensLength, 0), lens.begin());
  return lens;
}

int generate(const XmpRequest& request, int setNumber, uint8_t* out) {
  return embed_xmp(setNumber, request.method, request.settings, request.lensLength,
                   lensOf(request).data(), reinterpret_cast<char*>(out));
}

uint64_t generatedSize(const XmpRequest& request) {
  return static_cast<uint64_t>(std::max(generate(request, 0, nullptr), 0));
}

// The method of the packet's settings, or what the settings reader says when there is none. Only
// when no settings are to be written is a missing terminator made up for. None without memory for
// that.
std::optional<int> packetMethod(const XmpRequest& request) {
  const auto length = static_cast<std::size_t>(request.packetLength);
  if (request.method != 0 || request.packet[length - 1] == 0) {
    return get_settings_from_xmp(kMethodQuery, request.packetLength, request.packet, nullptr,
                                 nullptr);
  }
  if (request.packetLength == std::numeric_limits<int32_t>::max()) return std::nullopt;
  const ZeroedBuffer terminated = allocateZeroed(length + 1);
  if (terminated == nullptr) return std::nullopt;
  std::copy_n(request.packet, length, terminated.get());
  return get_settings_from_xmp(kMethodQuery, request.packetLength + 1, terminated.get(), nullptr,
                               nullptr);
}

// The packet without its terminator; without its last byte, whatever it is, where a terminator was
// not made up for.
uint64_t sizeAsGiven(const XmpRequest& request) {
  const auto length = static_cast<uint64_t>(request.packetLength);
  return request.method == 0 && request.packet[length - 1] != 0 ? length : length - 1;
}

}  // namespace

std::optional<XmpChoice> chooseXmp(const XmpRequest& request) {
  const bool wantsLens = request.lensLength > 0;
  const bool wantsSettings = request.method > 0;
  if (request.packetLength > 0) {
    const std::optional<int> method = packetMethod(request);
    if (!method) return std::nullopt;
    const bool kept = std::ranges::find(kKeptMethods, *method) != kKeptMethods.end();
    if (kept || (!wantsSettings && !wantsLens)) return XmpChoice{sizeAsGiven(request), false};
    if (!wantsSettings) {  // the lens takes the packet's place, and more room where it needs more
      return XmpChoice{std::max(sizeAsGiven(request), generatedSize(request)), true};
    }
  }
  if (!wantsSettings && !wantsLens) return XmpChoice{};
  return XmpChoice{generatedSize(request) + 1, true};
}

void writeXmp(const XmpRequest& request, const XmpChoice& choice, std::span<uint8_t> out) {
  if (!choice.generated) {
    std::copy_n(request.packet, out.size(), out.begin());
    return;
  }
  const int written = std::max(generate(request, 1, out.data()), 0);
  std::ranges::fill(out.subspan(std::min(static_cast<std::size_t>(written), out.size())), ' ');
}

}  // namespace lumenforge
