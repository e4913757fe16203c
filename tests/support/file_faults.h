// The C library's file calls, standing in front of the real ones: while `countdown` is not
// negative, the call that finds it at 0 fails, a write after half of its bytes. Included once a
// program.
#pragma once

#include <dlfcn.h>
#include <sys/types.h>

#include <cstdio>
#include <vector>

namespace fault {
int countdown = -1;
std::vector<std::size_t>* writes = nullptr;
bool strikes() {
  return countdown >= 0 && countdown-- == 0;
}

template <typename Function>
Function* real(Function*, const char* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}
}  // namespace fault

extern "C" {
FILE* fopen(const char* path, const char* mode) {
  return fault::strikes() ? nullptr : fault::real(fopen, "fopen")(path, mode);
}
size_t fread(void* to, size_t size, size_t count, FILE* file) {
  return fault::strikes() ? 0 : fault::real(fread, "fread")(to, size, count, file);
}
size_t fwrite(const void* from, size_t size, size_t count, FILE* file) {
  const bool fails = fault::strikes();
  if (fault::writes != nullptr) fault::writes->push_back(size * count);
  const auto write = fault::real(fwrite, "fwrite");
  if (!fails) return write(from, size, count, file);
  write(from, 1, size * count / 2, file);
  return 0;
}
int fseeko(FILE* file, off_t offset, int whence) {
  return fault::strikes() ? -1 : fault::real(fseeko, "fseeko")(file, offset, whence);
}
int fclose(FILE* file) {
  const bool fails = fault::strikes();
  const int result = fault::real(fclose, "fclose")(file);
  return fails ? EOF : result;
}
}
