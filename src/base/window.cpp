#include "base/window.h"

#include <algorithm>
#include <cstring>

namespace lumenforge {

// Makes the pane that holds `size` bytes at `offset` the current one, if there is one.
bool Window::findPane(uint64_t offset, std::size_t size) {
  for (const std::size_t pane : {kLarge, kSmall}) {
    const uint64_t inside = offset - panes_[pane].offset;
    if (inside < panes_[pane].length && size <= panes_[pane].length - inside) {
      current_ = pane;
      return true;
    }
  }
  return false;
}

const uint8_t* Window::viewElsewhere(uint64_t offset, std::size_t size) {
  if (size > kReach || offset >= end_ || size > end_ - offset) return nullptr;
  if (!findPane(offset, size)) {
    fill(offset, size);
    if (!findPane(offset, size)) return nullptr;
  }
  return bytesOf(current_) + (offset - panes_[current_].offset);
}

std::size_t Window::read(uint64_t offset, std::span<uint8_t> out) {
  if (out.size() <= kReach) view(offset, out.size());  // for the values around it, too
  std::size_t done = 0;
  if (findPane(offset, 1)) {
    const Pane& pane = panes_[current_];
    const std::size_t inside = offset - pane.offset;
    done = std::min(out.size(), pane.length - inside);
    std::memcpy(out.data(), bytesOf(current_) + inside, done);
  }
  const std::size_t rest = out.size() - done;
  return rest == 0 ? done : done + readSource(offset + done, out.subspan(done), rest);
}

// The pane that was not used last is filled, from the start of a page (a page's tail is as likely
// wanted as its head). A file that scatters its values over more places than any real one gets
// little at a time, so that the bytes read stay in proportion to the values.
void Window::fill(uint64_t offset, std::size_t size) {
  constexpr uint32_t kManyFills = 32;
  constexpr std::size_t kLittle = 512;
  current_ = current_ == kLarge ? kSmall : kLarge;
  const std::size_t capacity = current_ == kLarge ? kLargeSize : kSmallSize;
  const std::size_t wanted = fills_ < kManyFills ? capacity : kLittle;
  const uint64_t start = offset & ~uint64_t{std::min(wanted, kPage) - 1};
  const std::size_t needed = offset - start + size;
  const uint64_t length = std::min<uint64_t>(std::max(wanted, needed), end_ - start);
  ++fills_;
  const auto bytes = std::span(bytes_).subspan(current_ * kLargeSize, length);
  panes_[current_] = {start, readSource(start, bytes, needed)};
}

// Less than `needed` bytes are all there is; a read error ends the file, too.
std::size_t Window::readSource(uint64_t offset, std::span<uint8_t> out, std::size_t needed) {
  if (offset >= end_) return 0;
  const std::size_t count =
      file_ != nullptr ? file_->read(offset, out, needed) : readStream(offset, out);
  if (count < needed) end_ = std::min(end_, offset + count);
  return count;
}

std::size_t Window::readStream(uint64_t offset, std::span<uint8_t> out) {
  if (offset != position_ && !canSeekTo(offset)) return 0;
  const std::size_t count = std::fread(out.data(), 1, out.size(), stream_);
  position_ = offset + count;
  return count;
}

bool Window::canSeekTo(uint64_t offset) {
  if (file_ != nullptr) return true;
  if (seekTo(stream_, offset)) {
    position_ = offset;
    return true;
  }
  seekFailed_ = true;
  return false;
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
  std::array<uint8_t, kLongestLine> bytes;
  const std::size_t wanted = std::min(line.size() - 1, bytes.size());
  const std::size_t have = window.read(offset, std::span(bytes).first(wanted));
  if (have == 0) return;
  const void* lineFeed = std::memchr(bytes.data(), '\n', have);
  const std::size_t length =
      lineFeed == nullptr
          ? have
          : static_cast<std::size_t>(static_cast<const uint8_t*>(lineFeed) - bytes.data()) + 1;
  std::memcpy(line.data(), bytes.data(), length);
  line[length] = '\0';
}

}  // namespace lumenforge
