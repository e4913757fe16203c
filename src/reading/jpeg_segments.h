// The marker segments of a JPEG file.
#pragma once

#include "reading/reading.h"

namespace lumenforge {

// A result code of getExifData.
int readJpeg(Reading& reading);

}  // namespace lumenforge
