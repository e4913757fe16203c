// The embedded thumbnail of a photograph as a file of its own.
#pragma once

#include <string>

#include "photos/photo_source.h"

namespace lfmeta {

// Writes the thumbnail of the photograph at `path` into the folder, under the photograph's name and
// never over a file that is there: a number is added to the name instead. Nothing without a
// thumbnail. Throws Failure when the block is no JPEG stream within the file, or cannot be written.
void writeThumbnail(const std::string& folder, const std::string& path, const PhotoRecord& photo);

}  // namespace lfmeta
