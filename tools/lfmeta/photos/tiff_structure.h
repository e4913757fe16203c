// A TIFF structure of either byte order (TIFF 6.0): a whole file, or the EXIF data inside of one.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "base/whole_file.h"

namespace lfmeta {

struct TiffEntry {
  uint16_t tag = 0;
  uint16_t type = 0;
  uint32_t count = 0;
  std::array<unsigned char, 4> field{};  // the value, or where it stands
};

struct TiffDirectory {
  std::vector<TiffEntry> entries;  // in the file's order
  uint32_t next = 0;               // offset of the next directory; 0 for none
};

class TiffStructure {
 public:
  static constexpr uint32_t kHeaderSize = 8;
  static constexpr uint32_t kEntrySize = 12;

  // The structure whose header stands `base` bytes into the file; nothing when there is none of
  // 32-bit offsets. Throws Failure when the file cannot be read, as all that follows.
  static std::optional<TiffStructure> at(const std::string& path, uint64_t base = 0);

  uint32_t firstDirectory() const { return first_; }
  // Nothing when it does not lie within the file.
  std::optional<TiffDirectory> directory(uint32_t offset) const;
  // Empty when it does not lie within the file, and for a field type that does not exist.
  Bytes valueOf(const TiffEntry& entry) const;

  uint32_t number(std::span<const unsigned char> bytes) const;  // of 2 or 4 bytes
  // The number in the first `size` bytes, 2 or 4.
  std::array<unsigned char, 4> bytesOf(uint32_t value, std::size_t size = 4) const;

 private:
  TiffStructure(std::string path, uint64_t base, bool littleEndian)
      : path_(std::move(path)), base_(base), littleEndian_(littleEndian) {}

  std::string path_;
  uint64_t base_;
  bool littleEndian_;
  uint32_t first_ = 0;
};

const TiffEntry* findEntry(const TiffDirectory& directory, uint16_t tag);

}  // namespace lfmeta
