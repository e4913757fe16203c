// What the fuzz targets share: an input taken apart, memory of exactly its size, and a check that
// holds in every build. Each target defines `check`; included once a program.
#pragma once

#include <sys/mman.h>

#include <initializer_list>

#include "support/tiff_records.h"

namespace fuzz {

using namespace build;

// A call of its own, so that the caller's line stands in the report.
[[gnu::noinline]] inline void require(bool holds) {
  if (!holds) std::abort();
}

inline bool isOneOf(int result, std::initializer_list<int> results) {
  return std::ranges::find(results, result) != results.end();
}

// The input's next bytes, with zeros behind its end.
template <typename T>
T take(std::string& input) {
  T value{};
  const std::string taken = input.substr(0, sizeof value);
  std::memcpy(&value, taken.data(), taken.size());
  input.erase(0, taken.size());
  return value;
}

// Memory of its own without a byte to spare, so that one beyond it is noticed.
class Block {
 public:
  explicit Block(std::string_view text) : bytes_(new uint8_t[text.size()]), text_(text) {
    std::ranges::copy(text, bytes());
  }
  uint8_t* bytes() const { return bytes_.get(); }
  char* chars() const { return reinterpret_cast<char*>(bytes()); }
  int size() const { return static_cast<int>(text_.size()); }
  std::string text() const { return {bytes(), bytes() + text_.size()}; }
  bool untouched() const { return text() == text_; }

 private:
  std::unique_ptr<uint8_t[]> bytes_;
  std::string text_;
};

inline Block emptyBlock(int64_t size) { return Block(std::string(static_cast<std::size_t>(size), '\0')); }

// A file without a disk.
class MemoryFile {
 public:
  explicit MemoryFile(const std::string& bytes) {
    std::snprintf(path_, sizeof path_, "/proc/self/fd/%d", descriptor_);
    require(::write(descriptor_, bytes.data(), bytes.size()) == std::ssize(bytes));
  }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  ~MemoryFile() { ::close(descriptor_); }
  char* path() { return path_; }
  std::string bytes() const { return contentsOf(path_); }

 private:
  int descriptor_ = ::memfd_create("file", 0);
  char path_[32];
};

inline void requireTexts(const ExifInfo& info) {
  require(info.model[63] == 0 && info.dateTimeOriginal[19] == 0 && info.gpsDateStamp[10] == 0 && info.lens[63] == 0);
}

void check(std::string input);

}  // namespace fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::check({data, data + size});
  return 0;
}
