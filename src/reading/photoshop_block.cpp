// A block of Photoshop image resources -> the places of the IPTC-NAA data and of the thumbnail.
//
// The scan looks at every byte position, not only at resource boundaries, and a later match wins:
// hosts rely on both.
#include "reading/photoshop_block.h"

#include <algorithm>
#include <optional>
#include <span>
#include <string_view>

#include "base/zeroed.h"
#include "reading/offsets.h"

namespace lumenforge {
namespace {

// The signature and the high byte of both resource IDs.
constexpr std::string_view kResourceStart = "8BIM\x04";
constexpr std::size_t kIdLowByte = 5;
constexpr std::size_t kNameOffset = 6;
constexpr std::size_t kHeaderSize = 8;  // signature, ID and empty name
constexpr uint8_t kIptcId = 0x04;
constexpr uint8_t kThumbnailId = 0x0C;

// Positions within a resource with an empty name.
constexpr std::size_t kSizeOffset = 8;
constexpr std::size_t kDataOffset = 12;
constexpr std::size_t kThumbWidthOffset = 16;
constexpr std::size_t kThumbHeightOffset = 20;
constexpr std::size_t kThumbRowBytesOffset = 24;
constexpr std::size_t kThumbLengthOffset = 32;
constexpr std::size_t kThumbDataOffset = 40;

// A block is scanned in stretches; a resource that begins in one may look this far beyond it.
constexpr std::size_t kStretchSize = 65536;
constexpr std::size_t kLookAhead = kThumbDataOffset;

struct Resource {
  std::span<const uint8_t> bytes;  // from its signature on, as far as the file goes
  uint64_t offset = 0;

  std::optional<uint32_t> number(std::size_t position) const {
    if (bytes.size() < position + 4) return std::nullopt;
    return load32(bytes.data() + position, ByteOrder::big);
  }
};

void setField(std::optional<uint32_t> number, uint32_t& field) {
  if (number) field = *number;
}

void takeIptc(const Resource& resource, ExifInfo& info) {
  const auto size = resource.number(kSizeOffset);
  const uint64_t place = resource.offset + kDataOffset;
  if (!size || !fits32(place)) return;
  info.iptcLength = *size;
  info.iptcOffset = static_cast<uint32_t>(place);
}

bool takeThumbnail(const Resource& resource, ExifInfo& info) {
  const uint64_t place = resource.offset + kThumbDataOffset;
  if (!fits32(place)) return false;
  setField(resource.number(kThumbWidthOffset), info.thumbWidth);
  setField(resource.number(kThumbHeightOffset), info.thumbHeight);
  setField(resource.number(kThumbRowBytesOffset), info.thumbRowBytes);
  const auto length = resource.number(kThumbLengthOffset);
  if (!length) return false;
  info.thumbLength = *length;
  info.thumbOffset = static_cast<uint32_t>(place);
  return true;
}

// One stretch of a block: resources begin in the first `size` bytes, `bytes` reaches further.
int scanStretch(std::span<const uint8_t> bytes, std::size_t size, uint64_t offset, int result,
                ExifInfo& info) {
  const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  std::size_t p = text.find(kResourceStart);
  for (; p < size && bytes.size() - p >= kHeaderSize; p = text.find(kResourceStart, p + 1)) {
    const Resource resource{bytes.subspan(p), offset + p};
    const uint8_t id = resource.bytes[kIdLowByte];
    const bool nameIsEmpty =
        resource.bytes[kNameOffset] == 0 && resource.bytes[kNameOffset + 1] == 0;
    if (id == kIptcId && nameIsEmpty) takeIptc(resource, info);
    if (id == kThumbnailId && takeThumbnail(resource, info)) {
      result = static_cast<int>(info.thumbLength);
    }
  }
  return result;
}

}  // namespace

int scanPhotoshopBlock(Reading& reading, uint64_t offset, uint32_t length) {
  if (length < kHeaderSize || reading.photoshopBlocksLeft == 0) return LUMENFORGE_OK;
  --reading.photoshopBlocksLeft;
  const std::size_t capacity = std::min<std::size_t>(length, kStretchSize) + kLookAhead;
  const ZeroedBuffer buffer = allocateZeroed(capacity);
  if (buffer == nullptr) return LUMENFORGE_NO_MEMORY;

  int result = LUMENFORGE_OK;
  const uint64_t positions = length - kHeaderSize + 1;  // at which a resource may begin
  for (uint64_t done = 0; done < positions; done += kStretchSize) {
    const std::span<uint8_t> bytes(buffer.get(),
                                   std::min<uint64_t>(capacity, length - done + kLookAhead));
    const std::size_t have = reading.window.read(offset + done, bytes);
    const auto size = static_cast<std::size_t>(std::min<uint64_t>(positions - done, kStretchSize));
    result = scanStretch(bytes.first(have), size, offset + done, result, reading.info);
    if (have < bytes.size()) break;  // the file ends here
  }
  return result;
}

}  // namespace lumenforge

int parse_photoshop_data(FILE* f, int length, ExifInfo* info) {
  using namespace lumenforge;
  if (length < 0) return LUMENFORGE_NO_MEMORY;
  const auto start = positionOf(f);
  if (!start) return LUMENFORGE_OK;
  Window window(f, *start);
  Reading reading{window, *info};
  return scanPhotoshopBlock(reading, *start, static_cast<uint32_t>(length));
}
