#include "photo_source.h"

#include "failure.h"
#include "photo_description.h"
#include "photo_type.h"

namespace {

// The length of a JPEG's XMP segment counts itself and the signature before the packet.
constexpr std::uint32_t kJpegSegmentOverhead = 2 + 29;

// Blocks are fetched here because the library's own readers leave out one that ends with the file,
// where a finished TIFF may well have it.
Bytes iptcOf(const std::string& path, const ExifInfo& info) {
  Bytes block = readRegion(path, info.iptcOffset, info.iptcLength);
  return !block.empty() && block.front() == 0x1C ? block : Bytes();
}

Bytes xmpOf(const std::string& path, PhotoType type, const ExifInfo& info) {
  const std::uint32_t overhead = type == PhotoType::jpeg ? kJpegSegmentOverhead : 0;
  return info.xmpLength > overhead ? readRegion(path, info.xmpOffset, info.xmpLength - overhead)
                                   : Bytes();
}

}  // namespace

PhotoSource readPhotoSource(const std::string& path) {
  const std::optional<PhotoType> type = findPhotoType(path);
  if (!type) {
    readRegion(path, 0, 0);  // a file that cannot be opened says so itself
    throw Failure(path, "is no JPEG, TIFF or PSD image");
  }
  PhotoSource photo;
  const int result = getExifData(path.c_str(), static_cast<int>(*type), &photo.info);
  if (result < 0) {
    throw Failure(path, readingFailure(*type, result));
  }
  if (*type == PhotoType::tiff && photo.info.exposureTime == 0) {
    readDescribedExposure(path, photo.info);
  }
  photo.iptc = iptcOf(path, photo.info);
  photo.xmp = xmpOf(path, *type, photo.info);
  return photo;
}

void exportRecords(const ExifInfo& info, MetadataBuf& meta, GpsBuf& gps) {
  meta = MetadataBuf{};
  gps = GpsBuf{};
  metadataBufFromExifInfo(&info, &meta, &gps);
}
