// A TIFF header and its chain of image file directories (TIFF 6.0) -> ExifInfo.
#include "reading/tiff_directories.h"

#include <algorithm>

#include "reading/exif_directory.h"
#include "reading/gps_directory.h"
#include "reading/offsets.h"
#include "reading/photoshop_block.h"

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

void takeModel(Reading& reading, const DirectoryEntry& entry) {
  constexpr uint32_t kMaxModelLength = 63;
  if (valueSize(entry) <= entry.field.size()) return takeInlineModel(entry, reading.info.model);
  if (entry.count <= 2) return;
  const uint32_t length = entry.count > kMaxModelLength ? kMaxModelLength : entry.count - 1;
  readLine(reading.window, entry.target, std::span(reading.info.model).first(length + 1));
}

void takeThumbnailOffset(Reading& reading, uint64_t offset) {
  reading.thumbnailOutOfReach = !fits32(offset);
  setIfFits(offset, reading.info.thumbOffset);
}

void takeIptc(const DirectoryEntry& entry, ExifInfo& info) {
  if (entry.type == FieldType::longInteger) setIfFits(uint64_t{entry.count} * 4, info.iptcLength);
  if (entry.type == FieldType::undefined) info.iptcLength = entry.count;
  info.iptcOffset = entry.value;
}

void takePhotoshopResources(Reading& reading, const DirectoryEntry& entry) {
  if (reading.fileType != LUMENFORGE_TIFF || static_cast<int32_t>(entry.count) < 0) return;
  scanPhotoshopBlock(reading, entry.target, entry.count);
}

void takeEntry(Reading& reading, const TiffFrame& frame, int directory,
               const DirectoryEntry& entry) {
  ExifInfo& info = reading.info;
  switch (entry.tag) {
    case Tag::model:
      return takeModel(reading, entry);
    case Tag::orientation:
      if (entry.type == FieldType::shortInteger) info.orientation = entry.value;
      return;
    case Tag::thumbnailOffset:
      if (directory >= 1) takeThumbnailOffset(reading, entry.target);
      return;
    case Tag::thumbnailLength:
      if (directory >= 1 && !reading.thumbnailOutOfReach) info.thumbLength = entry.value;
      return;
    case Tag::xmpPacket:
      info.xmpLength = entry.count;
      info.xmpOffset = entry.value;
      return;
    case Tag::iptcNaa:
      return takeIptc(entry, info);
    case Tag::photoshopResources:
      return takePhotoshopResources(reading, entry);
    case Tag::exifPointer:
      return readExifDirectory(reading, frame, entry.target);
    case Tag::gpsPointer:
      return readGpsDirectory(reading, frame, entry.target);
    default:
      return;
  }
}

// Cameras write offsets of a next directory that lead outside the file: there the chain ends as at
// an offset of 0. A directory that is there and cut short is damage.
void readDirectories(Reading& reading, const TiffFrame& frame, uint32_t firstOffset) {
  uint32_t offset = firstOffset;
  for (int number = 0; offset != 0; ++number) {
    DirectoryReader directory(reading.window, frame.base + offset, frame, reading.entriesLeft);
    if (number > 0 && !directory.count()) break;
    while (const auto entry = directory.next()) takeEntry(reading, frame, number, *entry);
    if (!directory.complete()) {
      reading.damaged = true;
      return;
    }
    if (number == kLastDirectory || directory.count() == kEntriesOfLast) break;
    offset = Cursor(reading.window, directory.offset(), frame.order).read32().value_or(0);
  }
}

}  // namespace

int readTiffStructure(Reading& reading, uint64_t headerOffset, uint64_t base) {
  const auto mark = Cursor(reading.window, headerOffset, ByteOrder::big).read16();
  if (mark != kLittleEndianMark && mark != kBigEndianMark) return LUMENFORGE_WRONG_SIGNATURE;

  const TiffFrame frame{base, byteOrderOfMark(*mark)};
  Cursor header(reading.window, headerOffset + 2, frame.order);
  if (header.read16() != kTiffNumber) return LUMENFORGE_UNSUPPORTED;
  const auto firstDirectory = header.read32();
  if (!firstDirectory) return LUMENFORGE_CANNOT_READ;
  readDirectories(reading, frame, *firstDirectory);
  return LUMENFORGE_OK;
}

}  // namespace lumenforge
