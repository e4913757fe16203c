// A zero-filled heap buffer. Null when memory cannot be obtained; released on scope exit.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>

namespace lumenforge {

struct FreeMemory {
  void operator()(void* memory) const { std::free(memory); }
};

using ZeroedBuffer = std::unique_ptr<uint8_t[], FreeMemory>;

// Never null for want of a size: a buffer of 0 bytes is one that holds nothing.
inline ZeroedBuffer allocateZeroed(std::size_t size) {
  return ZeroedBuffer(static_cast<uint8_t*>(std::calloc(size == 0 ? 1 : size, 1)));
}

}  // namespace lumenforge
