// What the fuzz targets share: an input taken apart, memory and files of exactly its size, and a
// check that holds in every build. Each target defines `check`; included once a program.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <initializer_list>

#include "support/tiff_records.h"

namespace fuzz {

using namespace std::string_literals;

// The caller's line stands in the report.
[[gnu::noinline]] inline void require(bool holds) {
  if (!holds) std::abort();
}

inline bool isOneOf(int result, std::initializer_list<int> results) {
  return std::ranges::find(results, result) != results.end();
}

// The bytes of an input from its front; zeros behind its end.
struct Input {
  std::string_view rest;

  template <typename T>
  T take() {
    T value{};
    std::memcpy(&value, rest.data(), std::min(sizeof value, rest.size()));
    rest.remove_prefix(std::min(sizeof value, rest.size()));
    return value;
  }
  std::string_view bytes(std::size_t size) {
    const std::string_view taken = rest.substr(0, size);
    rest.remove_prefix(taken.size());
    return taken;
  }
};

// Memory of its own without a byte to spare, so that one beyond it is noticed.
class Block {
 public:
  explicit Block(std::size_t size, int fill = 'Z') : bytes_(new uint8_t[size]), size_(size) {
    std::memset(bytes_.get(), fill, size);
  }
  explicit Block(std::string_view text) : Block(text.size()) {
    text.copy(reinterpret_cast<char*>(bytes_.get()), text.size());
  }
  uint8_t* bytes() const { return bytes_.get(); }
  char* chars() const { return reinterpret_cast<char*>(bytes_.get()); }
  int size() const { return static_cast<int>(size_); }
  std::string_view text() const { return {chars(), size_}; }

 private:
  std::unique_ptr<uint8_t[]> bytes_;
  std::size_t size_;
};

template <typename T>
std::string_view bytesOf(const T& record) {
  return {reinterpret_cast<const char*>(&record), sizeof record};
}

// A file without a disk.
class MemoryFile {
 public:
  explicit MemoryFile(std::string_view bytes) : descriptor_(::memfd_create("fuzz", 0)) {
    require(::write(descriptor_, bytes.data(), bytes.size()) == std::ssize(bytes));
    std::snprintf(path_, sizeof path_, "/proc/self/fd/%d", descriptor_);
  }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  ~MemoryFile() { ::close(descriptor_); }
  char* path() { return path_; }
  std::string bytes() const {
    std::string bytes(static_cast<std::size_t>(::lseek(descriptor_, 0, SEEK_END)), '\0');
    require(::pread(descriptor_, bytes.data(), bytes.size(), 0) == std::ssize(bytes));
    return bytes;
  }

 private:
  int descriptor_;
  char path_[32];
};

using Stream = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;
inline Stream openAt(MemoryFile& file, long position) {
  Stream stream(std::fopen(file.path(), "rb"), std::fclose);
  require(std::fseek(stream.get(), position, SEEK_SET) == 0);
  return stream;
}

inline void requireTexts(const ExifInfo& info) {
  require(info.model[63] == 0 && info.dateTimeOriginal[19] == 0 && info.gpsDateStamp[10] == 0 &&
          info.lens[63] == 0);
}

void check(Input input);

}  // namespace fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::check({{reinterpret_cast<const char*>(data), size}});
  return 0;
}
