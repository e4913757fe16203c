// A block of Photoshop image resources.
#pragma once

#include "reading/reading.h"

namespace lumenforge {

// A result code of parse_photoshop_data.
int scanPhotoshopBlock(Reading& reading, uint64_t offset, uint32_t length);

}  // namespace lumenforge
