// A TIFF header and its chain of image file directories (TIFF 6.0) -> ExifInfo.
#include <algorithm>

#include "base/result.h"
#include "reading/offsets.h"
#include "reading/walk.h"

namespace lumenforge {
namespace {

constexpr int kLastDirectory = 2;         // directories 0, 1 and 2 are read
constexpr uint16_t kEntriesOfLast = 255;  // a directory of exactly so many is the last one read

uint64_t valueSize(const DirectoryEntry& entry) {
  return uint64_t{entry.count} * fieldSize(entry.type);
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
  if (entry.type == FieldType::longInteger) setIfFits(uint64_t{entry.count} * 4, info.iptcLength);
  if (entry.type == FieldType::undefined) info.iptcLength = entry.count;
  info.iptcOffset = entry.value;
}

void takePhotoshopResources(Walk& walk, const DirectoryEntry& entry) {
  if (walk.fileType != kTiffFile || static_cast<int32_t>(entry.count) < 0) return;
  scanPhotoshopBlock(walk, entry.target, entry.count);
}

void takeEntry(Walk& walk, const TiffFrame& frame, int directory, const DirectoryEntry& entry) {
  ExifInfo& info = walk.info;
  switch (entry.tag) {
    case Tag::model:
      return takeModel(walk, entry);
    case Tag::orientation:
      if (entry.type == FieldType::shortInteger) info.orientation = entry.value;
      return;
    case Tag::thumbnailOffset:
      if (directory >= 1) setIfFits(entry.target, info.thumbOffset);
      return;
    case Tag::thumbnailLength:
      if (directory >= 1) info.thumbLength = entry.value;
      return;
    case Tag::xmpPacket:
      info.xmpLength = entry.count;
      info.xmpOffset = entry.value;
      return;
    case Tag::iptcNaa:
      return takeIptc(entry, info);
    case Tag::photoshopResources:
      return takePhotoshopResources(walk, entry);
    case Tag::exifPointer:
      return readExifDirectory(walk, frame, entry.target);
    case Tag::gpsPointer:
      return readGpsDirectory(walk, frame, entry.target);
    default:
      return;
  }
}

// Cameras write offsets of a next directory that lead outside the file: there the chain ends as at
// an offset of 0. A directory that is there and cut short is damage.
void walkDirectories(Walk& walk, const TiffFrame& frame, uint32_t firstOffset) {
  uint32_t offset = firstOffset;
  for (int number = 0; offset != 0; ++number) {
    DirectoryReader directory(walk.window, frame.base + offset, frame, walk.budget);
    if (number > 0 && !directory.count()) break;
    while (const auto entry = directory.next()) takeEntry(walk, frame, number, *entry);
    if (!directory.complete()) {
      walk.damaged = true;
      return;
    }
    if (number == kLastDirectory || directory.count() == kEntriesOfLast) break;
    offset = Cursor(walk.window, directory.offset(), frame.order).read32().value_or(0);
  }
}

}  // namespace

int readTiffStructure(Walk& walk, uint64_t headerOffset, uint64_t base) {
  const auto mark = Cursor(walk.window, headerOffset, ByteOrder::big).read16();
  if (mark != kLittleEndianMark && mark != kBigEndianMark) return kWrongSignature;

  const TiffFrame frame{base, byteOrderOfMark(*mark)};
  Cursor header(walk.window, headerOffset + 2, frame.order);
  if (header.read16() != kTiffNumber) return kUnsupported;
  const auto firstDirectory = header.read32();
  if (!firstDirectory) return kCannotRead;
  walkDirectories(walk, frame, *firstDirectory);
  return kOk;
}

}  // namespace lumenforge
