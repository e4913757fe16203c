#include "base/whole_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "base/failure.h"

namespace lfmeta {

namespace {

class OpenFile {
 public:
  explicit OpenFile(const std::string& path)
      : path_(path), descriptor_(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
    struct stat status {};
    if (descriptor_ < 0 || fstat(descriptor_, &status) != 0) {
      const int reason = errno;
      closeOnce();
      throw Failure(path, std::string("cannot be opened: ") + std::strerror(reason));
    }
    if (!S_ISREG(status.st_mode)) {
      closeOnce();
      throw Failure(path, "is not a regular file");
    }
    size_ = static_cast<uint64_t>(status.st_size);
  }
  ~OpenFile() { closeOnce(); }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;

  uint64_t size() const { return size_; }

  Bytes bytes(uint64_t offset, uint64_t length) const {
    Bytes all(length);
    std::size_t done = 0;
    while (done < all.size()) {
      const ssize_t now = pread(descriptor_, all.data() + done, all.size() - done,
                                static_cast<off_t>(offset + done));
      if (now < 0 && errno == EINTR) continue;
      if (now <= 0) {
        throw Failure(path_, std::string("cannot be read: ") +
                                 (now < 0 ? std::strerror(errno) : "it shrinks while it is read"));
      }
      done += static_cast<std::size_t>(now);
    }
    return all;
  }

 private:
  void closeOnce() {
    if (descriptor_ >= 0) close(descriptor_);
    descriptor_ = -1;
  }

  std::string path_;
  int descriptor_;
  uint64_t size_ = 0;
};

}  // namespace

Bytes readWholeFile(const std::string& path) {
  const OpenFile file(path);
  return file.bytes(0, file.size());
}

Bytes readRegion(const std::string& path, uint64_t offset, uint64_t size) {
  const OpenFile file(path);
  if (offset > file.size() || size > file.size() - offset || size > kMaxLibrarySize) return {};
  return file.bytes(offset, size);
}

Bytes readForLibrary(const std::string& path) {
  const OpenFile file(path);
  if (file.size() > kMaxLibrarySize) throw Failure(path, "is larger than 2 GiB");
  return file.bytes(0, file.size());
}

}  // namespace lfmeta
