// What a photograph's parsers hand to one another: a reading in progress. Each parser reads one
// structure of the file and fills its own fields of the record.
#pragma once

#include <cstdint>

#include "LumenforgeMetaLib.h"
#include "base/window.h"
#include "reading/directory.h"

namespace lumenforge {

struct Reading {
  Window& window;
  ExifInfo& info;
  int fileType = LUMENFORGE_TIFF;
  uint32_t entriesLeft = kMostEntries;
  uint32_t photoshopBlocksLeft = 16;
  bool damaged = false;              // a directory of the chain is cut short
  bool thumbnailOutOfReach = false;  // the one that a directory of the chain tells of
  const char* message = nullptr;     // for standard error, once no file is open
};

}  // namespace lumenforge
