// Between the library and the C library: what calls do is counted, and one of them can be made to
// fail. The program is linked with --wrap for each; included once a program.
#pragma once

#include <fcntl.h>
#include <malloc.h>
#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>

namespace interposed {

enum Kind : uint32_t { kMemory = 1, kRead = 2, kWrite = 4, kWholeRead = 8 };

// A test sets it before a call and looks at it afterwards.
struct State {
  uint32_t failing = 0;  // kinds, of which one call fails
  int successes = 0;     // before it
  bool failed = false;
  uint64_t reads = 0;
  uint64_t bytesRead = 0;
  uint64_t held = 0;   // bytes of memory not given back
  uint64_t peak = 0;   // the most at a time
  uint64_t steps = 0;  // basic blocks, and bytes that searches passed over
  int inherited = 0;   // files opened that a program started meanwhile would have, too
};
inline State state;

inline bool fails(Kind kind) {
  if ((state.failing & kind) == 0 || state.failed) return false;
  return state.failed = state.successes-- == 0;
}

inline void* hold(void* memory) {
  state.held += malloc_usable_size(memory);
  state.peak = std::max(state.peak, state.held);
  return memory;
}

inline void noteOpened(int descriptor) {
  if (descriptor >= 0 && (::fcntl(descriptor, F_GETFD) & FD_CLOEXEC) == 0) ++state.inherited;
}

}  // namespace interposed

using namespace interposed;

extern "C" {

void* __real_calloc(size_t, size_t);
void* __wrap_calloc(size_t count, size_t size) { return fails(kMemory) ? nullptr : hold(__real_calloc(count, size)); }

void* __real_realloc(void*, size_t);
void* __wrap_realloc(void* memory, size_t size) {
  if (fails(kMemory)) return nullptr;
  state.held -= malloc_usable_size(memory);
  return hold(__real_realloc(memory, size));
}

void __real_free(void*);
void __wrap_free(void* memory) {
  state.held -= malloc_usable_size(memory);
  __real_free(memory);
}

// A file that is opened needs memory, too.
FILE* __real_fopen(const char*, const char*);
FILE* __wrap_fopen(const char* path, const char* mode) {
  if (fails(kMemory)) return nullptr;
  FILE* const file = __real_fopen(path, mode);
  if (file != nullptr) noteOpened(::fileno(file));
  return file;
}

int __real_open(const char*, int, ...);
int __wrap_open(const char* path, int flags, ...) {
  if (fails(kMemory)) return -1;
  const int descriptor = __real_open(path, flags);
  noteOpened(descriptor);
  return descriptor;
}

ssize_t __real_pread(int, void*, size_t, off_t);
ssize_t __wrap_pread(int descriptor, void* to, size_t size, off_t offset) {
  ssize_t done = fails(kRead) ? -1 : __real_pread(descriptor, to, size, offset);
  if (done > 1 && fails(kWholeRead)) done /= 2;
  ++state.reads;
  state.bytesRead += static_cast<uint64_t>(std::max<ssize_t>(done, 0));
  return done;
}

off_t __real_lseek(int, off_t, int);
off_t __wrap_lseek(int descriptor, off_t offset, int whence) {
  return fails(kRead) ? -1 : __real_lseek(descriptor, offset, whence);
}

size_t __real_fread(void*, size_t, size_t, FILE*);
size_t __wrap_fread(void* to, size_t size, size_t count, FILE* file) {
  const size_t done = fails(kRead) ? 0 : __real_fread(to, size, count, file);
  ++state.reads;
  state.bytesRead += size * done;
  return done;
}

// A disk that becomes full takes half of the bytes.
size_t __real_fwrite(const void*, size_t, size_t, FILE*);
size_t __wrap_fwrite(const void* from, size_t size, size_t count, FILE* file) {
  if (!fails(kWrite)) return __real_fwrite(from, size, count, file);
  __real_fwrite(from, 1, size * count / 2, file);
  return 0;
}

int __real_fseeko(FILE*, off_t, int);
int __wrap_fseeko(FILE* file, off_t offset, int whence) {
  return fails(kRead) ? -1 : __real_fseeko(file, offset, whence);
}

int __real_fclose(FILE*);
int __wrap_fclose(FILE* file) { return __real_fclose(file) | (fails(kWrite) ? EOF : 0); }

int __real_close(int);
int __wrap_close(int descriptor) { return __real_close(descriptor) | (fails(kWrite) ? -1 : 0); }

const void* __real_memchr(const void*, int, size_t);
const void* __wrap_memchr(const void* from, int byte, size_t size) {
  const void* found = __real_memchr(from, byte, size);
  const auto passed = static_cast<const char*>(found) - static_cast<const char*>(from);
  state.steps += found == nullptr ? size : static_cast<size_t>(passed);
  return found;
}

int __real_memcmp(const void*, const void*, size_t);
int __wrap_memcmp(const void* a, const void* b, size_t size) {
  state.steps += size;
  return __real_memcmp(a, b, size);
}

void __sanitizer_cov_trace_pc() { ++state.steps; }
}
