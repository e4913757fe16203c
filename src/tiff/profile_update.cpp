// An existing TIFF file: its ICC profile (ICC.1) replaced by appending the new one and repointing
// the entry.
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
#include "reading/tag_lookup.h"

namespace lumenforge {
namespace {

constexpr int kNotBegun = -1;  // arguments, a file that cannot be opened, another entry by now

constexpr int kProfileTag = static_cast<int>(Tag::iccProfile);

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
  [[maybe_unused]] const int cut = ftruncate(fileno(update), static_cast<off_t>(end));
  return LUMENFORGE_PROFILE_NOT_UPDATED;
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
  if (!seekTo(update.get(), entry.offset)) return LUMENFORGE_PROFILE_NOT_UPDATED;
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

int update_tif_profile(int size, const unsigned char* profile, const char* path) {
  using namespace lumenforge;
  if (size <= 0) return kNotBegun;
  std::optional<uint64_t> end;
  TagLookup found;
  {
    InputFile file(path);
    if (!file.isOpen()) return failToOpen("reading");
    Window window(file);
    found = findTag(window, 0, kProfileTag);
    end = file.size();
  }
  if (found.failure != 0) return LUMENFORGE_NO_PROFILE_ENTRY;
  const auto newSize = static_cast<uint32_t>(size);
  if (!end || *end > std::numeric_limits<uint32_t>::max() - newSize)
    return LUMENFORGE_PROFILE_NOT_UPDATED;
  return updateProfile(path, found.entry, *end, {profile, newSize});
}
