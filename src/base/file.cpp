#include "base/file.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <limits>

namespace lumenforge {

static_assert(sizeof(off_t) == 8, "files of 2 GiB and more need 64-bit offsets");

namespace {

bool isPosition(uint64_t offset) {
  return offset <= static_cast<uint64_t>(std::numeric_limits<off_t>::max());
}

std::optional<uint64_t> fromSystem(off_t position) {
  if (position < 0) return std::nullopt;
  return static_cast<uint64_t>(position);
}

}  // namespace

File openUnbuffered(const char* path, const char* mode) {
  std::array<char, 8> closedOnExec{};
  std::strncpy(closedOnExec.data(), mode, closedOnExec.size() - 2);
  closedOnExec[std::strlen(closedOnExec.data())] = 'e';
  File file(std::fopen(path, closedOnExec.data()));
  if (file != nullptr) std::setvbuf(file.get(), nullptr, _IONBF, 0);
  return file;
}

bool seekTo(std::FILE* file, uint64_t offset) {
  return isPosition(offset) && fseeko(file, static_cast<off_t>(offset), SEEK_SET) == 0;
}

std::optional<uint64_t> positionOf(std::FILE* file) {
  return fromSystem(ftello(file));
}

InputFile::InputFile(const char* path) : descriptor_(::open(path, O_RDONLY | O_CLOEXEC)) {}

InputFile::~InputFile() {
  if (isOpen()) ::close(descriptor_);
}

std::optional<uint64_t> InputFile::size() const {
  return fromSystem(::lseek(descriptor_, 0, SEEK_END));
}

std::size_t InputFile::read(uint64_t offset, std::span<uint8_t> out, std::size_t needed) {
  std::size_t done = 0;
  while (done < needed && isPosition(offset + done)) {
    const ssize_t count = ::pread(descriptor_, out.data() + done, out.size() - done,
                                  static_cast<off_t>(offset + done));
    failed_ = failed_ || count < 0;
    if (count <= 0) break;
    done += static_cast<std::size_t>(count);
  }
  return done;
}

}  // namespace lumenforge
