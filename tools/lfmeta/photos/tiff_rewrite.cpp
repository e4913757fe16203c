#include "photos/tiff_rewrite.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "base/failure.h"
#include "photos/tiff_structure.h"

namespace lfmeta {

namespace {

// In the place of the entry of its tag, else where its tag belongs.
void putEntry(std::vector<TiffEntry>& entries, const TiffEntry& entry) {
  const auto place = std::find_if(entries.begin(), entries.end(),
                                  [&](const TiffEntry& other) { return other.tag == entry.tag; });
  if (place != entries.end()) {
    *place = entry;
    return;
  }
  entries.insert(std::find_if(entries.begin(), entries.end(),
                              [&](const TiffEntry& other) { return other.tag > entry.tag; }),
                 entry);
}

void appendDirectory(const TiffStructure& tiff, const TiffDirectory& directory, Bytes& bytes) {
  const auto append = [&](std::size_t value, std::size_t size) {
    const auto all = tiff.bytesOf(static_cast<uint32_t>(value), size);
    bytes.insert(bytes.end(), all.begin(), all.begin() + static_cast<std::ptrdiff_t>(size));
  };
  append(directory.entries.size(), 2);
  for (const TiffEntry& entry : directory.entries) {
    append(entry.tag, 2);
    append(entry.type, 2);
    append(entry.count, 4);
    bytes.insert(bytes.end(), entry.field.begin(), entry.field.end());
  }
  append(directory.next, 4);
}

[[noreturn]] void refuse(const LockedFile& file) {
  const Bytes start = readRegion(file.pathToOpen(), 0, 4);
  const bool big = !start.empty() && (std::memcmp(start.data(), "II+\0", 4) == 0 ||
                                      std::memcmp(start.data(), "MM\0+", 4) == 0);
  throw Failure(
      file.path(),
      big ? "is a BigTIFF file (64-bit offsets); only TIFF files of 32-bit offsets can be changed"
          : "is no TIFF file; nothing is changed");
}

}  // namespace

void setTiffEntry(const LockedFile& file, uint16_t tag, uint16_t type,
                  std::span<const unsigned char> value) {
  const std::string& path = file.path();
  if (path == "-") throw Failure(path, "cannot be changed in place; name a file");
  const auto tiff = TiffStructure::at(file.pathToOpen());
  if (!tiff) refuse(file);
  auto directory = tiff->directory(tiff->firstDirectory());
  if (!directory) throw Failure(path, "has a damaged directory; nothing is changed");

  const TiffEntry* present = findEntry(*directory, tag);
  if (present != nullptr && present->type == type &&
      std::ranges::equal(tiff->valueOf(*present), value)) {
    return;
  }

  uint64_t offset = file.size() + file.size() % 2;
  Bytes tail(offset - file.size());
  tail.insert(tail.end(), value.begin(), value.end());
  tail.resize(tail.size() + value.size() % 2);
  const uint64_t newDirectory = file.size() + tail.size();
  TiffEntry entry{tag, type, static_cast<uint32_t>(value.size()), {}};
  if (value.size() <= entry.field.size()) {
    std::copy(value.begin(), value.end(), entry.field.begin());
  } else {
    entry.field = tiff->bytesOf(static_cast<uint32_t>(offset));
  }
  putEntry(directory->entries, entry);
  appendDirectory(*tiff, *directory, tail);
  if (directory->entries.size() > std::numeric_limits<uint16_t>::max() ||
      file.size() + tail.size() > std::numeric_limits<uint32_t>::max()) {
    throw Failure(path, "would become larger than a TIFF file can be; nothing is changed");
  }

  file.write(file.size(), tail);
  file.flush();
  file.write(4, tiff->bytesOf(static_cast<uint32_t>(newDirectory)));
  file.flushForGood();
}

}  // namespace lfmeta
