// A file that is being changed: whoever else changes it through this class waits.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <span>
#include <string>

namespace lfmeta {

class LockedFile {
 public:
  // Opens the regular file and waits until it is locked; it is then the one at its path, though
  // another may have been put there meanwhile. "-" is standard input, which nobody else changes.
  // Throws Failure, as write and the flushes do.
  explicit LockedFile(const std::string& path);
  ~LockedFile();
  LockedFile(const LockedFile&) = delete;
  LockedFile& operator=(const LockedFile&) = delete;

  const std::string& path() const { return path_; }  // as given
  uint64_t size() const { return static_cast<uint64_t>(status_.st_size); }
  // By which the very file is read, whatever becomes of its name.
  std::string pathToOpen() const;

  // When they fail, the file has the size that it had.
  void write(uint64_t offset, std::span<const unsigned char> bytes) const;
  void flush() const;
  // What is in use can no longer be taken back.
  void flushForGood() const;

 private:
  void open();
  void lock();
  bool isAtItsPath();
  [[noreturn]] void fail(const char* what);
  [[noreturn]] void takeBackAndFail() const;
  void closeOnce();

  std::string path_;
  int descriptor_ = -1;
  struct stat status_ {};
};

}  // namespace lfmeta
