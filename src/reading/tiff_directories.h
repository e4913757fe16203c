// A TIFF header and its chain of image file directories.
#pragma once

#include "reading/reading.h"

namespace lumenforge {

// The header stands at `headerOffset`, its offsets count from `base` (the same position but for a
// JPEG without EXIF signature). A result code of getExifData; that a directory of the chain is cut
// short stands in the reading alone.
int readTiffStructure(Reading& reading, uint64_t headerOffset, uint64_t base);

}  // namespace lumenforge
