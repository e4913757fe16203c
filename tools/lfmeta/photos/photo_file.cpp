#include "photos/photo_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "base/failure.h"

namespace lfmeta {

namespace {

using Stream = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

Failure failed(const std::string& path, const char* what) {
  return {path, std::string(what) + std::strerror(errno)};
}

bool isRegular(int descriptor) {
  struct stat status {};
  return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

// A pipe's bytes as a file without a name: the library reads at any offset.
int openStandardInput() {
  if (isRegular(STDIN_FILENO)) return fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0);
  const Stream copy(std::tmpfile(), &std::fclose);
  if (copy == nullptr) throw failed("standard input", "cannot be kept in a temporary file: ");
  std::array<unsigned char, 65536> bytes;
  for (;;) {
    const ssize_t count = read(STDIN_FILENO, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw failed("standard input", "cannot be read: ");
    if (count == 0) break;
    const auto length = static_cast<std::size_t>(count);
    if (std::fwrite(bytes.data(), 1, length, copy.get()) != length) {
      throw failed("standard input", "cannot be kept in a temporary file: ");
    }
  }
  if (std::fflush(copy.get()) != 0) {
    throw failed("standard input", "cannot be kept in a temporary file: ");
  }
  return fcntl(fileno(copy.get()), F_DUPFD_CLOEXEC, 0);
}

}  // namespace

PhotoFile::PhotoFile(const std::string& path)
    : path_(path),
      descriptor_(path == "-" ? openStandardInput()
                              : open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY)) {
  if (descriptor_ < 0) throw failed(path, "cannot be opened: ");
  struct stat status {};
  const bool known = fstat(descriptor_, &status) == 0;
  if (!known || !S_ISREG(status.st_mode)) {
    close(descriptor_);
    throw Failure(path, known && S_ISDIR(status.st_mode)
                            ? "is a folder; read -r reads what is below it"
                            : "is not a regular file");
  }
  size_ = static_cast<uint64_t>(status.st_size);
  if (path == "-") pathToOpen_ = "/proc/self/fd/" + std::to_string(descriptor_);
}

PhotoFile::~PhotoFile() {
  close(descriptor_);
}

std::size_t PhotoFile::readAt(uint64_t offset, std::span<unsigned char> out) const {
  std::size_t done = 0;
  while (done < out.size()) {
    const ssize_t count =
        pread(descriptor_, out.data() + done, out.size() - done, static_cast<off_t>(offset + done));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw failed(path_, "cannot be read: ");
    if (count == 0) break;
    done += static_cast<std::size_t>(count);
  }
  return done;
}

std::span<const unsigned char> PhotoFile::view(uint64_t offset, std::size_t size) {
  if (offset > size_ || size > size_ - offset || size > kLongestView) return {};
  if (offset < windowOffset_ || size > windowLength_ ||
      offset - windowOffset_ > windowLength_ - size) {
    // The first values of a file have company; what is looked up further on rarely has.
    const std::size_t most = offset == 0 ? window_.size() : kLongestView;
    const uint64_t wanted = std::min<uint64_t>(most, size_ - offset);
    windowOffset_ = offset;
    windowLength_ = 0;  // should the read fail
    windowLength_ = readAt(offset, std::span(window_).first(wanted));
    if (size > windowLength_) return {};
  }
  return std::span<const unsigned char>(window_).subspan(offset - windowOffset_, size);
}

Bytes PhotoFile::region(uint64_t offset, uint64_t size) const {
  if (offset > size_ || size > size_ - offset) return {};
  Bytes bytes;
  bytes.reserve(size + 1);  // the library's texts end in NUL
  bytes.resize(size);
  if (readAt(offset, bytes) < size) throw Failure(path_, "cannot be read: it shrinks meanwhile");
  return bytes;
}

}  // namespace lfmeta
