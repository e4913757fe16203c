#include "base/window.h"

#include <algorithm>
#include <cstring>

#include "base/file.h"

namespace lumenforge {

// The pane that holds `size` bytes at `offset`, or kCount.
std::size_t Window::findPane(uint64_t offset, std::size_t size) {
  for (std::size_t i = 0; i < kCount; ++i) {
    const std::size_t pane = (current_ + i) % kCount;
    const uint64_t inside = offset - panes_[pane].offset;  // wraps to a large number when before
    if (inside < panes_[pane].length && size <= panes_[pane].length - inside) {
      return current_ = pane;
    }
  }
  return kCount;
}

const uint8_t* Window::view(uint64_t offset, std::size_t size) {
  if (size > kReach || offset >= end_ || size > end_ - offset) return nullptr;
  std::size_t pane = findPane(offset, size);
  if (pane == kCount) {
    pane = current_ = oldest_;
    oldest_ = (oldest_ + 1) % kCount;
    fill(pane, offset & ~uint64_t{kAlignment - 1});
    if (offset >= end_ || size > end_ - offset) return nullptr;
  }
  return bytesOf(pane) + (offset - panes_[pane].offset);
}

std::size_t Window::read(uint64_t offset, std::span<uint8_t> out) {
  std::size_t done = 0;
  if (const std::size_t pane = findPane(offset, 1); pane != kCount) {
    const std::size_t inside = offset - panes_[pane].offset;
    done = std::min(out.size(), panes_[pane].length - inside);
    std::memcpy(out.data(), bytesOf(pane) + inside, done);
  }
  return done + (done == out.size() ? 0 : readStream(offset + done, out.subspan(done)));
}

void Window::fill(std::size_t pane, uint64_t offset) {
  panes_[pane] = {offset, 0};  // nothing may be found here should the read fail
  panes_[pane].length = readStream(offset, std::span(bytes_).subspan(pane * kSize, kSize));
}

std::size_t Window::readStream(uint64_t offset, std::span<uint8_t> out) {
  if (offset >= end_) return 0;
  if (offset != position_ && !seekTo(stream_, offset)) {
    end_ = std::min(end_, offset);
    return 0;
  }
  const std::size_t count = std::fread(out.data(), 1, out.size(), stream_);
  position_ = offset + count;
  if (count < out.size()) end_ = position_;  // a read error ends the file, too
  return count;
}

const uint8_t* Cursor::readBytes(std::size_t size) {
  const uint8_t* bytes = window_->view(offset_, size);
  if (bytes != nullptr) offset_ += size;
  return bytes;
}

std::optional<uint8_t> Cursor::read8() {
  const uint8_t* bytes = readBytes(1);
  if (bytes == nullptr) return std::nullopt;
  return *bytes;
}

std::optional<uint16_t> Cursor::read16() {
  const uint8_t* bytes = readBytes(2);
  if (bytes == nullptr) return std::nullopt;
  return load16(bytes, order_);
}

std::optional<uint32_t> Cursor::read32() {
  const uint8_t* bytes = readBytes(4);
  if (bytes == nullptr) return std::nullopt;
  return load32(bytes, order_);
}

void readLine(Window& window, uint64_t offset, std::span<char> line) {
  std::size_t length = 0;
  while (length + 1 < line.size()) {
    const uint8_t* byte = window.view(offset + length, 1);
    if (byte == nullptr) break;
    line[length++] = static_cast<char>(*byte);
    if (*byte == '\n') break;
  }
  if (length > 0) line[length] = '\0';
}

}  // namespace lumenforge
