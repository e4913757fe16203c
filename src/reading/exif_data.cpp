// A file's path and container type -> ExifInfo: which container, then the walk. And the walk's
// start in a host's own stream.
#include <cstring>

#include "base/file.h"
#include "base/result.h"
#include "reading/walk.h"

namespace lumenforge {

int readFromStream(std::FILE* stream, int byteOrder, int base, ExifInfo& info,
                   void (*read)(Walk&, const TiffFrame&, uint64_t)) {
  if (const auto start = positionOf(stream)) {
    Window window(stream, *start);
    Walk walk{window, info};
    // A negative base wraps, and so does the sum of base and value: the sum is what counts.
    read(walk, {static_cast<uint64_t>(int64_t{base}), byteOrderOfMark(byteOrder)}, *start);
  }
  return kOk;
}

}  // namespace lumenforge

int init_exifInfo(ExifInfo* info) {
  std::memset(info, 0, sizeof *info);
  return 0;
}

namespace lumenforge {
namespace {

int readContainer(Walk& walk) {
  switch (walk.fileType) {
    case kJpegFile:
      return readJpeg(walk);
    case kPsdFile:
      return readPsd(walk);
    default:
      return readTiffStructure(walk, 0, 0);
  }
}

}  // namespace
}  // namespace lumenforge

int getExifData(const char* path, int fileType, ExifInfo* info) {
  using namespace lumenforge;
  init_exifInfo(info);
  const InputFile file(path);
  if (!file.isOpen()) return kCannotRead;
  Window window(file, fileType == kJpegFile ? Window::Start::metadata : Window::Start::header);
  Walk walk{window, *info, fileType};
  const int result = readContainer(walk);
  return result == kOk && walk.damaged ? kCannotRead : result;
}
