// Standard output for programs: complete lines, and whole even where many processes write into one
// pipe, as under xargs -P.
#pragma once

#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>

namespace lfmeta {

// May be used by several threads. Throws Failure when standard output cannot be written.
class LineOutput {
 public:
  LineOutput();

  // Complete lines, written when there are enough of them. What goes into a pipe goes there in
  // pieces that end with a line and that the system keeps in one, which it does up to PIPE_BUF
  // bytes: only a line that is longer may be cut by another process's.
  void add(std::string_view lines);
  void flush();

 private:
  void writePieces();

  std::mutex lock_;
  std::string waiting_;
  std::size_t enough_;
  std::size_t piece_;
};

}  // namespace lfmeta
