#include "photos/tiff_rewrite.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <optional>

#include "base/failure.h"
#include "photos/tiff_structure.h"

namespace lfmeta {

namespace {

// The file, open and locked: it is the one at its path until it is closed.
class LockedFile {
 public:
  explicit LockedFile(const std::string& path) : path_(path) {
    if (path == "-") throw Failure(path, "cannot be changed in place; name a file");
    do {
      closeOnce();
      descriptor_ = open(path.c_str(), O_RDWR | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
      if (descriptor_ < 0) fail("cannot be changed");
      if (fstat(descriptor_, &status_) != 0 || !S_ISREG(status_.st_mode)) {
        closeOnce();
        throw Failure(path, "is not a regular file");
      }
      while (flock(descriptor_, LOCK_EX) != 0) {
        if (errno != EINTR) fail("cannot be locked");
      }
    } while (!isAtItsPath());  // replaced while another held the lock
  }
  ~LockedFile() { closeOnce(); }
  LockedFile(const LockedFile&) = delete;
  LockedFile& operator=(const LockedFile&) = delete;

  uint64_t size() const { return static_cast<uint64_t>(status_.st_size); }
  // By which the open file is read, whatever becomes of its name.
  std::string descriptorPath() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

  void write(uint64_t offset, std::span<const unsigned char> bytes) const {
    while (!bytes.empty()) {
      const ssize_t now =
          pwrite(descriptor_, bytes.data(), bytes.size(), static_cast<off_t>(offset));
      if (now < 0 && errno == EINTR) continue;
      if (now <= 0) takeBackAndFail();
      bytes = bytes.subspan(static_cast<std::size_t>(now));
      offset += static_cast<uint64_t>(now);
    }
  }
  void flush() const {
    if (fsync(descriptor_) != 0) takeBackAndFail();
  }
  // What is in use can no longer be taken back.
  void flushForGood() const {
    if (fsync(descriptor_) != 0) {
      throw Failure(
          path_, std::string("is changed, but perhaps not on the disk: ") + std::strerror(errno));
    }
  }

 private:
  bool isAtItsPath() {
    struct stat there {};
    return fstat(descriptor_, &status_) == 0 && stat(path_.c_str(), &there) == 0 &&
           there.st_ino == status_.st_ino && there.st_dev == status_.st_dev;
  }

  [[noreturn]] void fail(const char* what) {
    const int reason = errno;
    closeOnce();
    throw Failure(path_, std::string(what) + ": " + std::strerror(reason));
  }

  [[noreturn]] void takeBackAndFail() const {
    const int reason = errno;
    if (ftruncate(descriptor_, status_.st_size) != 0) { /* what was appended is used by nobody */
    }
    throw Failure(path_,
                  std::string("cannot be changed and is as it was: ") + std::strerror(reason));
  }

  void closeOnce() {
    if (descriptor_ >= 0) close(descriptor_);
    descriptor_ = -1;
  }

  std::string path_;
  int descriptor_ = -1;
  struct stat status_ {};
};

// In the place of the entry of its tag, else where its tag belongs.
void putEntry(std::vector<TiffEntry>& entries, const TiffEntry& entry) {
  const auto place = std::find_if(entries.begin(), entries.end(),
                                  [&](const TiffEntry& other) { return other.tag == entry.tag; });
  if (place != entries.end()) {
    *place = entry;
    return;
  }
  entries.insert(std::find_if(entries.begin(), entries.end(),
                              [&](const TiffEntry& other) { return other.tag > entry.tag; }),
                 entry);
}

void appendDirectory(const TiffStructure& tiff, const TiffDirectory& directory, Bytes& bytes) {
  const auto append = [&](std::size_t value, std::size_t size) {
    const auto all = tiff.bytesOf(static_cast<uint32_t>(value), size);
    bytes.insert(bytes.end(), all.begin(), all.begin() + static_cast<std::ptrdiff_t>(size));
  };
  append(directory.entries.size(), 2);
  for (const TiffEntry& entry : directory.entries) {
    append(entry.tag, 2);
    append(entry.type, 2);
    append(entry.count, 4);
    bytes.insert(bytes.end(), entry.field.begin(), entry.field.end());
  }
  append(directory.next, 4);
}

[[noreturn]] void refuse(const std::string& path, const LockedFile& file) {
  const Bytes start = readRegion(file.descriptorPath(), 0, 4);
  const bool big = !start.empty() && (std::memcmp(start.data(), "II+\0", 4) == 0 ||
                                      std::memcmp(start.data(), "MM\0+", 4) == 0);
  throw Failure(
      path,
      big ? "is a BigTIFF file (64-bit offsets); only TIFF files of 32-bit offsets can be changed"
          : "is no TIFF file; nothing is changed");
}

}  // namespace

void setTiffEntry(const std::string& path, uint16_t tag, uint16_t type,
                  std::span<const unsigned char> value) {
  const LockedFile file(path);
  const auto tiff = TiffStructure::at(file.descriptorPath());
  if (!tiff) refuse(path, file);
  auto directory = tiff->directory(tiff->firstDirectory());
  if (!directory) throw Failure(path, "has a damaged directory; nothing is changed");

  const TiffEntry* present = findEntry(*directory, tag);
  if (present != nullptr && present->type == type &&
      std::ranges::equal(tiff->valueOf(*present), value)) {
    return;
  }

  uint64_t offset = file.size() + file.size() % 2;
  Bytes tail(offset - file.size());
  tail.insert(tail.end(), value.begin(), value.end());
  tail.resize(tail.size() + value.size() % 2);
  const uint64_t newDirectory = file.size() + tail.size();
  TiffEntry entry{tag, type, static_cast<uint32_t>(value.size()), {}};
  if (value.size() <= entry.field.size()) {
    std::copy(value.begin(), value.end(), entry.field.begin());
  } else {
    entry.field = tiff->bytesOf(static_cast<uint32_t>(offset));
  }
  putEntry(directory->entries, entry);
  appendDirectory(*tiff, *directory, tail);
  if (directory->entries.size() > std::numeric_limits<uint16_t>::max() ||
      file.size() + tail.size() > std::numeric_limits<uint32_t>::max()) {
    throw Failure(path, "would become larger than a TIFF file can be; nothing is changed");
  }

  file.write(file.size(), tail);
  file.flush();
  file.write(4, tiff->bytesOf(static_cast<uint32_t>(newDirectory)));
  file.flushForGood();
}

}  // namespace lfmeta
