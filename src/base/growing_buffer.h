// Bytes that are still to come: memory is had as they come, so that a length that is announced and
// not delivered costs nothing.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string_view>

namespace lumenforge {

class GrowingBuffer {
 public:
  GrowingBuffer() = default;
  GrowingBuffer(const GrowingBuffer&) = delete;
  GrowingBuffer& operator=(const GrowingBuffer&) = delete;
  ~GrowingBuffer() { std::free(bytes_); }

  // The next bytes, for the caller to fill: some of the `most` that may come, none when memory
  // cannot be obtained.
  std::span<uint8_t> extend(std::size_t most) {
    if (size_ == capacity_ && !grow(most)) return {};
    const std::size_t count = std::min(most, capacity_ - size_);
    size_ += count;
    return {bytes_ + size_ - count, count};
  }

  void dropFirst(std::size_t count) {
    size_ -= count;
    std::memmove(bytes_, bytes_ + count, size_);
  }

  std::size_t size() const { return size_; }
  std::string_view text() const { return {reinterpret_cast<const char*>(bytes_), size_}; }

 private:
  bool grow(std::size_t most) {
    constexpr std::size_t kFirst = 64 << 10;
    const std::size_t capacity = std::min(std::max(kFirst, 2 * capacity_), size_ + most);
    auto* const bytes = static_cast<uint8_t*>(std::realloc(bytes_, capacity));
    if (bytes == nullptr) return false;
    bytes_ = bytes;
    capacity_ = capacity;
    return true;
  }

  uint8_t* bytes_ = nullptr;
  std::size_t capacity_ = 0;
  std::size_t size_ = 0;
};

}  // namespace lumenforge
