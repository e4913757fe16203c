// A file's path and container type -> ExifInfo: which container, then the walk.
#include <cstring>

#include "base/file.h"
#include "base/result.h"
#include "reading/walk.h"

int init_exifInfo(ExifInfo* info) {
  std::memset(info, 0, sizeof *info);
  return 0;
}

int getExifData(const char* path, int fileType, ExifInfo* info) {
  using namespace lumenforge;
  init_exifInfo(info);
  const File file = openUnbuffered(path, "rb");
  if (file == nullptr) return kCannotRead;
  Window window(file.get(), 0, fileType == kJpegFile ? Window::kSize : Window::kPage);
  Walk walk{window, *info, fileType};
  switch (fileType) {
    case kJpegFile:
      return readJpeg(walk);
    case kPsdFile:
      return readPsd(walk);
    default:
      return readTiffStructure(walk, 0, 0);
  }
}
