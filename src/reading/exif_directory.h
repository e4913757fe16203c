// An EXIF directory.
#pragma once

#include "reading/reading.h"

namespace lumenforge {

void readExifDirectory(Reading& reading, const TiffFrame& frame, uint64_t offset);

}  // namespace lumenforge
