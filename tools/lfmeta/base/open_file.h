// The one way in which the tool opens a file to read it.
#pragma once

#include <cstdint>
#include <string>

namespace lfmeta {

// Opens a regular file; never waits for one that is none, such as a pipe. "-" is standard input,
// kept in a file without a name so that it can be read anywhere, and more than once. Returns a
// descriptor, which is the caller's to close, and the file's size. Throws Failure.
int openForReading(const std::string& path, uint64_t* size = nullptr);

// By which the library opens the very file that is open here.
std::string pathOfDescriptor(int descriptor);

}  // namespace lfmeta
