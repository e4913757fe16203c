#include "photos/photo_file.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "base/failure.h"
#include "base/open_file.h"

namespace lfmeta {

namespace {

Failure failed(const std::string& path, const char* what) {
  return {path, std::string(what) + std::strerror(errno)};
}

}  // namespace

PhotoFile::PhotoFile(const std::string& path)
    : path_(path), descriptor_(openForReading(path, &size_)) {
  if (path == "-") pathToOpen_ = pathOfDescriptor(descriptor_);
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

bool PhotoFile::isInWindow(uint64_t offset, uint64_t size) const {
  return offset >= windowOffset_ && size <= windowLength_ &&
         offset - windowOffset_ <= windowLength_ - size;
}

std::span<const unsigned char> PhotoFile::view(uint64_t offset, std::size_t size) {
  if (offset > size_ || size > size_ - offset || size > kLongestView) return {};
  if (!isInWindow(offset, size)) {
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
  if (isInWindow(offset, size)) {
    const unsigned char* start = window_.data() + (offset - windowOffset_);
    bytes.assign(start, start + size);
    return bytes;
  }
  bytes.resize(size);
  if (readAt(offset, bytes) < size) throw Failure(path_, "cannot be read: it shrinks meanwhile");
  return bytes;
}

}  // namespace lfmeta
