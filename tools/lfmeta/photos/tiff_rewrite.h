// One value of a TIFF file changed in place, at the cost of that value alone.
#pragma once

#include <cstdint>
#include <span>

#include "base/locked_file.h"

namespace lfmeta {

// Gives the first directory of the TIFF file, of either byte order, the entry `tag` with this value
// (of a type whose elements are bytes), instead of the one that it has, if any.
//
// The value and a new copy of the directory are appended and brought to the disk; then the four
// bytes of the header that point at the directory are changed. Whoever reads, and whatever
// interrupts, finds the old value or the new one; all other bytes stay where they are. The old
// value and directory stay in the file, unused. Throws Failure with the file as it was.
void setTiffEntry(const LockedFile& file, uint16_t tag, uint16_t type,
                  std::span<const unsigned char> value);

}  // namespace lfmeta
