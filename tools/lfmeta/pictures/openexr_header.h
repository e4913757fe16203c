// What must hold of an OpenEXR file's headers before OpenEXR reads them.
#pragma once

#include "pictures/picture.h"

namespace lfmeta {

// Goes through the attributes of all headers, and leaves the file at its start: OpenEXR gives each
// the memory that it announces, whatever follows in the file, and takes some for longer or shorter
// than they say they are. Throws std::runtime_error.
void requireSoundOpenExrHeaders(const PictureFile& file);

}  // namespace lfmeta
