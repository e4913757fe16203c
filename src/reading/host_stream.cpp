#include "reading/host_stream.h"

namespace lumenforge {

int readFromStream(std::FILE* stream, int byteOrder, int base, ExifInfo& info,
                   DirectoryParser* parse) {
  if (const auto start = positionOf(stream)) {
    Window window(stream, *start);
    Reading reading{window, info};
    // A negative base wraps, and so does the sum of base and value: the sum is what counts.
    parse(reading, {static_cast<uint64_t>(int64_t{base}), byteOrderOfMark(byteOrder)}, *start);
  }
  return LUMENFORGE_OK;
}

}  // namespace lumenforge
