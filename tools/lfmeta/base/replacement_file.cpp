#include "base/replacement_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>

#include "base/failure.h"

namespace lfmeta {

namespace {

[[noreturn]] void failWith(const std::string& target, const char* what) {
  throw Failure(target, std::string(what) + ": " + std::strerror(errno));
}

std::string resolved(const std::string& target) {
  const std::unique_ptr<char, decltype(&std::free)> path(realpath(target.c_str(), nullptr),
                                                         &std::free);
  return path ? path.get() : target;
}

mode_t permissionsFor(const std::string& target, const std::string& destination) {
  struct stat status {};
  if (lstat(destination.c_str(), &status) == 0) {
    if (!S_ISREG(status.st_mode)) {
      throw Failure(target, "is not a regular file and cannot be replaced");
    }
    if (access(destination.c_str(), W_OK) != 0) failWith(target, "cannot be written");
    return status.st_mode & 07777;
  }
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

void flushToDisk(const std::string& path, int flags, const std::string& target) {
  const int file = open(path.c_str(), flags | O_CLOEXEC);
  const bool flushed = file >= 0 && fsync(file) == 0;
  const int reason = errno;
  if (file >= 0) close(file);
  if (!flushed) {
    errno = reason;
    failWith(target, "cannot be brought to the disk");
  }
}

}  // namespace

ReplacementFile::ReplacementFile(const std::string& target)
    : target_(target), destination_(resolved(target)) {
  const mode_t permissions = permissionsFor(target_, destination_);
  path_ = destination_ + ".XXXXXX";
  const int file = mkostemp(path_.data(), O_CLOEXEC);
  if (file < 0) {
    path_.clear();
    failWith(target_, "cannot be created");
  }
  const bool allowed = fchmod(file, permissions) == 0;
  const int reason = errno;
  close(file);
  if (!allowed) {
    unlink(path_.c_str());
    errno = reason;
    failWith(target_, "cannot be given its permissions");
  }
}

ReplacementFile::~ReplacementFile() {
  if (!path_.empty()) unlink(path_.c_str());
}

void ReplacementFile::write(std::span<const unsigned char> bytes) const {
  std::FILE* file = std::fopen(path_.c_str(), "wb");
  if (file == nullptr) failWith(target_, "cannot be written");
  const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
  if (std::fclose(file) != 0 || !written) failWith(target_, "cannot be written");
}

void ReplacementFile::commit() {
  flushToDisk(path_, O_RDONLY, target_);
  if (std::rename(path_.c_str(), destination_.c_str()) != 0) {
    failWith(target_, "cannot be replaced");
  }
  path_.clear();
  // The new name itself; file systems that cannot flush a folder have still done the renaming.
  const std::filesystem::path folder = std::filesystem::path(destination_).parent_path();
  const int directory = open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_CLOEXEC);
  if (directory >= 0) {
    (void)fsync(directory);
    close(directory);
  }
}

}  // namespace lfmeta
