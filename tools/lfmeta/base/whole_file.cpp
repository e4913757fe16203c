#include "base/whole_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "base/failure.h"
#include "base/open_file.h"

namespace lfmeta {

namespace {

class OpenFile {
 public:
  explicit OpenFile(const std::string& path) : path_(path), descriptor_(openForReading(path)) {
    struct stat status {};
    if (fstat(descriptor_, &status) == 0) size_ = static_cast<uint64_t>(status.st_size);
  }
  ~OpenFile() { close(descriptor_); }
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
  std::string path_;
  int descriptor_;
  uint64_t size_ = 0;
};

}  // namespace

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
