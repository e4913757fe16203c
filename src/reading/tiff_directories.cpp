// A TIFF header and its chain of image file directories (TIFF 6.0) -> ExifInfo.
#include <algorithm>
#include <string_view>

#include "base/result.h"
#include "reading/offsets.h"
#include "reading/walk.h"

namespace lumenforge {
namespace {

enum TiffTag : uint16_t {
  kModel = 0x0110,
  kOrientation = 0x0112,
  kThumbnailOffset = 0x0201,
  kThumbnailLength = 0x0202,
  kXmpPacket = 0x02BC,
  kIptcNaa = 0x83BB,
  kPhotoshopResources = 0x8649,
  kExifPointer = 0x8769,
  kGpsPointer = 0x8825,
};

constexpr uint16_t kTiffNumber = 42;
constexpr int kLastDirectory = 2;         // directories 0, 1 and 2 are read
constexpr uint16_t kEntriesOfLast = 255;  // a directory of exactly so many is the last one read

// Bytes of one element of types 0 to 13, one digit a type. Type 13 has 8: hosts rely on what the
// table gives, also where it surprises.
constexpr std::string_view kTypeSizes = "11124811248488";

uint64_t valueSize(const DirectoryEntry& entry) {
  const std::size_t type = entry.type < kTypeSizes.size() ? entry.type : 0;
  return uint64_t{entry.count} * static_cast<uint64_t>(kTypeSizes[type] - '0');
}

// A text in the value field itself. Short names are padded with blanks to four characters.
void takeInlineModel(const DirectoryEntry& entry, char* model) {
  std::copy(entry.field.begin(), entry.field.end(), model);
  if (entry.count != 3 && entry.count != 4) return;
  if (entry.count == 3) model[2] = ' ';
  model[3] = ' ';
  model[4] = '\0';
}

void takeModel(Walk& walk, const DirectoryEntry& entry) {
  constexpr uint32_t kMaxModelLength = 63;
  if (valueSize(entry) <= entry.field.size()) return takeInlineModel(entry, walk.info.model);
  if (entry.count <= 2) return;
  const uint32_t length = entry.count > kMaxModelLength ? kMaxModelLength : entry.count - 1;
  readLine(walk.window, entry.target, std::span(walk.info.model).first(length + 1));
}

void takeIptc(const DirectoryEntry& entry, ExifInfo& info) {
  if (entry.type == kTypeLong) setIfFits(uint64_t{entry.count} * 4, info.iptcLength);
  if (entry.type == kTypeUndefined) info.iptcLength = entry.count;
  info.iptcOffset = entry.value;
}

void takePhotoshopResources(Walk& walk, const DirectoryEntry& entry) {
  if (walk.fileType != kTiffFile || static_cast<int32_t>(entry.count) < 0) return;
  scanPhotoshopBlock(walk, entry.target, entry.count);
}

void takeEntry(Walk& walk, const TiffFrame& frame, int directory, const DirectoryEntry& entry) {
  ExifInfo& info = walk.info;
  switch (entry.tag) {
    case kModel:
      return takeModel(walk, entry);
    case kOrientation:
      if (entry.type == kTypeShort) info.orientation = entry.value;
      return;
    case kThumbnailOffset:
      if (directory >= 1) setIfFits(entry.target, info.thumbOffset);
      return;
    case kThumbnailLength:
      if (directory >= 1) info.thumbLength = entry.value;
      return;
    case kXmpPacket:
      info.xmpLength = entry.count;
      info.xmpOffset = entry.value;
      return;
    case kIptcNaa:
      return takeIptc(entry, info);
    case kPhotoshopResources:
      return takePhotoshopResources(walk, entry);
    case kExifPointer:
      return readExifDirectory(walk, frame, entry.target);
    case kGpsPointer:
      return readGpsDirectory(walk, frame, entry.target);
    default:
      return;
  }
}

int walkDirectories(Walk& walk, const TiffFrame& frame, uint32_t firstOffset) {
  uint32_t offset = firstOffset;
  for (int number = 0; offset != 0; ++number) {
    DirectoryReader directory(walk.window, frame.base + offset, frame, walk.budget);
    while (const auto entry = directory.next()) takeEntry(walk, frame, number, *entry);
    if (!directory.complete()) return kCannotRead;
    if (number == kLastDirectory || directory.count() == kEntriesOfLast) break;
    const auto next = Cursor(walk.window, directory.offset(), frame.order).read32();
    if (!next) return kCannotRead;
    offset = *next;
  }
  return kOk;
}

}  // namespace

int readTiffStructure(Walk& walk, uint64_t headerOffset, uint64_t base) {
  const auto mark = Cursor(walk.window, headerOffset, ByteOrder::big).read16();
  if (!mark) return kCannotRead;
  if (*mark != kLittleEndianMark && *mark != kBigEndianMark) return kWrongSignature;

  const TiffFrame frame{base, byteOrderOfMark(*mark)};
  Cursor header(walk.window, headerOffset + 2, frame.order);
  const auto number = header.read16();
  if (!number) return kCannotRead;
  if (*number != kTiffNumber) return kUnsupported;
  const auto firstDirectory = header.read32();
  if (!firstDirectory) return kCannotRead;
  return walkDirectories(walk, frame, *firstDirectory);
}

}  // namespace lumenforge
