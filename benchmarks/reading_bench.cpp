// Reading a photograph against the least work that could give its metadata.
#include "photos.h"

namespace {

using namespace bench;

void ours(const Photo& photo, char* path) {
  MetadataBuf buf{};
  GpsBuf gps{};
  benchmark::DoNotOptimize(get_exif_data(path, photo.type, &buf, &gps));
}

BENCHMARK_CAPTURE(readPhoto, jpeg_5MB, cameraJpeg(), ours)->UseManualTime();
BENCHMARK_CAPTURE(readPhoto, tiff_6MB, bigTiff(), ours)->UseManualTime();
BENCHMARK_CAPTURE(readPhoto, psd_8MB, cameraPsd(), ours)->UseManualTime();

}  // namespace
