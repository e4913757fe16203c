// The image resource section of a Photoshop file.
#pragma once

#include "reading/reading.h"

namespace lumenforge {

// A result code of getExifData.
int readPsd(Reading& reading);

}  // namespace lumenforge
