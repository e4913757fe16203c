#include "tiff/exif_block.h"

#include <algorithm>
#include <limits>

#include "tiff/camera_make.h"

namespace lumenforge {
namespace {

constexpr int32_t kDateStampLength = sizeof(GpsBuf::dateStamp);

// No block is written: it would say nothing, or be of 2 GiB and more.
constexpr int kNoBlock = -1;

constexpr int32_t asSigned(uint32_t word) {
  return static_cast<int32_t>(word);
}

// The length with terminator; 0 for an empty text, `whenFull` for a field without a terminator.
int32_t textLength(std::span<const char> field, int32_t whenFull) {
  const auto length = static_cast<int32_t>(std::ranges::find(field, '\0') - field.begin());
  if (length == static_cast<int32_t>(field.size())) return whenFull;
  return length == 0 ? 0 : length + 1;
}

// Decided by the first fraction, as signed numbers: 12:00:00 has two that are not positive.
void addIfPositive(DirectoryWriter& directory, Tag tag, std::span<const uint32_t> words) {
  if (asSigned(words[0]) > 0 && asSigned(words[1]) > 0) directory.addRationals(tag, words);
}

void addIfPositive(DirectoryWriter& directory, Tag tag, const int32_t (&fraction)[2]) {
  const std::array<uint32_t, 2> words = {static_cast<uint32_t>(fraction[0]),
                                         static_cast<uint32_t>(fraction[1])};
  addIfPositive(directory, tag, words);
}

// A reference letter as a text of one character. Hosts rely on this form for the altitude's as
// well, for which the standard has a BYTE.
void addReferenceLetter(DirectoryWriter& directory, Tag tag, uint8_t letter) {
  if (static_cast<int8_t>(letter) <= 0) return;
  directory.addInline(tag, FieldType::ascii, 2, std::span(&letter, 1));
}

void addExifEntries(DirectoryWriter& directory, const MetadataBuf& meta, int32_t dateTimeLength) {
  addIfPositive(directory, Tag::exposureTime, meta.exposureTime);
  addIfPositive(directory, Tag::fNumber, meta.fNumber);
  if (asSigned(meta.iso) > 0) {
    directory.addShort(Tag::isoSpeedRatings, static_cast<uint16_t>(meta.iso & 0xFFFF));
  }
  directory.addText(Tag::dateTimeOriginal, meta.dateTimeOriginal, dateTimeLength);
  addIfPositive(directory, Tag::focalLength, meta.focalLength);
}

void addGpsEntries(DirectoryWriter& directory, const GpsBuf& gps, int32_t dateLength) {
  constexpr std::array<uint8_t, 4> kVersion = {2, 2, 0, 0};
  directory.addInline(Tag::gpsVersionId, FieldType::byte, 4, kVersion);
  addReferenceLetter(directory, Tag::gpsLatitudeRef, static_cast<uint8_t>(gps.latitudeRef));
  addIfPositive(directory, Tag::gpsLatitude, gps.latitude);
  addReferenceLetter(directory, Tag::gpsLongitudeRef, static_cast<uint8_t>(gps.longitudeRef));
  addIfPositive(directory, Tag::gpsLongitude, gps.longitude);
  addReferenceLetter(directory, Tag::gpsAltitudeRef, gps.altitudeRef);
  addIfPositive(directory, Tag::gpsAltitude, gps.altitude);
  addIfPositive(directory, Tag::gpsTimeStamp, gps.timeStamp);
  if (dateLength > 0) directory.addText(Tag::gpsDateStamp, gps.dateStamp, kDateStampLength);
}

constexpr uint64_t positive(int32_t value) {
  return value > 0 ? static_cast<uint64_t>(value) : 0;
}

// A pointer entry whose target is a directory of `count` entries with its values behind it.
DirectoryWriter addDirectory(DirectoryWriter& directory, Tag tag, int32_t count, int32_t dataSize) {
  const uint64_t size = directorySize(positive(count)) + positive(dataSize);
  const uint64_t offset = directory.addReference(tag, FieldType::longInteger, 1, size);
  return {directory.memory(), offset, positive(count)};
}

// Measures over no memory. Returns the block's size.
uint64_t writeBlock(const FileMemory& memory, const ExifSizes& sizes, int32_t orientation,
                    const MetadataBuf& meta, const GpsBuf& gps, std::span<const char> make) {
  const unsigned count = 1U + (sizes.makeLength > 0) + (sizes.modelLength > 0) +
                         (sizes.exifCount > 0) + (sizes.gpsCount > 0);
  putTiffHeader(memory, kTiffHeaderSize);
  DirectoryWriter directory(memory, kTiffHeaderSize, count);
  directory.addText(Tag::make, make, sizes.makeLength);
  directory.addText(Tag::model, meta.model, sizes.modelLength);
  directory.addShort(Tag::orientation, orientationCode(orientation));
  addExifDirectories(directory, sizes, meta, gps);
  return directory.end();
}

}  // namespace

ExifSizes measureExif(const MetadataBuf& meta, const GpsBuf& gps, MakeText& make) {
  ExifSizes sizes;
  sizes.modelLength = textLength(meta.model, 63);
  sizes.lensLength = textLength(meta.lens, 63);
  sizes.dateTimeLength = textLength(meta.dateTimeOriginal, sizeof meta.dateTimeOriginal);
  sizes.gpsDateLength = gps.dateStamp[0] != '\0' ? kDateStampLength : 0;

  const auto* modelEnd = std::ranges::find(meta.model, '\0');
  const std::string_view name = makeOfModel({meta.model, modelEnd});
  make.fill('\0');
  std::ranges::copy(name, make.begin());
  sizes.makeLength = textLength(make, 63);

  DirectoryWriter exif({}, 0, 0);
  addExifEntries(exif, meta, sizes.dateTimeLength);
  sizes.exifCount = static_cast<int32_t>(exif.entryCount());
  sizes.exifDataSize = static_cast<int32_t>(exif.valueSize());

  DirectoryWriter position({}, 0, 0);
  addGpsEntries(position, gps, sizes.gpsDateLength);
  if (position.entryCount() > 1) {  // the version alone says nothing
    sizes.gpsCount = static_cast<int32_t>(position.entryCount());
    sizes.gpsDataSize = static_cast<int32_t>(position.valueSize());
  }
  return sizes;
}

void addExifDirectories(DirectoryWriter& directory, const ExifSizes& sizes, const MetadataBuf& meta,
                        const GpsBuf& gps) {
  if (sizes.exifCount > 0) {
    DirectoryWriter exif =
        addDirectory(directory, Tag::exifPointer, sizes.exifCount, sizes.exifDataSize);
    addExifEntries(exif, meta, sizes.dateTimeLength);
  }
  if (sizes.gpsCount > 0) {
    DirectoryWriter position =
        addDirectory(directory, Tag::gpsPointer, sizes.gpsCount, sizes.gpsDataSize);
    addGpsEntries(position, gps, sizes.gpsDateLength);
  }
}

}  // namespace lumenforge

int get_exif_count(const MetadataBuf* meta, int* exifCount, int* exifDataSize, const GpsBuf* gps,
                   int* gpsCount, int* gpsDataSize, int* modelLength, int* makeLength,
                   int* dateTimeLength, int* gpsDateLength, int* lensLength, char* make) {
  using namespace lumenforge;
  MakeText makeText;
  const ExifSizes sizes = measureExif(*meta, *gps, makeText);
  *exifCount = sizes.exifCount;
  *exifDataSize = sizes.exifDataSize;
  *gpsCount = sizes.gpsCount;
  *gpsDataSize = sizes.gpsDataSize;
  *modelLength = sizes.modelLength;
  *makeLength = sizes.makeLength;
  *dateTimeLength = sizes.dateTimeLength;
  *gpsDateLength = sizes.gpsDateLength;
  *lensLength = sizes.lensLength;
  std::ranges::copy(makeText, make);
  return sizes.exifCount + sizes.gpsCount;
}

int write_exif_buf(int exifCount, int exifDataSize, int gpsCount, int gpsDataSize, int modelLength,
                   int makeLength, int dateTimeLength, int gpsDateLength, int orientation,
                   const MetadataBuf* meta, const GpsBuf* gps, const char* make,
                   unsigned char* out) {
  using namespace lumenforge;
  if (makeLength <= 0 && modelLength <= 0 && exifCount <= 0 && gpsCount <= 0) return kNoBlock;
  const ExifSizes sizes = {exifCount,      exifDataSize,  gpsCount,
                           gpsDataSize,    modelLength,   makeLength,
                           dateTimeLength, gpsDateLength, 0};
  const std::span makeText(make, sizeof(MakeText));
  const uint64_t size = writeBlock({}, sizes, orientation, *meta, *gps, makeText);
  if (size > std::numeric_limits<int>::max()) return kNoBlock;
  const FileMemory memory{{out, static_cast<std::size_t>(size)}, 0};
  return static_cast<int>(writeBlock(memory, sizes, orientation, *meta, *gps, makeText));
}
