// An existing TIFF file: an entry looked up by its tag, and the ICC profile (ICC.1)
// replaced by appending the new one and repointing the entry.
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <optional>
#include <span>

#include "LumenforgeMetaLib.h"
#include "base/bytes.h"
#include "base/file.h"
#include "base/result.h"
#include "base/window.h"
#include "reading/directory.h"

namespace lumenforge {

namespace {

// Results beside the new profile's size.
constexpr int kNoProfileEntry = 0;
constexpr int kNotBegun = -1;      // arguments, a file that cannot be opened, another entry by now
constexpr int kCannotUpdate = -2;  // what had been done is taken back

constexpr int kProfileTag = static_cast<int>(Tag::iccProfile);

struct TagLookup {
  int failure = 0;
  DirectoryEntry entry;
};

// The first directory's offset from the TIFF header at the stream's position.
std::optional<uint32_t> readHeader(std::FILE* stream) {
  std::array<uint8_t, kTiffHeaderSize> header;
  if (std::fread(header.data(), header.size(), 1, stream) != 1) return std::nullopt;
  if (load16(header.data(), ByteOrder::little) != kLittleEndianMark) return std::nullopt;
  if (load16(&header[2], ByteOrder::little) != kTiffNumber) return std::nullopt;
  return load32(&header[4], ByteOrder::little);
}

// All directories of the chain in file order; a chain without end meets the end of the work budget.
TagLookup findInChain(Window& window, uint64_t offset, int tag) {
  WorkBudget budget;
  while (offset != 0) {
    DirectoryReader directory(window, offset, {0, ByteOrder::little}, budget);
    while (const std::optional<DirectoryEntry> entry = directory.next()) {
      if (static_cast<int>(entry->tag) == tag) return {0, *entry};
    }
    if (!directory.complete()) break;
    if (directory.count() == 0) return {kWrongSignature, {}};
    offset = Cursor(window, directory.offset(), ByteOrder::little).read32().value_or(0);
  }
  return {kNoSuchTag, {}};
}

TagLookup findTag(std::FILE* stream, int tag) {
  const std::optional<uint32_t> offset = readHeader(stream);
  if (!offset) return {kWrongSignature, {}};
  if (*offset == 0) return {kNoSuchTag, {}};
  const std::optional<uint64_t> position = positionOf(stream);
  if (!position) return {kCannotSeek, {}};
  Window window(stream, *position);
  const TagLookup found = findInChain(window, *offset, tag);
  // What cannot be told as a result is not there, neither for the host nor for an update.
  if (found.entry.offset > std::numeric_limits<int>::max()) return {kNoSuchTag, {}};
  return found;
}

// Count and value field of an entry, as they stand in the file.
using EntryFields = std::array<uint8_t, 8>;

bool writeFields(std::FILE* file, uint64_t entryOffset, const EntryFields& fields) {
  return seekTo(file, entryOffset + 4) && std::fwrite(fields.data(), fields.size(), 1, file) == 1;
}

EntryFields fieldsFor(uint32_t count, uint32_t value) {
  EntryFields fields;
  store32(fields.data(), count, ByteOrder::little);
  store32(&fields[4], value, ByteOrder::little);
  return fields;
}

// Appended first and repointed last, so that the entry never points at missing bytes; a failure
// takes back what has been done.
int replaceProfile(File append, std::FILE* update, const DirectoryEntry& entry, uint64_t end,
                   std::span<const uint8_t> profile) {
  const EntryFields oldFields = fieldsFor(entry.count, entry.raw);
  const auto size = static_cast<uint32_t>(profile.size());
  const bool appended = std::fwrite(profile.data(), profile.size(), 1, append.get()) == 1;
  const bool closed = std::fclose(append.release()) == 0;
  bool repointed = false;
  if (appended && closed) {
    repointed =
        writeFields(update, entry.offset, fieldsFor(size, static_cast<uint32_t>(end & 0xFFFFFFFF)));
    if (!repointed) writeFields(update, entry.offset, oldFields);
  }
  if (repointed) return static_cast<int>(size);
  static_cast<void>(ftruncate(fileno(update), static_cast<off_t>(end)));
  return kCannotUpdate;
}

// Written with no file open: where the host has closed its standard error, a file that is opened
// takes its place.
int failToOpen(const char* purpose) {
  std::fprintf(stderr, "Can not open input file for %s\n", purpose);
  return kNotBegun;
}

// Both handles are opened before anything changes.
int updateProfile(const char* path, const DirectoryEntry& entry, uint64_t end,
                  std::span<const uint8_t> profile) {
  File update = openUnbuffered(path, "rb+");
  if (update == nullptr) return failToOpen("update");
  if (!seekTo(update.get(), entry.offset)) return kCannotUpdate;
  std::array<uint8_t, 2> tag;
  if (std::fread(tag.data(), tag.size(), 1, update.get()) != 1 ||
      load16(tag.data(), ByteOrder::little) != kProfileTag) {
    return kNotBegun;
  }
  File append = openUnbuffered(path, "ab+");
  if (append == nullptr) {
    update.reset();
    return failToOpen("appending");
  }
  return replaceProfile(std::move(append), update.get(), entry, end, profile);
}

}  // namespace

}  // namespace lumenforge

int get_tif_tag(FILE* stream, int tag, int* count, int* value) {
  using namespace lumenforge;
  const TagLookup found = findTag(stream, tag);
  if (found.failure != 0) return found.failure;
  *count = static_cast<int>(found.entry.count);
  *value = static_cast<int>(found.entry.value);
  return static_cast<int>(found.entry.offset);
}

int update_tif_profile(int size, const unsigned char* profile, const char* path) {
  using namespace lumenforge;
  if (size <= 0) return kNotBegun;
  File reading = openUnbuffered(path, "rb");
  if (reading == nullptr) return failToOpen("reading");
  const TagLookup found = findTag(reading.get(), kProfileTag);
  if (found.failure != 0) return kNoProfileEntry;
  const std::optional<uint64_t> end = sizeOf(reading.get());
  reading.reset();
  const auto newSize = static_cast<uint32_t>(size);
  if (!end || *end > std::numeric_limits<uint32_t>::max() - newSize) return kCannotUpdate;
  return updateProfile(path, found.entry, *end, {profile, newSize});
}
