#include "photos/photo_layout.h"

#include <cstddef>
#include <span>
#include <string_view>

#include "photos/jpeg_markers.h"

namespace lfmeta {

namespace {

using namespace std::string_view_literals;

constexpr std::size_t kMostSegments = 65536;   // of a JPEG; pictures have tens of them
constexpr std::size_t kMostFillBytes = 65536;  // before a marker; encoders write a few
constexpr std::size_t kFillBytesRead = 4;      // by the library

uint32_t big(std::span<const unsigned char> bytes) {
  uint32_t number = 0;
  for (const unsigned char byte : bytes) number = number << 8 | byte;
  return number;
}

bool begins(std::span<const unsigned char> bytes, std::string_view text) {
  return bytes.size() >= text.size() &&
         std::string_view(reinterpret_cast<const char*>(bytes.data()), text.size()) == text;
}

// The code of the marker at `offset`, which is moved behind it; none where there is no marker.
struct Marker {
  unsigned char code;
  std::size_t fillBytes;  // the marker's own FF among them
};
std::optional<Marker> readMarker(PhotoFile& file, uint64_t& offset) {
  for (std::size_t fillBytes = 0; fillBytes < kMostFillBytes; ++fillBytes) {
    const auto byte = file.view(offset, 1);
    if (byte.empty()) return std::nullopt;
    ++offset;
    if (byte[0] == 0xFF) continue;
    if (fillBytes == 0) return std::nullopt;
    return Marker{byte[0], fillBytes};
  }
  return std::nullopt;
}

bool isStartOfFrame(unsigned char code) {
  return code >= 0xC0 && code <= 0xCF && code != 0xC4 && code != 0xC8 && code != 0xCC;
}

PhotoLayout jpegLayout(PhotoFile& file) {
  constexpr auto kExif = "Exif\0\0"sv;
  PhotoLayout layout;
  uint64_t offset = 2;
  bool manyFillBytes = false;
  bool otherApp1 = false;
  for (std::size_t segments = 0; segments < kMostSegments; ++segments) {
    const auto marker = readMarker(file, offset);
    if (!marker) return layout;
    const unsigned char code = marker->code;
    layout.fillBytes |= marker->fillBytes > 1;
    manyFillBytes |= marker->fillBytes > kFillBytesRead;
    if (code == kEndOfImage || code == kStartOfScan) {
      layout.sound = true;
      return layout;
    }
    const auto size = file.view(offset, 2);
    if (size.empty() || big(size) < 2) return layout;
    const uint64_t next = offset + big(size);
    if (isStartOfFrame(code) && layout.width == 0) {
      const auto frame = file.view(offset, 7);
      if (!frame.empty()) {
        layout.height = big(frame.subspan(3, 2));
        layout.width = big(frame.subspan(5, 2));
      }
    } else if (code == kApp1 && !layout.exif) {
      if (begins(file.view(offset + 2, kExif.size()), kExif)) {
        layout.exif = offset + 2 + kExif.size();
        if (manyFillBytes) layout.notRead = "five fill bytes or more stand before its EXIF data";
        if (otherApp1) layout.notRead = "another APP1 segment stands before its EXIF data";
      } else {
        otherApp1 = true;
      }
    }
    offset = next;
  }
  return layout;
}

PhotoLayout psdLayout(PhotoFile& file) {
  constexpr uint32_t kExifResource = 0x0422;
  constexpr uint32_t kRgb = 3;
  PhotoLayout layout;
  const auto header = file.view(0, 30);
  if (header.empty()) return layout;
  const uint32_t channels = big(header.subspan(12, 2));
  layout.height = big(header.subspan(14, 4));
  layout.width = big(header.subspan(18, 4));
  const bool rgb = channels >= 3 && big(header.subspan(24, 2)) == kRgb;
  uint64_t offset = 30 + uint64_t{big(header.subspan(26, 4))};
  const auto length = file.view(offset, 4);
  if (length.empty()) return layout;
  offset += 4;
  const uint64_t end = offset + big(length);
  bool named = false;
  while (offset < end) {
    const auto start = file.view(offset, 7);
    if (!begins(start, "8BIM"sv)) return layout;
    const uint32_t id = big(start.subspan(4, 2));
    const uint32_t name = start[6];  // its length; padded to an even number with its own byte
    const uint64_t data = offset + 6 + ((name + 2) & ~1U) + 4;
    const auto size = file.view(data - 4, 4);
    if (size.empty()) return layout;
    named |= name > 0;
    if (id == kExifResource && !layout.exif) {
      layout.exif = data;
      if (named) layout.notRead = "an image resource with a name stands before its EXIF data";
      if (!rgb) layout.notRead = "it is not an RGB picture";
    }
    offset = data + big(size) + big(size) % 2;
  }
  layout.sound = offset - end <= 1 && end <= file.size();  // the last may lack its padding
  return layout;
}

}  // namespace

PhotoLayout findLayout(PhotoFile& file, PhotoType type) {
  switch (type) {
    case PhotoType::jpeg:
      return jpegLayout(file);
    case PhotoType::psd:
      return psdLayout(file);
    case PhotoType::tiff:
      break;
  }
  return {.sound = true, .exif = 0};
}

}  // namespace lfmeta
