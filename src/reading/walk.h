// The inner doors of the reading wing: each parser reads one structure of the file through the
// window of the walk and fills its own fields of the record.
#pragma once

#include <cstdint>

#include "LumenforgeMetaLib.h"
#include "base/window.h"
#include "reading/directory.h"

namespace lumenforge {

enum FileType : int { kTiffFile = 0, kJpegFile = 1, kPsdFile = 2 };

// What one call carries along.
struct Walk {
  Window& window;
  ExifInfo& info;
  int fileType = kTiffFile;
  WorkBudget budget{};
  bool damaged = false;  // a directory of the chain is cut short
};

// A TIFF structure whose header stands at `headerOffset` and whose offsets count from `base`
// (the same position but for a JPEG without EXIF signature). A result code of getExifData.
int readTiffStructure(Walk& walk, uint64_t headerOffset, uint64_t base);

int readJpeg(Walk& walk);
int readPsd(Walk& walk);

void readExifDirectory(Walk& walk, const TiffFrame& frame, uint64_t offset);
void readGpsDirectory(Walk& walk, const TiffFrame& frame, uint64_t offset);

// `length` bytes of Photoshop image resources. A result code of parse_photoshop_data.
int scanPhotoshopBlock(Walk& walk, uint64_t offset, uint32_t length);

// An exported directory parser: `read` on a host's stream, from where it stands, with the host's
// arguments. A stream that cannot tell its position has nothing to read.
int readFromStream(std::FILE* stream, int byteOrder, int base, ExifInfo& info,
                   void (*read)(Walk&, const TiffFrame&, uint64_t));

}  // namespace lumenforge
