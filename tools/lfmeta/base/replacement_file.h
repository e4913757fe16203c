// A file that is written beside another and takes its place only when it is complete.
#pragma once

#include <sys/stat.h>

#include <initializer_list>
#include <optional>
#include <span>
#include <string>

#include "base/output.h"
#include "base/removed_when_killed.h"

namespace lfmeta {

class ReplacementFile {
 public:
  // For a command that edits the file: an empty one in the folder of `target` (of the file that it
  // links to, if it is a link); for "-", one that is to go to standard output. Throws Failure, as
  // commit and write do.
  explicit ReplacementFile(const std::string& target);
  // For a command that makes the file from others: unless it is forced to, it replaces no file of
  // another kind and none of those that it reads. An empty file is of any kind.
  ReplacementFile(const Output& output, std::initializer_list<std::string> sources);
  // Removes the new file unless it was committed.
  ~ReplacementFile();
  ReplacementFile(const ReplacementFile&) = delete;
  ReplacementFile& operator=(const ReplacementFile&) = delete;

  // By which the library opens the new file: the very one, whatever has become of its name. Needs
  // the proc file system.
  const std::string& path() const { return path_; }
  // Adds to what was written through this function.
  void write(std::span<const unsigned char> bytes) const;
  // Gives the file the permissions of the one that it replaces (else those of a new file), its
  // owner and its group as far as that is allowed; brings it to the disk and puts it in its place.
  void commit();

 private:
  void create();
  void takeOver() const;
  void copyToStandardOutput() const;

  std::string target_;                  // as given, for messages
  std::string destination_;             // links resolved; empty for standard output
  std::optional<struct stat> present_;  // of the file that is replaced
  std::string name_;                    // of the new file, while it has one of its own
  std::string path_;
  int descriptor_ = -1;
  std::optional<RemovedWhenKilled> removed_;
};

}  // namespace lfmeta
