// How far the work is, shown where a person waits: many files, and a terminal that is not the one
// that the report goes to.
#pragma once

#include <cstddef>

namespace lfmeta {

class Progress {
 public:
  Progress();
  ~Progress() { clear(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void add(std::size_t files);
  // Before anything else is written to the terminal.
  void clear();

 private:
  static constexpr std::size_t kStep = 256;
  bool wanted_;
  bool shown_ = false;
  std::size_t done_ = 0;
};

}  // namespace lfmeta
