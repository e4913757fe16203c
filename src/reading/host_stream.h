// A directory in a stream of the host.
#pragma once

#include "reading/reading.h"

namespace lumenforge {

using DirectoryParser = void(Reading& reading, const TiffFrame& frame, uint64_t offset);

// `parse` on the directory where the stream stands, with the host's arguments. A stream that cannot
// tell its position has nothing to read. Returns 1.
int readFromStream(std::FILE* stream, int byteOrder, int base, ExifInfo& info,
                   DirectoryParser* parse);

}  // namespace lumenforge
