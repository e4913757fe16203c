// Owned files: C streams to write to and read from in order, and descriptors to read by position.
// Positions and sizes have 64 bits, and whatever is opened is closed on exec.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <span>

namespace lumenforge {

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

using File = std::unique_ptr<std::FILE, CloseFile>;

// Unbuffered: a read goes straight to the caller's memory, a write is one write call, and a full
// disk is met by the write that fills it. `mode`: one of fopen's. Null when the file cannot be
// opened.
File openUnbuffered(const char* path, const char* mode);

bool seekTo(std::FILE* file, uint64_t offset);
std::optional<uint64_t> positionOf(std::FILE* file);

// A file read by position, with a system call a read and no memory of its own.
class InputFile {
 public:
  explicit InputFile(const char* path);
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;
  ~InputFile();

  bool isOpen() const { return descriptor_ >= 0; }
  std::optional<uint64_t> size() const;
  // Copies bytes from `offset` on and returns how many there were: at least `needed` unless the
  // file ends or fails before.
  std::size_t read(uint64_t offset, std::span<uint8_t> out, std::size_t needed);
  // Whether a read has failed.
  bool failed() const { return failed_; }

 private:
  int descriptor_;
  bool failed_ = false;
};

}  // namespace lumenforge
