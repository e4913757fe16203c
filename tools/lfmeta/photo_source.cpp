#include "photo_source.h"

#include "failure.h"
#include "photo_description.h"

namespace {

// The length of a JPEG's XMP segment counts itself and the signature before the packet.
constexpr std::uint32_t kJpegSegmentOverhead = 2 + 29;

// Blocks are fetched here because the library's own readers leave out one that ends with the file,
// where a finished TIFF may well have it.
Bytes iptcOf(const std::string& path, const ExifInfo& info) {
  Bytes block = readRegion(path, info.iptcOffset, info.iptcLength);
  return !block.empty() && block.front() == 0x1C ? block : Bytes();
}

}  // namespace

PhotoRecord readPhotoRecord(const std::string& path) {
  const std::optional<PhotoType> type = findPhotoType(path);
  if (!type) {
    readRegion(path, 0, 0);  // a file that cannot be opened says so itself
    throw Failure(path, "is no JPEG, TIFF or PSD image");
  }
  PhotoRecord photo{.type = *type};
  const int result = getExifData(path.c_str(), static_cast<int>(*type), &photo.info);
  if (result < 0) {
    throw Failure(path, readingFailure(*type, result));
  }
  if (*type == PhotoType::tiff && photo.info.exposureTime == 0) {
    readDescribedExposure(path, photo.info);
  }
  return photo;
}

Bytes xmpOf(const std::string& path, const PhotoRecord& photo) {
  const std::uint32_t overhead = photo.type == PhotoType::jpeg ? kJpegSegmentOverhead : 0;
  return photo.info.xmpLength > overhead
             ? readRegion(path, photo.info.xmpOffset, photo.info.xmpLength - overhead)
             : Bytes();
}

PhotoSource readPhotoSource(const std::string& path) {
  const PhotoRecord photo = readPhotoRecord(path);
  return {photo.info, iptcOf(path, photo.info), xmpOf(path, photo)};
}

void exportRecords(const ExifInfo& info, MetadataBuf& meta, GpsBuf& gps) {
  meta = MetadataBuf{};
  gps = GpsBuf{};
  metadataBufFromExifInfo(&info, &meta, &gps);
}
