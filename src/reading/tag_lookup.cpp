#include "reading/tag_lookup.h"

#include <limits>

#include "LumenforgeMetaLib.h"

namespace lumenforge {
namespace {

constexpr int kNoSuchTag = -1;
constexpr int kCannotSeek = -3;

// All directories of the chain in file order; a chain without end ends with the entries that one
// call may read.
TagLookup findInChain(Window& window, uint64_t firstOffset, int tag) {
  uint32_t entriesLeft = kMostEntries;
  uint64_t offset = firstOffset;
  while (offset != 0 && window.canSeekTo(offset)) {
    DirectoryReader directory(window, offset, {0, ByteOrder::little}, entriesLeft);
    while (const auto entry = directory.next()) {
      if (static_cast<int>(entry->tag) == tag) return {0, *entry};
    }
    if (!directory.complete()) break;
    if (directory.count() == 0) return {LUMENFORGE_WRONG_SIGNATURE, {}};
    offset = Cursor(window, directory.offset(), ByteOrder::little).read32().value_or(0);
  }
  return {kNoSuchTag, {}};
}

TagLookup findInFile(Window& window, uint64_t headerOffset, int tag) {
  Cursor header(window, headerOffset, ByteOrder::little);
  if (header.read16() != kLittleEndianMark) return {LUMENFORGE_WRONG_SIGNATURE, {}};
  if (header.read16() != kTiffNumber) return {LUMENFORGE_WRONG_SIGNATURE, {}};
  return findInChain(window, header.read32().value_or(0), tag);
}

}  // namespace

TagLookup findTag(Window& window, uint64_t headerOffset, int tag) {
  const TagLookup found = findInFile(window, headerOffset, tag);
  if (found.failure != 0 && window.seekFailed()) return {kCannotSeek, {}};
  // What cannot be told as a result is not there, neither for the host nor for an update.
  if (found.entry.offset > std::numeric_limits<int>::max()) return {kNoSuchTag, {}};
  return found;
}

}  // namespace lumenforge

int get_tif_tag(FILE* stream, int tag, int* count, int* value) {
  using namespace lumenforge;
  // A stream that cannot tell its position cannot seek; its header may yet be no header.
  const uint64_t position = positionOf(stream).value_or(0);
  Window window(stream, position);
  const TagLookup found = findTag(window, position, tag);
  if (found.failure != 0) return found.failure;
  *count = static_cast<int>(found.entry.count);
  *value = static_cast<int>(found.entry.value);
  return static_cast<int>(found.entry.offset);
}
