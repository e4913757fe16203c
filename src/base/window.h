// A file seen through two panes: bounded reads at any offset, no seeks in sight.
//
// A file's metadata lies in a handful of places, and a system call costs more than the pages that
// it copies: so panes are some pages long, and one is filled only when a target lies outside both.
// The same window serves the files that the library opens, read by position, and a host's stream.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>

#include "base/bytes.h"
#include "base/file.h"

namespace lumenforge {

class Window {
 public:
  static constexpr std::size_t kPage = 4096;
  // How many bytes one view() may ask for.
  static constexpr std::size_t kReach = 1024;

  // What a file begins with decides which pane is filled first: the large one with the metadata.
  enum class Start : uint8_t { header, metadata };

  explicit Window(InputFile& file, Start start = Start::header)
      : file_(&file), current_(start == Start::header ? kLarge : kSmall) {}
  // `position`: where the stream stands now.
  Window(std::FILE* stream, uint64_t position) : stream_(stream), position_(position) {}

  // The `size` bytes at `offset`, valid until the next call; null where the file ends before them.
  const uint8_t* view(uint64_t offset, std::size_t size) {
    // Wraps to a large number when the pane lies behind.
    const uint64_t inside = offset - panes_[current_].offset;
    const std::size_t length = panes_[current_].length;
    if (inside < length && size <= length - inside) return bytesOf(current_) + inside;
    return viewElsewhere(offset, size);
  }

  // Copies bytes from `offset` on and returns how many there were. What a large read finds in no
  // pane goes straight from the file to `out`.
  std::size_t read(uint64_t offset, std::span<uint8_t> out);

  // Whether `offset` can be sought, be there a byte or not; and whether a seek has failed, which
  // else is as if the file ended there.
  bool canSeekTo(uint64_t offset);
  bool seekFailed() const { return seekFailed_; }

 private:
  static constexpr std::size_t kLarge = 0;
  static constexpr std::size_t kSmall = 1;
  static constexpr std::size_t kLargeSize = 4 * kPage;
  static constexpr std::size_t kSmallSize = 2 * kPage;

  struct Pane {
    uint64_t offset = 0;
    std::size_t length = 0;
  };

  const uint8_t* bytesOf(std::size_t pane) const { return bytes_.data() + pane * kLargeSize; }
  const uint8_t* viewElsewhere(uint64_t offset, std::size_t size);
  bool findPane(uint64_t offset, std::size_t size);
  void fill(uint64_t offset, std::size_t size);
  std::size_t readSource(uint64_t offset, std::span<uint8_t> out, std::size_t needed);
  std::size_t readStream(uint64_t offset, std::span<uint8_t> out);

  InputFile* file_ = nullptr;  // or a stream:
  std::FILE* stream_ = nullptr;
  uint64_t position_ = 0;
  bool seekFailed_ = false;
  uint64_t end_ = std::numeric_limits<uint64_t>::max();  // the file's end, once a read has met it
  std::size_t current_ = kLarge;
  uint32_t fills_ = 0;
  std::array<Pane, 2> panes_;
  // A copy to a few bytes past a page start is several times slower than one to the start or to
  // some hundred bytes past it; a whole page would cost a page of the caller's stack.
  alignas(512) std::array<uint8_t, kLargeSize + kSmallSize> bytes_;
};

// Numbers read one after the other from a window.
class Cursor {
 public:
  Cursor(Window& window, uint64_t offset, ByteOrder order)
      : window_(&window), offset_(offset), order_(order) {}

  std::optional<uint8_t> read8();
  std::optional<uint16_t> read16();
  std::optional<uint32_t> read32();
  // The next `size` bytes, at most Window::kReach; null where the file ends before them.
  const uint8_t* readBytes(std::size_t size);

  uint64_t offset() const { return offset_; }
  void moveTo(uint64_t offset) { offset_ = offset; }
  void skip(uint64_t count) { offset_ += count; }

 private:
  Window* window_;
  uint64_t offset_;
  ByteOrder order_;
};

// One line as C's fgets reads it: at most line.size() - 1 bytes (and kLongestLine), up to and
// including a line feed or up to the end of the file, then a NUL. A line of no bytes leaves `line`
// as it was.
inline constexpr std::size_t kLongestLine = 63;
void readLine(Window& window, uint64_t offset, std::span<char> line);

}  // namespace lumenforge
