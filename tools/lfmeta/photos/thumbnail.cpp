#include "photos/thumbnail.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "base/failure.h"

namespace lfmeta {

namespace {

// A new file, named after the photograph. Returns its descriptor.
int createNew(const std::filesystem::path& folder, const std::string& stem, std::string& name) {
  for (int number = 1;; ++number) {
    std::string leaf = stem;
    if (number > 1) leaf.append("-").append(std::to_string(number));
    name = (folder / leaf.append(".jpg")).string();
    const int file = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file >= 0 || errno != EEXIST) return file;
  }
}

bool writeAll(int file, const Bytes& bytes) {
  std::size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t now = write(file, bytes.data() + done, bytes.size() - done);
    if (now < 0 && errno != EINTR) return false;
    done += static_cast<std::size_t>(std::max<ssize_t>(now, 0));
  }
  return true;
}

}  // namespace

void writeThumbnail(const std::string& folder, const std::string& path, const PhotoRecord& photo) {
  if (photo.info.thumbLength == 0) return;
  const Bytes jpeg = readRegion(path, photo.info.thumbOffset, photo.info.thumbLength);
  if (jpeg.size() < 2 || jpeg[0] != 0xFF || jpeg[1] != 0xD8) {
    throw Failure(path, "has no JPEG stream where its thumbnail should be");
  }
  std::string name;
  const int file = createNew(folder, std::filesystem::path(path).stem().string(), name);
  const bool written = file >= 0 && writeAll(file, jpeg);
  const int reason = errno;
  if (file >= 0) close(file);
  if (!written) {
    if (file >= 0) unlink(name.c_str());
    throw Failure(name, std::string("cannot be written: ") + std::strerror(reason));
  }
}

}  // namespace lfmeta
