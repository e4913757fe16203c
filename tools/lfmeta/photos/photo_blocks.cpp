#include "photos/photo_blocks.h"

#include <algorithm>
#include <span>
#include <string_view>

#include "base/failure.h"
#include "photos/jpeg_markers.h"
#include "photos/tiff_structure.h"

namespace lfmeta {

namespace {

using namespace std::string_view_literals;

constexpr std::size_t kMostSegments = 65536;  // pictures have tens of them

uint32_t big(std::span<const unsigned char> bytes) {
  uint32_t number = 0;
  for (const unsigned char byte : bytes) number = number << 8 | byte;
  return number;
}

bool begins(const Bytes& bytes, std::string_view text) {
  return bytes.size() >= text.size() &&
         std::equal(text.begin(), text.end(), bytes.begin(),
                    [](char a, unsigned char b) { return static_cast<unsigned char>(a) == b; });
}

void addJpegBlocks(const std::string& path, PhotoBlocks& blocks) {
  constexpr auto kExtension = "http://ns.adobe.com/xmp/extension/\0"sv;
  constexpr auto kPhotoshop = "Photoshop 3.0\0"sv;
  const auto behind = [](const JpegSegment& segment, std::string_view signature) {
    return Region{segment.data.offset + signature.size(), segment.data.size - signature.size()};
  };
  for (const JpegSegment& segment : jpegSegments(path)) {
    if (!blocks.exif && isSegment(path, segment, kApp1, kExifSignature)) {
      blocks.exif = behind(segment, kExifSignature).offset;
    } else if (!blocks.xmp && isSegment(path, segment, kApp1, kXmpSignature)) {
      blocks.xmp = behind(segment, kXmpSignature);
    } else if (isSegment(path, segment, kApp1, kExtension)) {
      blocks.hasExtendedXmp = true;
    } else if (!blocks.photoshop && isSegment(path, segment, kApp13, kPhotoshop)) {
      blocks.photoshop = behind(segment, kPhotoshop);
    }
  }
}

void addTiffBlocks(const std::string& path, PhotoBlocks& blocks) {
  constexpr uint16_t kXmpTag = 700;
  const auto tiff = TiffStructure::at(path);
  if (!tiff) return;
  blocks.exif = 0;
  const auto directory = tiff->directory(tiff->firstDirectory());
  const TiffEntry* entry = directory ? findEntry(*directory, kXmpTag) : nullptr;
  if (entry != nullptr && entry->count > entry->field.size()) {
    blocks.xmp = Region{tiff->number(entry->field), entry->count};
  }
}

void addPsdBlocks(const std::string& path, PhotoBlocks& blocks) {
  constexpr uint64_t kColourModeData = 26;
  const Bytes colourMode = readRegion(path, kColourModeData, 4);
  if (colourMode.empty()) return;
  uint64_t offset = kColourModeData + 4 + big(colourMode);
  const Bytes length = readRegion(path, offset, 4);
  if (length.empty()) return;
  offset += 4;
  const uint64_t end = offset + big(length);
  for (std::size_t count = 0; offset < end && count < kMostSegments; ++count) {
    const Bytes start = readRegion(path, offset, 7);
    if (!begins(start, "8BIM"sv)) return;
    // The name is padded to an even number of bytes, its own length among them.
    const uint64_t data = offset + 6 + ((uint64_t{start[6]} + 2) & ~uint64_t{1}) + 4;
    const Bytes size = readRegion(path, data - 4, 4);
    if (size.empty()) return;
    const Region region{data, big(size)};
    switch (big(std::span(start).subspan(4, 2))) {
      case 0x0404:
        blocks.iptc = region;
        break;
      case 0x0422:
        blocks.exif = data;
        break;
      case 0x0424:
        blocks.xmp = region;
        break;
      default:
        break;
    }
    offset = data + region.size + region.size % 2;
  }
}

}  // namespace

std::vector<JpegSegment> jpegSegments(const std::string& path) {
  std::vector<JpegSegment> segments;
  if (!begins(readRegion(path, 0, 2), "\xFF\xD8"sv)) return {};
  uint64_t offset = 2;
  while (segments.size() < kMostSegments) {
    const Bytes start = readRegion(path, offset, 4);
    if (start.empty() || start[0] != 0xFF) return {};
    if (start[1] == 0xFF) {  // a fill byte
      ++offset;
      continue;
    }
    if (start[1] == kStartOfScan || start[1] == kEndOfImage) return segments;
    const uint32_t length = big(std::span(start).last(2));
    if (length < 2) return {};
    segments.push_back({start[1], offset, {offset + 4, length - 2}});
    offset += 2 + length;
  }
  return {};
}

bool isSegment(const std::string& path, const JpegSegment& segment, unsigned char marker,
               std::string_view signature) {
  return segment.marker == marker && segment.data.size >= signature.size() &&
         begins(readRegion(path, segment.data.offset, signature.size()), signature);
}

PhotoBlocks findBlocks(const std::string& path, PhotoType type) {
  PhotoBlocks blocks;
  switch (type) {
    case PhotoType::jpeg:
      addJpegBlocks(path, blocks);
      break;
    case PhotoType::tiff:
      addTiffBlocks(path, blocks);
      break;
    case PhotoType::psd:
      addPsdBlocks(path, blocks);
      break;
  }
  return blocks;
}

Bytes readPacket(const std::string& path, const PhotoBlocks& blocks) {
  constexpr uint64_t kLongestPacket = 16U << 20;
  if (!blocks.xmp) return {};
  if (blocks.xmp->size > kLongestPacket)
    throw Failure(path, "has an XMP packet of more than 16 MiB");
  Bytes packet = readRegion(path, blocks.xmp->offset, blocks.xmp->size);
  while (!packet.empty() && packet.back() == 0) packet.pop_back();
  return packet;
}

}  // namespace lfmeta
