// The bytes of a regular file. Nothing is allocated before the file's size is known to cover it.
#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace lfmeta {

using Bytes = std::vector<unsigned char>;

// The library counts bytes in 32 bits, and adds some of its own.
inline constexpr uint64_t kMaxLibrarySize = std::numeric_limits<int32_t>::max() - 65536;

// `size` bytes at `offset`; none when they do not lie within the file or exceed kMaxLibrarySize.
// Throws Failure when the file cannot be read, as the next one does.
Bytes readRegion(const std::string& path, uint64_t offset, uint64_t size);

// The whole of it, for the library: more than kMaxLibrarySize is a Failure.
Bytes readForLibrary(const std::string& path);

}  // namespace lfmeta
