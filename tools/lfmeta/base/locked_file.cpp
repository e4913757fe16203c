#include "base/locked_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "base/failure.h"
#include "base/open_file.h"

namespace lfmeta {

LockedFile::LockedFile(const std::string& path) : path_(path) {
  if (path == "-") return;
  do {
    open();
    lock();
  } while (!isAtItsPath());  // replaced while another held the lock
}

LockedFile::~LockedFile() {
  closeOnce();
}

std::string LockedFile::pathToOpen() const {
  return descriptor_ < 0 ? path_ : pathOfDescriptor(descriptor_);
}

void LockedFile::write(uint64_t offset, std::span<const unsigned char> bytes) const {
  while (!bytes.empty()) {
    const ssize_t now = pwrite(descriptor_, bytes.data(), bytes.size(), static_cast<off_t>(offset));
    if (now < 0 && errno == EINTR) continue;
    if (now <= 0) takeBackAndFail();
    bytes = bytes.subspan(static_cast<std::size_t>(now));
    offset += static_cast<uint64_t>(now);
  }
}

void LockedFile::flush() const {
  if (fsync(descriptor_) != 0) takeBackAndFail();
}

void LockedFile::flushForGood() const {
  if (fsync(descriptor_) != 0) {
    throw Failure(path_,
                  std::string("is changed, but perhaps not on the disk: ") + std::strerror(errno));
  }
}

void LockedFile::open() {
  closeOnce();
  descriptor_ = ::open(path_.c_str(), O_RDWR | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (descriptor_ < 0) fail("cannot be changed");
  if (fstat(descriptor_, &status_) != 0 || !S_ISREG(status_.st_mode)) {
    closeOnce();
    throw Failure(path_, "is not a regular file");
  }
}

void LockedFile::lock() {
  while (flock(descriptor_, LOCK_EX) != 0) {
    if (errno != EINTR) fail("cannot be locked");
  }
}

bool LockedFile::isAtItsPath() {
  struct stat there {};
  return fstat(descriptor_, &status_) == 0 && stat(path_.c_str(), &there) == 0 &&
         there.st_ino == status_.st_ino && there.st_dev == status_.st_dev;
}

void LockedFile::fail(const char* what) {
  const int reason = errno;
  closeOnce();
  throw Failure(path_, std::string(what) + ": " + std::strerror(reason));
}

void LockedFile::takeBackAndFail() const {
  const int reason = errno;
  if (ftruncate(descriptor_, status_.st_size) != 0) { /* what was appended is used by nobody */
  }
  throw Failure(path_, std::string("cannot be changed and is as it was: ") + std::strerror(reason));
}

void LockedFile::closeOnce() {
  if (descriptor_ >= 0) close(descriptor_);
  descriptor_ = -1;
}

}  // namespace lfmeta
