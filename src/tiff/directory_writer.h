// A TIFF image file directory (TIFF 6.0, section 2) and the value area behind it, little-endian.
//
// Entries and values are appended in the order given; nothing is sorted or aligned, so offsets may
// be odd. Only the bytes that carry something are stored: the rest of a short value's field is left
// to the zero-filled memory underneath.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

#include "base/bytes.h"
#include "format/tiff.h"

namespace lumenforge {

// Zero-filled memory that stands at `offset` of a file. Stores outside of it are dropped, so that
// a writer over no memory at all only measures.
struct FileMemory {
  std::span<uint8_t> bytes;
  uint64_t offset = 0;

  // The `size` bytes at a file offset; empty where they are not all in this memory.
  std::span<uint8_t> at(uint64_t fileOffset, uint64_t size) const {
    if (fileOffset < offset || fileOffset - offset > bytes.size()) return {};
    const auto inside = static_cast<std::size_t>(fileOffset - offset);
    if (size > bytes.size() - inside) return {};
    return bytes.subspan(inside, static_cast<std::size_t>(size));
  }

  void put16(uint64_t fileOffset, uint16_t value) const {
    if (const auto place = at(fileOffset, 2); !place.empty()) {
      store16(place.data(), value, ByteOrder::little);
    }
  }

  void put32(uint64_t fileOffset, uint32_t value) const {
    if (const auto place = at(fileOffset, 4); !place.empty()) {
      store32(place.data(), value, ByteOrder::little);
    }
  }

  void put(uint64_t fileOffset, std::span<const uint8_t> source) const {
    std::copy_n(source.begin(), at(fileOffset, source.size()).size(),
                at(fileOffset, source.size()).begin());
  }
};

// "II", 42 and the first directory's offset.
inline void putTiffHeader(const FileMemory& memory, uint64_t firstDirectory) {
  memory.put16(0, kLittleEndianMark);
  memory.put16(2, kTiffNumber);
  memory.put32(4, static_cast<uint32_t>(firstDirectory & 0xFFFFFFFF));
}

class DirectoryWriter {
 public:
  // `entryCount`: as it is written; it places the value area. The directory is the last of its
  // chain.
  DirectoryWriter(const FileMemory& memory, uint64_t offset, uint64_t entryCount)
      : memory_(memory),
        nextEntry_(offset + 2),
        values_(offset + directorySize(entryCount)),
        nextValue_(values_) {
    memory_.put16(offset, static_cast<uint16_t>(entryCount & 0xFFFF));
    memory_.put32(values_ - 4, 0);
  }

  // One SHORT or LONG in the value field.
  void addShort(Tag tag, uint16_t value) {
    memory_.put16(addEntry(tag, FieldType::shortInteger, 1), value);
  }
  void addLong(Tag tag, uint32_t value) {
    memory_.put32(addEntry(tag, FieldType::longInteger, 1), value);
  }

  // Up to four bytes in the value field.
  void addInline(Tag tag, FieldType type, uint32_t count, std::span<const uint8_t> value) {
    memory_.put(addEntry(tag, type, count), value);
  }

  // An entry for the next `size` bytes of the value area, whose file offset is returned. Offsets
  // fit 32 bits wherever there is memory to store them in.
  uint64_t addReference(Tag tag, FieldType type, uint32_t count, uint64_t size) {
    const uint64_t place = nextValue_;
    memory_.put32(addEntry(tag, type, count), static_cast<uint32_t>(place & 0xFFFFFFFF));
    nextValue_ += size;
    return place;
  }

  void addBytes(Tag tag, FieldType type, uint32_t count, std::span<const uint8_t> value) {
    memory_.put(addReference(tag, type, count, value.size()), value);
  }

  // The first `length` characters of a text; no entry for a length of 0 or less.
  void addText(Tag tag, std::span<const char> field, int32_t length) {
    if (length <= 0) return;
    const auto size = static_cast<uint32_t>(length);
    const uint64_t place = addReference(tag, FieldType::ascii, size, size);
    const auto text = field.first(std::min<std::size_t>(size, field.size()));
    memory_.put(place, {reinterpret_cast<const uint8_t*>(text.data()), text.size()});
  }

  void addShorts(Tag tag, std::span<const uint16_t> values) {
    const auto count = static_cast<uint32_t>(values.size());
    uint64_t place = addReference(tag, FieldType::shortInteger, count, values.size_bytes());
    for (const uint16_t value : values) {
      memory_.put16(place, value);
      place += sizeof value;
    }
  }

  // Numerators and denominators in turn.
  void addRationals(Tag tag, std::span<const uint32_t> words) {
    const auto count = static_cast<uint32_t>(words.size() / 2);
    uint64_t place = addReference(tag, FieldType::rational, count, words.size_bytes());
    for (const uint32_t word : words) {
      memory_.put32(place, word);
      place += sizeof word;
    }
  }

  // Of what has been added so far, stored or not.
  uint32_t entryCount() const { return added_; }
  uint64_t valueSize() const { return nextValue_ - values_; }
  uint64_t end() const { return nextValue_; }

  const FileMemory& memory() const { return memory_; }

 private:
  // Returns the file offset of the entry's value field.
  uint64_t addEntry(Tag tag, FieldType type, uint32_t count) {
    ++added_;
    const uint64_t entry = nextEntry_;
    nextEntry_ += kEntrySize;
    memory_.put16(entry, static_cast<uint16_t>(tag));
    memory_.put16(entry + 2, static_cast<uint16_t>(type));
    memory_.put32(entry + 4, count);
    return entry + 8;
  }

  FileMemory memory_;
  uint64_t nextEntry_;
  uint64_t values_;
  uint64_t nextValue_;
  uint32_t added_ = 0;
};

}  // namespace lumenforge
