// Pixels and records -> an uncompressed, little-endian TIFF file of one strip (TIFF 6.0), front to
// back: header, pixel rows, directory with its values. Every offset is computed before the first
// byte is written.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <optional>
#include <span>
#include <string_view>

#include "LumenforgeMetaLib.h"
#include "base/file.h"
#include "base/zeroed.h"
#include "tiff/directory_writer.h"
#include "tiff/exif_block.h"
#include "tiff/pixel_blocks.h"
#include "tiff/xmp_choice.h"

namespace lumenforge {
namespace {

constexpr int kCannotCreate = -1;
constexpr int kNoDirectoryMemory = -1;

constexpr uint64_t kBlockSize = 1048576;
constexpr uint64_t kLargestFile = std::numeric_limits<uint32_t>::max();
constexpr char kSoftware[] = "Lumenforge Merge To 32-bit HDR";

struct ImageLayout {
  uint32_t width = 0;
  uint32_t height = 0;
  uint16_t samples = 0;  // per pixel in the file, 1 or 3
  uint16_t bits = 0;     // per sample in the file
  bool isFloat = false;
  uint32_t resolution = 0;
  uint16_t orientation = 1;

  uint64_t rowSize() const { return uint64_t{width} * samples * (bits / 8U); }
  uint64_t stripSize() const { return rowSize() * height; }
};

// What else goes into the file.
struct Metadata {
  MakeText make;
  ExifSizes sizes;
  const MetadataBuf* meta = nullptr;
  const GpsBuf* gps = nullptr;
  std::span<const uint8_t> icc;
  std::span<const uint8_t> iptc;
  XmpRequest xmpRequest;
  XmpChoice xmp;
};

bool isSupported(const TifImageInfo& info) {
  const bool isDepth = info.bitsPerSample == 8 || info.bitsPerSample == 16 ||
                       info.bitsPerSample == 32 || info.bitsPerSample == LUMENFORGE_HALF_FLOAT;
  const bool isConversion =
      info.conversion == 0 || (info.conversion == 1 && info.bitsPerSample == 8);
  return isDepth && isConversion && info.channels >= 1 && info.channels <= 4 && info.width >= 1;
}

ImageLayout layoutOf(const TifImageInfo& info) {
  ImageLayout image;
  image.width = static_cast<uint32_t>(info.width);
  image.height = static_cast<uint32_t>(std::max(info.height, 0));
  image.samples = info.channels <= 2 ? 1 : 3;
  image.bits = info.bitsPerSample == LUMENFORGE_HALF_FLOAT
                   ? uint16_t{16}
                   : static_cast<uint16_t>(info.bitsPerSample);
  image.isFloat = info.bitsPerSample == 32 || info.bitsPerSample == LUMENFORGE_HALF_FLOAT;
  image.resolution = static_cast<uint32_t>(info.resolution);
  image.orientation = orientationCode(info.orientation);
  return image;
}

PixelRows rowsOf(const TifImageInfo& info, const ImageLayout& image, const void* pixels,
                 int32_t stride) {
  const bool narrow = info.conversion == 1;
  const std::size_t sampleSize = narrow ? 2 : image.bits / 8U;
  const auto channels = static_cast<std::size_t>(info.channels);
  PixelRows rows;
  rows.first = static_cast<const uint8_t*>(pixels);
  rows.distance = std::ptrdiff_t{stride} * (narrow ? 2 : 1);
  rows.width = image.width;
  rows.height = image.height;
  rows.packing = packingFor(channels, image.samples, sampleSize, narrow);
  // A block is counted in the samples of the buffer, also when not all of them are written.
  const uint64_t countedRowSize = rows.width * channels * (narrow ? 1 : sampleSize);
  rows.rowsPerBlock = std::max<uint64_t>(kBlockSize / countedRowSize, 1);
  return rows;
}

// A profile long enough to name its colour space (ICC.1, header byte 16) must be one for RGB.
bool isUsableProfile(std::span<const uint8_t> profile) {
  constexpr std::string_view kRgb = "RGB";
  return profile.size() <= 20 || std::ranges::equal(profile.subspan(16, kRgb.size()), kRgb);
}

std::span<const uint8_t> bytesOf(const uint8_t* data, int32_t size) {
  return {data, static_cast<std::size_t>(std::max(size, 0))};
}

void addShortOrLong(DirectoryWriter& directory, Tag tag, uint32_t value) {
  if (value > std::numeric_limits<uint16_t>::max()) {
    directory.addLong(tag, value);
  } else {
    directory.addShort(tag, static_cast<uint16_t>(value));
  }
}

// The IPTC block counts in LONGs, for which zeros stand behind it.
void addIptc(DirectoryWriter& directory, std::span<const uint8_t> iptc) {
  const auto words = static_cast<uint32_t>((iptc.size() + 3) / 4);
  const uint64_t place =
      directory.addReference(Tag::iptcNaa, FieldType::longInteger, words, uint64_t{words} * 4);
  directory.memory().put(place, iptc);
}

void addXmp(DirectoryWriter& directory, const XmpRequest& request, const XmpChoice& choice) {
  const auto size = static_cast<uint32_t>(choice.size);
  const uint64_t place = directory.addReference(Tag::xmpPacket, FieldType::byte, size, choice.size);
  const std::span<uint8_t> out = directory.memory().at(place, choice.size);
  if (!out.empty()) writeXmp(request, choice, out);
}

void addImageEntries(DirectoryWriter& directory, const ImageLayout& image,
                     const Metadata& metadata) {
  addShortOrLong(directory, Tag::imageWidth, image.width);
  addShortOrLong(directory, Tag::imageLength, image.height);
  if (image.samples == 3) {
    directory.addShorts(Tag::bitsPerSample, std::array{image.bits, image.bits, image.bits});
  } else {
    directory.addShort(Tag::bitsPerSample, image.bits);
  }
  directory.addShort(Tag::compression, 1);  // no compression
  directory.addShort(Tag::photometricInterpretation,
                     image.samples == 3 ? 2 : 1);  // RGB, or black is zero
  directory.addText(Tag::make, metadata.make, metadata.sizes.makeLength);
  directory.addText(Tag::model, metadata.meta->model, metadata.sizes.modelLength);
  directory.addLong(Tag::stripOffsets, kTiffHeaderSize);  // the strip
  directory.addShort(Tag::orientation, image.orientation);
  directory.addShort(Tag::samplesPerPixel, image.samples);
  addShortOrLong(directory, Tag::rowsPerStrip, image.height);  // rows per strip
  directory.addLong(Tag::stripByteCounts, static_cast<uint32_t>(image.stripSize() & 0xFFFFFFFF));
  // Hosts rely on the order: this tag before the two resolutions and, further on, the profile
  // before the packet and the IPTC block.
  directory.addShort(Tag::planarConfiguration, 1);  // samples of a pixel side by side
  const std::array<uint32_t, 2> resolution = {image.resolution * 1000, 1000};
  directory.addRationals(Tag::xResolution, resolution);
  directory.addRationals(Tag::yResolution, resolution);
  directory.addShort(Tag::resolutionUnit, 2);  // per inch
}

void addOptionalEntries(DirectoryWriter& directory, const ImageLayout& image,
                        const Metadata& metadata) {
  if (image.isFloat) {
    directory.addText(Tag::software, kSoftware, sizeof kSoftware);
    directory.addShorts(Tag::sampleFormat,
                        std::array<uint16_t, 3>{3, 3, 3});  // three for one sample, too
  }
  if (!metadata.icc.empty()) {
    directory.addBytes(Tag::iccProfile, FieldType::undefined,
                       static_cast<uint32_t>(metadata.icc.size()), metadata.icc);
  }
  if (metadata.xmp.size > 0) addXmp(directory, metadata.xmpRequest, metadata.xmp);
  if (!metadata.iptc.empty()) addIptc(directory, metadata.iptc);
  addExifDirectories(directory, metadata.sizes, *metadata.meta, *metadata.gps);
}

// Without memory, entries and values are counted only.
DirectoryWriter writeDirectory(const FileMemory& memory, uint64_t entryCount,
                               const ImageLayout& image, const Metadata& metadata) {
  DirectoryWriter directory(memory, kTiffHeaderSize + image.stripSize(), entryCount);
  addImageEntries(directory, image, metadata);
  addOptionalEntries(directory, image, metadata);
  return directory;
}

struct DirectoryPlan {
  uint64_t offset = 0;
  uint64_t entryCount = 0;
  uint64_t size = 0;
};

// None where the file would pass the offsets' 32 bits.
std::optional<DirectoryPlan> planDirectory(const ImageLayout& image, const Metadata& metadata) {
  if (image.height > (kLargestFile - kTiffHeaderSize) / image.rowSize()) return std::nullopt;
  const uint64_t offset = kTiffHeaderSize + image.stripSize();
  const DirectoryWriter measured = writeDirectory({}, 0, image, metadata);
  const uint64_t size = directorySize(measured.entryCount()) + measured.valueSize();
  if (size > kLargestFile - offset) return std::nullopt;
  return DirectoryPlan{offset, measured.entryCount(), size};
}

bool writeWhole(std::FILE* file, std::span<const uint8_t> bytes) {
  return std::fwrite(bytes.data(), bytes.size(), 1, file) == 1;
}

int writeFile(File file, const PixelRows& rows, const DirectoryPlan& plan, const ImageLayout& image,
              const Metadata& metadata) {
  std::array<uint8_t, kTiffHeaderSize> header{};
  putTiffHeader({header, 0}, plan.offset);
  if (!writeWhole(file.get(), header)) return LUMENFORGE_HEADER_NOT_WRITTEN;

  const int lastBlockRows = writePixelBlocks(file.get(), rows);
  if (lastBlockRows < 0) return lastBlockRows;

  const ZeroedBuffer memory = allocateZeroed(plan.size);
  if (memory == nullptr) return kNoDirectoryMemory;
  const std::span<uint8_t> bytes(memory.get(), plan.size);
  writeDirectory({bytes, plan.offset}, plan.entryCount, image, metadata);
  if (!writeWhole(file.get(), bytes)) return LUMENFORGE_DIRECTORY_NOT_WRITTEN;
  return std::fclose(file.release()) == 0 ? lastBlockRows : LUMENFORGE_DIRECTORY_NOT_WRITTEN;
}

}  // namespace
}  // namespace lumenforge

int buf2tif(const void* pixels, const TifImageInfo* info, int stride,
            const unsigned char* iccProfile, const MetadataBuf* meta, const GpsBuf* gps,
            int iptcLength, const unsigned char* iptc, int method, const float* settings,
            int xmpLength, const unsigned char* xmp, const char* path) {
  using namespace lumenforge;
  if (!isSupported(*info)) return LUMENFORGE_UNSUPPORTED_IMAGE;
  const ImageLayout image = layoutOf(*info);

  Metadata metadata;
  metadata.meta = meta;
  metadata.gps = gps;
  metadata.sizes = measureExif(*meta, *gps, metadata.make);
  metadata.icc = bytesOf(iccProfile, info->iccLength);
  if (!isUsableProfile(metadata.icc)) metadata.icc = {};
  metadata.iptc = bytesOf(iptc, iptcLength);
  metadata.xmpRequest = {method, settings, meta, metadata.sizes.lensLength, xmpLength, xmp};
  metadata.xmp = chooseXmp(metadata.xmpRequest);

  const std::optional<DirectoryPlan> plan = planDirectory(image, metadata);
  if (!plan) return LUMENFORGE_UNSUPPORTED_IMAGE;
  File file = openUnbuffered(path, "wb");
  if (file == nullptr) {
    std::fprintf(stderr, "Could not open for writing file:  %s\n", path);
    return kCannotCreate;
  }
  return writeFile(std::move(file), rowsOf(*info, image, pixels, stride), *plan, image, metadata);
}
