#include "base/open_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "base/failure.h"

namespace lfmeta {

namespace {

[[noreturn]] void failWith(const std::string& path, const char* what) {
  throw Failure(path, std::string(what) + ": " + std::strerror(errno));
}

// The path of a file that holds what standard input holds. The file has no name and stays open.
std::string keptStandardInput() {
  constexpr off_t kMost = 0x7FFFFFFF;
  constexpr const char* kName = "-";
  std::FILE* kept = std::tmpfile();
  if (kept == nullptr) failWith(kName, "cannot be kept in a temporary file");
  std::array<char, 65536> bytes;
  for (off_t total = 0;;) {
    const ssize_t count = read(STDIN_FILENO, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) failWith(kName, "cannot be read");
    if (count == 0) break;
    total += count;
    if (total > kMost) throw Failure(kName, "is larger than 2 GiB");
    std::fwrite(bytes.data(), 1, static_cast<std::size_t>(count), kept);
  }
  if (std::fflush(kept) != 0 || std::ferror(kept) != 0) {
    failWith(kName, "cannot be kept in a temporary file");
  }
  return pathOfDescriptor(fileno(kept));
}

const std::string& pathOf(const std::string& path) {
  if (path != "-") return path;
  static const std::string kept = keptStandardInput();
  return kept;
}

}  // namespace

int openForReading(const std::string& path, uint64_t* size) {
  const int file = open(pathOf(path).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (file < 0) failWith(path, "cannot be opened");
  struct stat status {};
  if (fstat(file, &status) != 0 || !S_ISREG(status.st_mode)) {
    close(file);
    throw Failure(path,
                  S_ISDIR(status.st_mode) ? "is a folder, not a file" : "is not a regular file");
  }
  if (size != nullptr) *size = static_cast<uint64_t>(status.st_size);
  return file;
}

std::string pathOfDescriptor(int descriptor) {
  return "/proc/self/fd/" + std::to_string(descriptor);
}

}  // namespace lfmeta
