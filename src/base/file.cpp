#include "base/file.h"

#include <sys/types.h>

#include <limits>

namespace lumenforge {

static_assert(sizeof(off_t) == 8, "files of 2 GiB and more need 64-bit offsets");

File openUnbuffered(const char* path, const char* mode) {
  File file(std::fopen(path, mode));
  if (file != nullptr) std::setvbuf(file.get(), nullptr, _IONBF, 0);
  return file;
}

bool seekTo(std::FILE* file, uint64_t offset) {
  return offset <= static_cast<uint64_t>(std::numeric_limits<off_t>::max()) &&
         fseeko(file, static_cast<off_t>(offset), SEEK_SET) == 0;
}

std::optional<uint64_t> positionOf(std::FILE* file) {
  const off_t position = ftello(file);
  if (position < 0) return std::nullopt;
  return static_cast<uint64_t>(position);
}

std::optional<uint64_t> sizeOf(std::FILE* file) {
  if (fseeko(file, 0, SEEK_END) != 0) return std::nullopt;
  return positionOf(file);
}

}  // namespace lumenforge
