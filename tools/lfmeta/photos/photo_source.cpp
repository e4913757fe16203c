#include "photos/photo_source.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <span>
#include <system_error>

#include "base/failure.h"
#include "photos/photo_description.h"

namespace lfmeta {

namespace {

// The length of a JPEG's XMP segment counts itself and the signature before the packet.
constexpr uint32_t kJpegSegmentOverhead = 2 + 29;

// Blocks are fetched here because the library's own readers leave out one that ends with the file,
// where a finished TIFF may well have it.
Bytes iptcOf(const std::string& path, const ExifInfo& info) {
  Bytes block = readRegion(path, info.iptcOffset, info.iptcLength);
  return !block.empty() && block.front() == 0x1C ? block : Bytes();
}

void refuseUnlessRegular(const std::string& path) {
  std::error_code unknown;
  const auto type = std::filesystem::status(path, unknown).type();
  if (type == std::filesystem::file_type::directory) {
    throw Failure(path, "is a folder; read -r reads what is below it");
  }
  if (type != std::filesystem::file_type::not_found && type != std::filesystem::file_type::none &&
      type != std::filesystem::file_type::regular) {
    throw Failure(path, "is not a regular file");
  }
}

int read(const std::string& path, PhotoRecord& photo) {
  return getExifData(path.c_str(), static_cast<int>(photo.type), &photo.info);
}

// The library clears every byte before it reads.
bool isBlank(const ExifInfo& info) {
  const auto bytes = std::as_bytes(std::span(&info, 1));
  return std::all_of(bytes.begin(), bytes.end(), [](std::byte b) { return b == std::byte{0}; });
}

}  // namespace

std::optional<PhotoRecord> readPhotoRecord(const std::string& path) {
  refuseUnlessRegular(path);
  // Most photographs are JPEGs, and reading a file as one begins with the signature: only when that
  // fails is the file opened again for its first bytes.
  PhotoRecord photo{.type = PhotoType::jpeg};
  int result = read(path, photo);
  if (result < 0) {
    const std::optional<PhotoType> type = findPhotoType(path);
    if (!type) {
      readRegion(path, 0, 0);  // a file that cannot be opened says so itself
      return std::nullopt;
    }
    if (*type != photo.type) {
      photo.type = *type;
      result = read(path, photo);
    }
  }
  if (result < 0) {
    photo.damage = readingFailure(photo.type, result);
    if (isBlank(photo.info)) throw Failure(path, photo.damage);
  }
  if (photo.type == PhotoType::tiff && photo.info.exposureTime == 0) {
    readDescribedExposure(path, photo.info);
  }
  return photo;
}

Bytes xmpOf(const std::string& path, const PhotoRecord& photo) {
  const uint32_t overhead = photo.type == PhotoType::jpeg ? kJpegSegmentOverhead : 0;
  return photo.info.xmpLength > overhead
             ? readRegion(path, photo.info.xmpOffset, photo.info.xmpLength - overhead)
             : Bytes();
}

PhotoSource readPhotoSource(const std::string& path) {
  const std::optional<PhotoRecord> photo = readPhotoRecord(path);
  if (!photo || photo->damage != nullptr) throw Failure(path, photo ? photo->damage : kNoPhoto);
  return {photo->info, iptcOf(path, photo->info), xmpOf(path, *photo)};
}

void exportRecords(const ExifInfo& info, MetadataBuf& meta, GpsBuf& gps) {
  meta = MetadataBuf{};
  gps = GpsBuf{};
  metadataBufFromExifInfo(&info, &meta, &gps);
}

}  // namespace lfmeta
