#include "photos/thumbnail.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <optional>
#include <system_error>

#include "base/failure.h"
#include "base/removed_when_killed.h"

namespace lfmeta {

namespace {

namespace fs = std::filesystem;

constexpr uint32_t kLongestThumbnail = 64U << 20;

void makeFolder(const fs::path& folder) {
  std::error_code error;
  fs::create_directories(folder, error);
  if (error) throw Failure(folder.string(), "cannot be made: " + error.message());
}

// Nothing above the folder is reached, whatever the photograph's path is.
fs::path placeOf(const std::string& folder, const std::string& photo) {
  fs::path place(folder);
  for (const fs::path& part : fs::path(photo).lexically_normal().relative_path()) {
    place /= part == ".." ? fs::path("up") : part;
  }
  const std::string ending = place.extension().string();
  if (ending != ".jpg" && ending != ".JPG" && ending != ".jpeg") place += ".jpg";
  return place;
}

bool writeAll(int file, const Bytes& bytes) {
  std::size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t now = write(file, bytes.data() + done, bytes.size() - done);
    if (now < 0 && errno != EINTR) return false;
    done += static_cast<std::size_t>(std::max<ssize_t>(now, 0));
  }
  return true;
}

bool holds(const std::string& name, const Bytes& bytes) {
  const PhotoFile file(name);
  return file.size() == bytes.size() && file.region(0, file.size()) == bytes;
}

void writeNew(const std::string& name, const Bytes& bytes) {
  std::optional<RemovedWhenKilled> removed;
  int file = -1;
  {
    const SignalsHeld held;
    file = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file >= 0) removed.emplace(name);
  }
  if (file < 0 && errno == EEXIST) {
    if (holds(name, bytes)) return;
    throw Failure(name, "is there with another content; remove it, or name another folder");
  }
  const bool written = file >= 0 && writeAll(file, bytes);
  const int reason = errno;
  if (file >= 0) close(file);
  if (!written) {
    if (file >= 0) unlink(name.c_str());
    throw Failure(name, std::string("cannot be written: ") + std::strerror(reason));
  }
}

}  // namespace

ThumbnailFolder::ThumbnailFolder(std::string folder) : folder_(std::move(folder)) {
  if (folder_ == "-")
    throw UsageFailure("--thumbnail -", "needs a folder; ./- is one of that name");
  makeFolder(folder_);
}

std::string ThumbnailFolder::write(const PhotoFile& photo, const ExifInfo& info) {
  if (info.thumbLength == 0) return {};
  const std::lock_guard guard(lock_);  // also over what is held of the thumbnails
  Bytes jpeg;
  if (info.thumbLength <= kLongestThumbnail)
    jpeg = photo.region(info.thumbOffset, info.thumbLength);
  if (jpeg.size() < 2 || jpeg[0] != 0xFF || jpeg[1] != 0xD8) {
    throw Failure(photo.path(), "has no JPEG stream where its thumbnail should be");
  }
  const fs::path place = placeOf(folder_, photo.path());
  makeFolder(place.parent_path());
  writeNew(place.string(), jpeg);
  return place.string();
}

}  // namespace lfmeta
