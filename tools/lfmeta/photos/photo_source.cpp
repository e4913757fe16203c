#include "photos/photo_source.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <span>

#include "base/failure.h"
#include "photos/photo_description.h"

namespace lfmeta {

namespace {

// The length of a JPEG's XMP segment counts itself and the signature before the packet.
constexpr uint32_t kJpegSegmentOverhead = 2 + 29;

// Blocks are fetched here because the library's own readers leave out one that ends with the file,
// where a finished TIFF may well have it.
Bytes iptcOf(const PhotoFile& file, const ExifInfo& info) {
  if (info.iptcLength > kLongestPacket) return {};
  Bytes block = file.region(info.iptcOffset, info.iptcLength);
  return !block.empty() && block.front() == 0x1C ? block : Bytes();
}

// The library clears every byte before it reads.
bool isBlank(const ExifInfo& info) {
  const auto bytes = std::as_bytes(std::span(&info, 1));
  return std::all_of(bytes.begin(), bytes.end(), [](std::byte b) { return b == std::byte{0}; });
}

// What the library's negative result says of the file: nothing when the file is sound and the
// library's rules do not reach what they look for.
const char* damageOf(const PhotoRecord& photo) {
  const PhotoLayout& layout = photo.layout;
  const int result = photo.result;
  if (result == LUMENFORGE_NO_MEMORY) return "needs more memory than there is";
  if (!layout.sound) {
    if (result == LUMENFORGE_NO_MARKER) return "has a damaged segment behind its EXIF data";
    return "is damaged, or ends before its structure does";
  }
  if (!layout.exif || layout.notRead != nullptr) return nullptr;
  // Behind the EXIF data the library takes no fill bytes.
  if (layout.fillBytes && (result == LUMENFORGE_NO_MARKER || result == LUMENFORGE_CANNOT_READ)) {
    return nullptr;
  }
  if (result == LUMENFORGE_CANNOT_READ) return "cannot be read, or its EXIF data is damaged";
  if (photo.type == PhotoType::tiff && result == LUMENFORGE_UNSUPPORTED) {
    return "is a TIFF of 64-bit offsets, which are not supported";
  }
  return "has EXIF data without a TIFF header";
}

}  // namespace

std::optional<PhotoRecord> readPhotoRecord(PhotoFile& file) {
  const std::optional<PhotoType> type = findPhotoType(file);
  if (!type) return std::nullopt;
  PhotoRecord photo;
  photo.type = *type;
  photo.layout = findLayout(file, *type);
  const char* path = file.pathToOpen().c_str();
  errno = 0;
  photo.result = getExifData(path, static_cast<int>(photo.type), &photo.info);
  if (photo.result == LUMENFORGE_CANNOT_READ && errno == EMFILE) {  // it opens the file once more
    throw Failure(file.path(), std::string("cannot be opened: ") + std::strerror(errno));
  }
  if (photo.type == PhotoType::tiff && photo.info.exposureTime == 0) {
    readDescribedExposure(path, photo.info);
  }
  photo.blank = isBlank(photo.info);
  if (photo.result < 0) {
    photo.damage = damageOf(photo);
    if (photo.damage != nullptr && photo.blank) throw Failure(file.path(), photo.damage);
  }
  return photo;
}

Bytes xmpOf(const PhotoFile& file, const PhotoRecord& photo) {
  const uint32_t overhead = photo.type == PhotoType::jpeg ? kJpegSegmentOverhead : 0;
  if (photo.info.xmpLength <= overhead) return {};
  const uint32_t length = photo.info.xmpLength - overhead;
  return length <= kLongestPacket ? file.region(photo.info.xmpOffset, length) : Bytes();
}

PhotoSource readPhotoSource(const std::string& path) {
  PhotoFile file(path);
  const std::optional<PhotoRecord> photo = readPhotoRecord(file);
  if (!photo || photo->damage != nullptr) throw Failure(path, photo ? photo->damage : kNoPhoto);
  return {photo->info, iptcOf(file, photo->info), xmpOf(file, *photo)};
}

void exportRecords(const ExifInfo& info, MetadataBuf& meta, GpsBuf& gps) {
  meta = MetadataBuf{};
  gps = GpsBuf{};
  metadataBufFromExifInfo(&info, &meta, &gps);
}

}  // namespace lfmeta
