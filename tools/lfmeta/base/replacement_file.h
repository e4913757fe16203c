// A file that is written beside another and takes its place only when it is complete.
#pragma once

#include <span>
#include <string>

namespace lfmeta {

class ReplacementFile {
 public:
  // Creates an empty file in the folder of `target` (of the file it links to, if it is a link). Its
  // permissions are those of `target`, or a new file's. Throws Failure, as commit and write do.
  explicit ReplacementFile(const std::string& target);
  // Removes the new file unless it was committed.
  ~ReplacementFile();
  ReplacementFile(const ReplacementFile&) = delete;
  ReplacementFile& operator=(const ReplacementFile&) = delete;

  const std::string& path() const { return path_; }
  void write(std::span<const unsigned char> bytes) const;
  // Brings the bytes to the disk, then puts the file in its place.
  void commit();

 private:
  std::string target_;       // as given, for messages
  std::string destination_;  // links resolved
  std::string path_;         // of the new file; empty once there is none to remove
};

}  // namespace lfmeta
