// The same photographs read by libraries that others use. libexif reads JPEG files only.
#include <libexif/exif-data.h>

#include <exiv2/exiv2.hpp>

#include "photos.h"

namespace {

using namespace bench;

void libexif(const Photo& /*photo*/, char* path) {
  ExifData* data = exif_data_new_from_file(path);
  benchmark::DoNotOptimize(data);
  exif_data_unref(data);
}

void exiv2(const Photo& /*photo*/, char* path) {
  const auto image = Exiv2::ImageFactory::open(path);
  image->readMetadata();
  benchmark::DoNotOptimize(image->exifData().count());
}

BENCHMARK_CAPTURE(readPhoto, jpeg_5MB_libexif, cameraJpeg(), libexif)->UseManualTime();
BENCHMARK_CAPTURE(readPhoto, jpeg_5MB_exiv2, cameraJpeg(), exiv2)->UseManualTime();
BENCHMARK_CAPTURE(readPhoto, tiff_6MB_exiv2, bigTiff(), exiv2)->UseManualTime();
BENCHMARK_CAPTURE(readPhoto, psd_8MB_exiv2, cameraPsd(), exiv2)->UseManualTime();

}  // namespace
