#include "photos/tiff_structure.h"

#include <algorithm>

namespace lfmeta {

namespace {

constexpr std::array<uint32_t, 14> kTypeSizes{0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4};

}  // namespace

std::optional<TiffStructure> TiffStructure::at(const std::string& path, uint64_t base) {
  const Bytes header = readRegion(path, base, kHeaderSize);
  if (header.empty() || header[0] != header[1] || (header[0] != 'I' && header[0] != 'M')) {
    return std::nullopt;
  }
  TiffStructure found(path, base, header[0] == 'I');
  const std::span bytes(header);
  if (found.number(bytes.subspan(2, 2)) != 42) return std::nullopt;
  found.first_ = found.number(bytes.subspan(4));
  return found;
}

std::optional<TiffDirectory> TiffStructure::directory(uint32_t offset) const {
  const Bytes count = readRegion(path_, base_ + offset, 2);
  if (offset < kHeaderSize || count.empty()) return std::nullopt;
  const uint64_t size = uint64_t{number(count)} * kEntrySize;
  const Bytes all = readRegion(path_, base_ + offset + 2, size + 4);
  if (all.empty()) return std::nullopt;
  TiffDirectory found;
  for (std::span rest(all); rest.size() > 4; rest = rest.subspan(kEntrySize)) {
    TiffEntry entry{static_cast<uint16_t>(number(rest.first(2))),
                    static_cast<uint16_t>(number(rest.subspan(2, 2))),
                    number(rest.subspan(4, 4)),
                    {}};
    std::copy_n(rest.begin() + 8, entry.field.size(), entry.field.begin());
    found.entries.push_back(entry);
  }
  found.next = number(std::span(all).last(4));
  return found;
}

Bytes TiffStructure::valueOf(const TiffEntry& entry) const {
  const uint64_t size =
      uint64_t{entry.count} * (entry.type < kTypeSizes.size() ? kTypeSizes[entry.type] : 0);
  if (size <= entry.field.size()) return {entry.field.begin(), entry.field.begin() + size};
  return readRegion(path_, base_ + number(entry.field), size);
}

uint32_t TiffStructure::number(std::span<const unsigned char> bytes) const {
  uint32_t value = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    value = value << 8 | bytes[littleEndian_ ? bytes.size() - 1 - i : i];
  }
  return value;
}

std::array<unsigned char, 4> TiffStructure::bytesOf(uint32_t value, std::size_t size) const {
  std::array<unsigned char, 4> bytes{};
  for (std::size_t i = 0; i < size; ++i) {
    bytes[i] = static_cast<unsigned char>(value >> 8 * (littleEndian_ ? i : size - 1 - i));
  }
  return bytes;
}

const TiffEntry* findEntry(const TiffDirectory& directory, uint16_t tag) {
  const auto found = std::find_if(directory.entries.begin(), directory.entries.end(),
                                  [tag](const TiffEntry& entry) { return entry.tag == tag; });
  return found == directory.entries.end() ? nullptr : &*found;
}

}  // namespace lfmeta
