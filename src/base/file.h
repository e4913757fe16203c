// An owned C stream, with positions and sizes in 64 bits.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>

namespace lumenforge {

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

using File = std::unique_ptr<std::FILE, CloseFile>;

// Unbuffered: a read goes straight to the caller's memory, a write is one write call, and a full
// disk is met by the write that fills it. Null when the file cannot be opened.
File openUnbuffered(const char* path, const char* mode);

bool seekTo(std::FILE* file, uint64_t offset);
std::optional<uint64_t> positionOf(std::FILE* file);

// Leaves the stream at its end.
std::optional<uint64_t> sizeOf(std::FILE* file);

}  // namespace lumenforge
