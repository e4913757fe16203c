#include "base/replacement_file.h"

#include <fcntl.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>

#include "base/failure.h"
#include "base/open_file.h"

namespace lfmeta {

namespace {

[[noreturn]] void failWith(const std::string& target, const char* what) {
  throw Failure(target, std::string(what) + ": " + std::strerror(errno));
}

std::string resolved(const std::string& target) {
  if (target == "-") return {};
  const std::unique_ptr<char, decltype(&std::free)> path(realpath(target.c_str(), nullptr),
                                                         &std::free);
  return path ? path.get() : target;
}

// What stands in the place of the new file, which must be a file that may be written.
std::optional<struct stat> presentAt(const std::string& destination, const std::string& target) {
  struct stat status {};
  if (destination.empty() || lstat(destination.c_str(), &status) != 0) return std::nullopt;
  if (!S_ISREG(status.st_mode)) {
    throw Failure(target, "is not a regular file and cannot be replaced");
  }
  if (access(destination.c_str(), W_OK) != 0) failWith(target, "cannot be written");
  return status;
}

bool isSameFile(const std::string& path, const struct stat& other) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && status.st_dev == other.st_dev &&
         status.st_ino == other.st_ino;
}

void refuseOtherKind(const std::string& destination, const Output& output) {
  const int file = open(destination.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  const bool known = file >= 0 && isOfKind(file, output.kind);
  if (file >= 0) close(file);
  if (!known) {
    throw Failure(output.path, std::string("is there and is not ") + nameOf(output.kind) +
                                   "; --force replaces it");
  }
}

// Where there is an access control list, the group's bits are what anyone listed may have at most.
bool keepAccessList(const std::string& destination, int newFile) {
  constexpr const char* kAccessList = "system.posix_acl_access";
  std::array<char, 4096> list;
  const ssize_t size = getxattr(destination.c_str(), kAccessList, list.data(), list.size());
  if (size < 0) return errno != ERANGE;
  return fsetxattr(newFile, kAccessList, list.data(), static_cast<std::size_t>(size), 0) == 0;
}

mode_t modeOfNewFiles() {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

}  // namespace

ReplacementFile::ReplacementFile(const std::string& target)
    : target_(target), destination_(resolved(target)), present_(presentAt(destination_, target)) {
  create();
}

ReplacementFile::ReplacementFile(const Output& output, std::initializer_list<std::string> sources)
    : target_(output.path),
      destination_(resolved(output.path)),
      present_(presentAt(destination_, output.path)) {
  if (present_ && !output.force) {
    for (const std::string& source : sources) {
      if (isSameFile(source, *present_)) {
        throw Failure(target_, "is what the new file is made from; --force replaces it");
      }
    }
    if (present_->st_size > 0) refuseOtherKind(destination_, output);
  }
  create();
}

void ReplacementFile::create() {
  const SignalsHeld held;
  if (destination_.empty()) {
    if (std::FILE* unnamed = std::tmpfile()) {
      descriptor_ = fcntl(fileno(unnamed), F_DUPFD_CLOEXEC, 0);
      std::fclose(unnamed);
    }
  } else {
    name_ = destination_ + ".XXXXXX";
    descriptor_ = mkostemp(name_.data(), O_CLOEXEC);
    if (descriptor_ >= 0) removed_.emplace(name_);
  }
  if (descriptor_ < 0) {
    failWith(target_, present_ ? "cannot be replaced: no new file can be made in its folder"
                               : "cannot be created");
  }
  path_ = pathOfDescriptor(descriptor_);
}

ReplacementFile::~ReplacementFile() {
  if (removed_) unlink(name_.c_str());
  close(descriptor_);
}

void ReplacementFile::write(std::span<const unsigned char> bytes) const {
  while (!bytes.empty()) {
    const ssize_t now = ::write(descriptor_, bytes.data(), bytes.size());
    if (now < 0 && errno == EINTR) continue;
    if (now < 0) failWith(target_, "cannot be written");
    bytes = bytes.subspan(static_cast<std::size_t>(now));
  }
}

void ReplacementFile::commit() {
  if (destination_.empty()) {
    copyToStandardOutput();
    return;
  }
  takeOver();
  if (fsync(descriptor_) != 0) failWith(target_, "cannot be brought to the disk");
  {
    const SignalsHeld held;
    if (std::rename(name_.c_str(), destination_.c_str()) != 0) {
      failWith(target_, "cannot be replaced");
    }
    removed_.reset();
  }
  // The new name itself; file systems that cannot flush a folder have still done the renaming.
  const std::filesystem::path folder = std::filesystem::path(destination_).parent_path();
  const int directory = open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_CLOEXEC);
  if (directory >= 0) {
    (void)fsync(directory);
    close(directory);
  }
}

// Nothing that gives rights to whom they were not given: a group of another name has none, and no
// file runs as its owner.
void ReplacementFile::takeOver() const {
  mode_t mode = modeOfNewFiles();
  if (present_) {
    mode = present_->st_mode & 0777;
    const auto keep = [this](uid_t owner, gid_t group) {
      return fchown(descriptor_, owner, group) == 0;
    };
    constexpr uid_t kSameOwner = static_cast<uid_t>(-1);
    const bool groupKept =
        keep(present_->st_uid, present_->st_gid) || keep(kSameOwner, present_->st_gid);
    const bool listKept = keepAccessList(destination_, descriptor_);
    if (!groupKept || !listKept) mode &= ~static_cast<mode_t>(S_IRWXG);
  }
  if (fchmod(descriptor_, mode) != 0) failWith(target_, "cannot be given its permissions");
}

void ReplacementFile::copyToStandardOutput() const {
  std::array<char, 65536> bytes;
  off_t offset = 0;
  for (;;) {
    const ssize_t count = pread(descriptor_, bytes.data(), bytes.size(), offset);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) failWith("standard output", "cannot be given the file");
    if (count == 0) return;
    offset += count;
    std::fwrite(bytes.data(), 1, static_cast<std::size_t>(count), stdout);  // main sees errors
  }
}

}  // namespace lfmeta
