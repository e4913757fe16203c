#include "base/input_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "base/failure.h"
#include "base/open_file.h"

namespace lfmeta {

InputFile::InputFile(const std::string& path) {
  const int descriptor = openForReading(path);
  stream_.reset(fdopen(descriptor, "rb"));
  struct stat status {};
  if (!stream_ || fstat(descriptor, &status) != 0) {
    const int reason = errno;
    if (!stream_) close(descriptor);
    throw Failure(path, std::string("cannot be read: ") + std::strerror(reason));
  }
  size_ = static_cast<uint64_t>(status.st_size);
}

}  // namespace lfmeta
