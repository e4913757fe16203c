// A TIFF image file directory (TIFF 6.0, section 2) read entry by entry, with a bound on the work
// that one call may do. Every directory of the library is read through this reader: the chain of
// IFDs, the EXIF and GPS directories, and the tag lookup.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "base/window.h"
#include "format/tiff.h"

namespace lumenforge {

// What one call may read in all, however directories point at one another. Past it directories end
// as at the end of the file. No real file comes near.
inline constexpr uint32_t kMostEntries = 5 * 65535;

// Where a TIFF structure lies: its offsets count from `base`.
struct TiffFrame {
  uint64_t base = 0;
  ByteOrder order = ByteOrder::big;
};

struct DirectoryEntry {
  uint64_t offset = 0;  // file position of the entry
  Tag tag{};
  FieldType type{};
  uint32_t count = 0;
  std::array<uint8_t, 4> field{};  // the value field as it stands in the file
  uint32_t raw = 0;                // the value field as one 32-bit number
  uint32_t value = 0;              // the first 16 bits for one or two SHORTs, else `raw`
  uint64_t target = 0;             // file position: base + value
};

class DirectoryReader {
 public:
  DirectoryReader(Window& window, uint64_t offset, const TiffFrame& frame, uint32_t& entriesLeft);

  // Entries announced by the directory; none where the file ends before the number.
  std::optional<uint16_t> count() const { return count_; }

  // The next entry; none after the last, or where the file or the entries left end first.
  std::optional<DirectoryEntry> next();

  // Whether every entry announced has been read.
  bool complete() const { return count_.has_value() && done_ == *count_; }

  // File position after the entries read: of the next directory's offset once complete.
  uint64_t offset() const;

 private:
  static constexpr std::size_t kChunk = 32;

  bool loadChunk();
  DirectoryEntry decode(const uint8_t* bytes) const;

  Window* window_;
  TiffFrame frame_;
  uint32_t* entriesLeft_;
  uint64_t start_;  // of the first entry
  std::optional<uint16_t> count_;
  uint32_t done_ = 0;
  // Entries wait here while their targets are read, so that reading targets does not make the
  // window go back and forth.
  std::size_t chunkBegin_ = 0;
  std::size_t chunkEnd_ = 0;
  std::array<uint8_t, kChunk * kEntrySize> chunk_;
};

}  // namespace lumenforge
