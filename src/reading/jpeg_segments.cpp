// The marker segments of a JPEG file (ITU-T T.81, annex B) -> its EXIF structure, its XMP packet
// and its Photoshop block.
//
// Three passes with three attitudes, which hosts rely on: the first and the XMP search accept fill
// bytes and even a marker code without FF, the second pass takes exactly one FF; and each ends in
// its own way.
#include "reading/jpeg_segments.h"

#include <cstring>
#include <string_view>

#include "base/zeroed.h"
#include "reading/offsets.h"
#include "reading/photoshop_block.h"
#include "reading/tiff_directories.h"
#include "settings/packet.h"

namespace lumenforge {
namespace {

using namespace std::string_view_literals;

enum MarkerCode : uint8_t {
  kStartOfImage = 0xD8,
  kEndOfImage = 0xD9,
  kStartOfScan = 0xDA,
  kApp1 = 0xE1,
  kApp13 = 0xED,
  kFill = 0xFF,
};

constexpr auto kExifSignature = "Exif\0\0"sv;
constexpr auto kXmpSignature = "http://ns.adobe.com/xap/1.0/\0"sv;
constexpr auto kPhotoshopSignature = "Photoshop 3.0\0"sv;

constexpr int kMaxFillBytes = 4;
constexpr uint16_t kLengthSize = 2;
constexpr int kMaxSkippedBeforeXmp = 10;

bool matches(const uint8_t* bytes, std::string_view text) {
  return bytes != nullptr && std::memcmp(bytes, text.data(), text.size()) == 0;
}

// The first byte that is no fill byte; kFill where a fifth fill byte stands; none at the end.
std::optional<uint8_t> readMarkerCode(Cursor& cursor) {
  for (int fill = 0; fill <= kMaxFillBytes; ++fill) {
    const auto byte = cursor.read8();
    if (byte != kFill) return byte;
  }
  return kFill;
}

// A segment length, which counts itself; none at the end of the file. A length below 2 is reported.
std::optional<uint16_t> readSegmentLength(Reading& reading, Cursor& cursor) {
  const auto length = cursor.read16();
  if (length && *length < kLengthSize) reading.message = "invalid marker\n";
  return length;
}

enum class Skip : uint8_t { done, endOfFile, invalid };

// Past the segment whose marker code has been read.
Skip skipSegment(Reading& reading, Cursor& cursor) {
  const auto length = readSegmentLength(reading, cursor);
  if (!length) return Skip::endOfFile;
  if (*length < kLengthSize) return Skip::invalid;
  cursor.skip(*length - kLengthSize);
  return Skip::done;
}

bool readStartOfImage(Cursor& cursor) {
  const auto marker = cursor.read16();
  return marker == (kFill << 8 | kStartOfImage);
}

// Whether the packet of a segment with length field `length` holds settings that the host takes
// over. The lens goes into the record in either case.
bool readXmpPacket(Reading& reading, uint64_t offset, uint16_t length) {
  const ZeroedBuffer bytes = allocateZeroed(length);
  if (bytes == nullptr) return false;
  // `length` bytes from the packet on: past the segment's end, since the length counts its own two
  // bytes and the signature, too.
  if (reading.window.read(offset, {bytes.get(), length}) < length) return false;
  const std::string_view text(reinterpret_cast<const char*>(bytes.get()), length);
  findLens(text).text.copy(reading.info.lens, kLongestLens);
  const Method* method = findSettings(text).method;
  return method != nullptr && method->recorded;
}

// The first APP1 after the EXIF segment, which counts only when it carries XMP.
void readXmpSegment(Reading& reading, Cursor& cursor) {
  const auto length = cursor.read16();
  if (!length || *length < kLengthSize) return;
  if (!matches(cursor.readBytes(kXmpSignature.size()), kXmpSignature)) return;
  if (!fits32(cursor.offset())) return;
  if (readXmpPacket(reading, cursor.offset(), *length)) {
    reading.info.xmpLength = *length;
    reading.info.xmpOffset = static_cast<uint32_t>(cursor.offset());
  }
}

// False only for an invalid segment length. The end of the file ends the search, not the reading.
bool searchXmp(Reading& reading, uint64_t offset) {
  Cursor cursor(reading.window, offset, ByteOrder::big);
  for (int skipped = 0; skipped < kMaxSkippedBeforeXmp; ++skipped) {
    const auto code = readMarkerCode(cursor);
    if (!code || *code == kFill || *code == kEndOfImage || *code == kStartOfScan) return true;
    if (*code == kApp1) {
      readXmpSegment(reading, cursor);
      return true;
    }
    const Skip skip = skipSegment(reading, cursor);
    if (skip != Skip::done) return skip != Skip::invalid;
  }
  return true;
}

// The first APP1 segment, whose code has been read.
int readExifSegment(Reading& reading, Cursor& cursor) {
  const uint64_t start = cursor.offset();
  const auto length = readSegmentLength(reading, cursor);
  if (!length || *length < kLengthSize) return LUMENFORGE_CANNOT_READ;
  const bool isExif = matches(cursor.readBytes(kExifSignature.size()), kExifSignature);
  const uint64_t header = start + kLengthSize + kExifSignature.size();
  // Hosts rely on this: an APP1 of another kind does not fail at once. Its TIFF header is looked
  // for where the stream stands, with offsets from the start of the file.
  if (!isExif) return readTiffStructure(reading, header, 0);
  if (!searchXmp(reading, start + *length)) return LUMENFORGE_CANNOT_READ;
  return readTiffStructure(reading, header, header);
}

int readFirstPass(Reading& reading) {
  Cursor cursor(reading.window, 0, ByteOrder::big);
  if (!readStartOfImage(cursor)) return LUMENFORGE_CANNOT_READ;
  // Every round consumes at least a code and a length, so the file's size bounds the loop.
  while (const auto code = readMarkerCode(cursor)) {
    switch (*code) {
      case kFill:
        reading.message = "too many padding bytes\n";
        return LUMENFORGE_CANNOT_READ;
      case kEndOfImage:
      case kStartOfScan:
        return LUMENFORGE_WRONG_SIGNATURE;
      case kApp1:
        return readExifSegment(reading, cursor);
      default:
        if (skipSegment(reading, cursor) != Skip::done) return LUMENFORGE_CANNOT_READ;
    }
  }
  return LUMENFORGE_CANNOT_READ;
}

// The first APP13 segment, whose code has been read.
int readPhotoshopSegment(Reading& reading, Cursor& cursor) {
  const auto length = readSegmentLength(reading, cursor);
  if (!length || *length < kLengthSize) return LUMENFORGE_CANNOT_READ;
  if (matches(cursor.readBytes(kPhotoshopSignature.size()), kPhotoshopSignature)) {
    scanPhotoshopBlock(reading, cursor.offset(), *length);
  }
  return LUMENFORGE_OK;
}

int readSecondPass(Reading& reading) {
  Cursor cursor(reading.window, 0, ByteOrder::big);
  if (!readStartOfImage(cursor)) return LUMENFORGE_CANNOT_READ;
  while (const auto prefix = cursor.read8()) {
    if (*prefix != kFill) return LUMENFORGE_NO_MARKER;
    const auto code = cursor.read8();
    if (!code) return LUMENFORGE_CANNOT_READ;
    if (*code == kStartOfScan || *code == kEndOfImage) return LUMENFORGE_OK;
    if (*code == kApp13) return readPhotoshopSegment(reading, cursor);
    if (skipSegment(reading, cursor) != Skip::done) return LUMENFORGE_CANNOT_READ;
  }
  return LUMENFORGE_CANNOT_READ;
}

}  // namespace

int readJpeg(Reading& reading) {
  const int result = readFirstPass(reading);
  return result < 0 ? result : readSecondPass(reading);
}

}  // namespace lumenforge
