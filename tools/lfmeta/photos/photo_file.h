// A photograph's file, opened once, seen through a small window.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "base/whole_file.h"

namespace lfmeta {

class PhotoFile {
 public:
  static constexpr std::size_t kLongestView = 4096;

  // As openForReading; throws Failure.
  explicit PhotoFile(const std::string& path);
  ~PhotoFile();
  PhotoFile(const PhotoFile&) = delete;
  PhotoFile& operator=(const PhotoFile&) = delete;

  const std::string& path() const { return path_; }  // as given, for messages
  const std::string& pathToOpen() const { return pathToOpen_.empty() ? path_ : pathToOpen_; }
  uint64_t size() const { return size_; }

  // `size` bytes at `offset`, until the next view is taken; none unless all of them can be had.
  std::span<const unsigned char> view(uint64_t offset, std::size_t size);
  // The same, to keep, and of any size.
  Bytes region(uint64_t offset, uint64_t size) const;

 private:
  bool isInWindow(uint64_t offset, uint64_t size) const;
  std::size_t readAt(uint64_t offset, std::span<unsigned char> out) const;

  std::string path_;
  std::string pathToOpen_;  // where it differs
  uint64_t size_ = 0;
  int descriptor_;
  uint64_t windowOffset_ = 0;
  std::size_t windowLength_ = 0;
  std::array<unsigned char, 2 * kLongestView> window_;
};

}  // namespace lfmeta
