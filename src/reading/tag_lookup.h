// The entry of a tag in the chain of directories of a little-endian TIFF file.
#pragma once

#include "reading/directory.h"

namespace lumenforge {

struct TagLookup {
  int failure = 0;  // a result code of get_tif_tag, or 0
  DirectoryEntry entry;
};

// The first entry of `tag` that a host can be told of; the header stands at `headerOffset`.
TagLookup findTag(Window& window, uint64_t headerOffset, int tag);

}  // namespace lumenforge
