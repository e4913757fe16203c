// The files that a command is asked to read: those named, those below the folders named, and those
// named in a list. What is held of them does not grow with their number, but for one folder's.
#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace lfmeta {

struct ListedFile {
  std::string path;
  bool named = true;    // not found below a folder, where a file need not be a photograph
  std::string failure;  // why nothing can be read below it; empty for a file
};

// The entries of a folder and of those below it, in the order of their paths, files only. Links to
// files count as files, links to folders are not followed. What cannot be listed is a failure of
// its own, and the rest goes on.
class FolderWalk {
 public:
  explicit FolderWalk(const std::string& folder);
  std::optional<ListedFile> next();

 private:
  struct Entry {
    std::string name;  // that of a folder ends in "/": it stands where its files do
    bool unknown;      // neither file nor folder: a link, or what the file system does not tell
  };
  struct Level {
    std::string prefix;
    std::vector<Entry> entries;  // last first
  };

  void enter(const std::string& folder);
  void failed(const std::string& path, int reason);

  std::vector<Level> levels_;
  std::vector<ListedFile> failures_;
};

// Names that end in NUL, from a file or (as "-") from standard input.
class NameList {
 public:
  explicit NameList(const std::string& path);
  ~NameList();
  NameList(const NameList&) = delete;
  NameList& operator=(const NameList&) = delete;

  bool hasName() const;  // without reading on
  // `beforeWaiting` is called when the next name must be waited for. Throws Failure.
  std::optional<std::string> next(const std::function<void()>& beforeWaiting);

 private:
  bool readMore();

  std::string path_;
  int descriptor_;
  std::string bytes_;
  std::size_t begin_ = 0;
  bool atEnd_ = false;
};

class FileList {
 public:
  struct Options {
    std::vector<std::string> paths;
    bool recursive = false;              // folders are replaced by what is below them
    std::optional<std::string> namesIn;  // a list of further paths
  };

  explicit FileList(const Options& options);

  // At most `most` of the next files; none at the end. Waits for the first one only.
  // `beforeWaiting` is called before a wait for names that are yet to come. Throws Failure when the
  // list cannot be read.
  std::vector<ListedFile> take(std::size_t most, const std::function<void()>& beforeWaiting);
  // Whether take is waiting. May be asked by another thread.
  bool isWaiting() const { return waiting_; }

 private:
  std::optional<ListedFile> next(bool mayWait, const std::function<void()>& beforeWaiting);
  std::optional<std::string> nextPath(bool mayWait, const std::function<void()>& beforeWaiting);

  const Options& options_;
  std::size_t nextPath_ = 0;
  std::optional<FolderWalk> walk_;
  std::optional<NameList> names_;
  std::atomic<bool> waiting_ = false;
};

}  // namespace lfmeta
