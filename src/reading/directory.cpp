#include "reading/directory.h"

#include <algorithm>

namespace lumenforge {

DirectoryReader::DirectoryReader(Window& window, uint64_t offset, const TiffFrame& frame,
                                 uint32_t& entriesLeft)
    : window_(&window), frame_(frame), entriesLeft_(&entriesLeft), start_(offset + 2) {
  count_ = Cursor(window, offset, frame.order).read16();
}

uint64_t DirectoryReader::offset() const {
  return start_ + uint64_t{done_} * kEntrySize;
}

std::optional<DirectoryEntry> DirectoryReader::next() {
  if (!count_.has_value() || done_ == *count_ || *entriesLeft_ == 0) return std::nullopt;
  if (chunkBegin_ == chunkEnd_ && !loadChunk()) return std::nullopt;
  const DirectoryEntry entry = decode(chunk_.data() + chunkBegin_);
  chunkBegin_ += kEntrySize;
  ++done_;
  --*entriesLeft_;
  return entry;
}

bool DirectoryReader::loadChunk() {
  const std::size_t wanted = std::min<std::size_t>(*count_ - done_, kChunk) * kEntrySize;
  const std::size_t have = window_->read(offset(), std::span(chunk_).first(wanted));
  chunkBegin_ = 0;
  chunkEnd_ = have - have % kEntrySize;
  return chunkEnd_ > 0;
}

DirectoryEntry DirectoryReader::decode(const uint8_t* bytes) const {
  DirectoryEntry entry;
  entry.offset = offset();
  entry.tag = static_cast<Tag>(load16(bytes, frame_.order));
  entry.type = static_cast<FieldType>(load16(bytes + 2, frame_.order));
  entry.count = load32(bytes + 4, frame_.order);
  std::copy_n(bytes + 8, entry.field.size(), entry.field.begin());
  entry.raw = load32(bytes + 8, frame_.order);
  const bool inlineShort = entry.type == FieldType::shortInteger && entry.count <= 2;
  entry.value = inlineShort ? load16(bytes + 8, frame_.order) : entry.raw;
  entry.target = frame_.base + entry.value;
  return entry;
}

}  // namespace lumenforge
