// The ICC profile of a TIFF file, found through its directory.
#pragma once

#include <optional>
#include <string>

#include "base/whole_file.h"

namespace lfmeta {

// Nothing when the file is a little-endian TIFF without profile entry. Throws Failure when it is no
// such TIFF or cannot be read, and when the entry points outside of the file.
std::optional<Bytes> readTiffProfile(const std::string& path);

}  // namespace lfmeta
