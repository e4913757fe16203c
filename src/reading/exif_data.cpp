// A file's path and container type -> ExifInfo, and the records that the host keeps of it.
#include <cstdio>
#include <cstring>

#include "base/file.h"
#include "reading/jpeg_segments.h"
#include "reading/psd_resources.h"
#include "reading/tiff_directories.h"

namespace lumenforge {
namespace {

int readContainer(Reading& reading) {
  switch (reading.fileType) {
    case LUMENFORGE_JPEG:
      return readJpeg(reading);
    case LUMENFORGE_PSD:
      return readPsd(reading);
    default:
      return readTiffStructure(reading, 0, 0);
  }
}

struct Outcome {
  int result = LUMENFORGE_CANNOT_READ;
  const char* message = nullptr;
};

Outcome readFile(const char* path, int fileType, ExifInfo& info) {
  InputFile file(path);
  if (!file.isOpen()) return {};
  const bool isJpeg = fileType == LUMENFORGE_JPEG;
  Window window(file, isJpeg ? Window::Start::metadata : Window::Start::header);
  Reading reading{window, info, fileType};
  const int result = readContainer(reading);
  const bool isUnreadable = file.failed() || (result == LUMENFORGE_OK && reading.damaged);
  return {isUnreadable ? LUMENFORGE_CANNOT_READ : result, reading.message};
}

}  // namespace
}  // namespace lumenforge

int init_exifInfo(ExifInfo* info) {
  std::memset(info, 0, sizeof *info);
  return 0;
}

int getExifData(const char* path, int fileType, ExifInfo* info) {
  init_exifInfo(info);
  const auto [result, message] = lumenforge::readFile(path, fileType, *info);
  // Written with no file open: where the host has closed its standard error, a file that is opened
  // takes its place.
  if (message != nullptr) std::fputs(message, stderr);
  return result;
}

int get_exif_data(char* path, int fileType, MetadataBuf* buf, GpsBuf* gps) {
  ExifInfo info;
  getExifData(path, fileType, &info);  // a file that cannot be read gives an empty record
  return metadataBufFromExifInfo(&info, buf, gps);
}
