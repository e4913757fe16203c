// A GPS directory.
#pragma once

#include "reading/reading.h"

namespace lumenforge {

void readGpsDirectory(Reading& reading, const TiffFrame& frame, uint64_t offset);

}  // namespace lumenforge
