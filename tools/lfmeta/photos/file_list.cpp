#include "photos/file_list.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>

#include "base/failure.h"

namespace lfmeta {

namespace {

constexpr std::size_t kLongestName = 65536;  // of a list; far beyond what a path may have

bool isFolder(const std::string& path) {
  struct stat status {};
  return path != "-" && stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

}  // namespace

FolderWalk::FolderWalk(const std::string& folder) {
  enter(folder);
}

void FolderWalk::failed(const std::string& path, int reason) {
  failures_.push_back({path, false, std::string("cannot be listed: ") + std::strerror(reason)});
}

// The folder is closed before any below it is opened, however deep they lie.
void FolderWalk::enter(const std::string& folder) {
  const std::unique_ptr<DIR, int (*)(DIR*)> stream(opendir(folder.c_str()), &closedir);
  if (stream == nullptr) return failed(folder, errno);
  Level level{folder.ends_with('/') ? folder : folder + "/", {}};
  for (errno = 0; const dirent* entry = readdir(stream.get()); errno = 0) {
    std::string name = entry->d_name;
    if (name == "." || name == "..") continue;
    const bool unknown = entry->d_type == DT_LNK || entry->d_type == DT_UNKNOWN;
    if (entry->d_type == DT_DIR) name += '/';
    if (unknown || entry->d_type == DT_DIR || entry->d_type == DT_REG) {
      level.entries.push_back({std::move(name), unknown});
    }
  }
  if (errno != 0) failed(folder, errno);
  std::sort(level.entries.begin(), level.entries.end(),
            [](const Entry& a, const Entry& b) { return a.name > b.name; });
  levels_.push_back(std::move(level));
}

std::optional<ListedFile> FolderWalk::next() {
  for (;;) {
    if (!failures_.empty()) {
      ListedFile failure = std::move(failures_.back());
      failures_.pop_back();
      return failure;
    }
    if (levels_.empty()) return std::nullopt;
    Level& level = levels_.back();
    if (level.entries.empty()) {
      levels_.pop_back();
      continue;
    }
    const Entry entry = std::move(level.entries.back());
    level.entries.pop_back();
    std::string path = level.prefix + entry.name;
    if (entry.name.ends_with('/')) {
      enter(path);
      continue;
    }
    if (!entry.unknown) return ListedFile{std::move(path), false, {}};
    struct stat status {};
    if (lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) {
      enter(path);
    } else if (stat(path.c_str(), &status) != 0 || S_ISREG(status.st_mode)) {
      return ListedFile{std::move(path), false, {}};  // a link to nothing says so when it is read
    }
  }
}

NameList::NameList(const std::string& path)
    : path_(path == "-" ? "standard input" : path),
      descriptor_(path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
  if (descriptor_ < 0)
    throw Failure(path, std::string("cannot be opened: ") + std::strerror(errno));
}

NameList::~NameList() {
  if (descriptor_ != STDIN_FILENO) close(descriptor_);
}

bool NameList::hasName() const {
  return bytes_.find('\0', begin_) != std::string::npos;
}

bool NameList::readMore() {
  bytes_.erase(0, begin_);
  begin_ = 0;
  if (bytes_.size() >= kLongestName) {
    throw Failure(path_, "holds a name of more than 65536 bytes; names must end in NUL");
  }
  const std::size_t have = bytes_.size();
  bytes_.resize(have + kLongestName);
  ssize_t count = 0;
  do {
    count = read(descriptor_, bytes_.data() + have, kLongestName);
  } while (count < 0 && errno == EINTR);
  bytes_.resize(have + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
  if (count < 0) throw Failure(path_, std::string("cannot be read: ") + std::strerror(errno));
  return count > 0;
}

std::optional<std::string> NameList::next(const std::function<void()>& beforeWaiting) {
  while (!hasName() && !atEnd_) {
    beforeWaiting();
    atEnd_ = !readMore();
  }
  if (begin_ == bytes_.size()) return std::nullopt;
  const std::size_t end = std::min(bytes_.find('\0', begin_), bytes_.size());
  std::string name = bytes_.substr(begin_, end - begin_);
  begin_ = std::min(end + 1, bytes_.size());
  return name;
}

FileList::FileList(const Options& options) : options_(options) {
  if (options.namesIn) names_.emplace(*options.namesIn);
}

std::optional<std::string> FileList::nextPath(bool mayWait,
                                              const std::function<void()>& beforeWaiting) {
  if (nextPath_ < options_.paths.size()) return options_.paths[nextPath_++];
  if (!names_ || (!mayWait && !names_->hasName())) return std::nullopt;
  auto name = names_->next([&] {
    waiting_ = true;
    beforeWaiting();
  });
  waiting_ = false;
  return name;
}

std::optional<ListedFile> FileList::next(bool mayWait, const std::function<void()>& beforeWaiting) {
  for (;;) {
    if (walk_) {
      if (auto file = walk_->next()) return file;
      walk_.reset();
    }
    auto path = nextPath(mayWait, beforeWaiting);
    if (!path) return std::nullopt;
    if (path->empty()) return ListedFile{*path, true, "a name in the list is empty"};
    if (!options_.recursive || !isFolder(*path)) return ListedFile{std::move(*path), true, {}};
    walk_.emplace(*path);
  }
}

std::vector<ListedFile> FileList::take(std::size_t most,
                                       const std::function<void()>& beforeWaiting) {
  std::vector<ListedFile> files;
  while (files.size() < most) {
    auto file = next(files.empty(), beforeWaiting);
    if (!file) break;
    files.push_back(std::move(*file));
  }
  return files;
}

}  // namespace lfmeta
