// A regular file, or standard input where that is one, as a stream.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

namespace lfmeta {

class InputFile {
 public:
  // Throws Failure.
  explicit InputFile(const std::string& path);

  std::FILE* stream() const { return stream_.get(); }
  uint64_t size() const { return size_; }

 private:
  struct Close {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
  };
  std::unique_ptr<std::FILE, Close> stream_;
  uint64_t size_ = 0;
};

}  // namespace lfmeta
