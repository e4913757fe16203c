// Pixel rows written in blocks of about 1 MiB, one write call a block, so that the memory needed
// does not grow with the image.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "tiff/pixel_packing.h"

namespace lumenforge {

// Rows as they stand in memory.
struct PixelRows {
  const uint8_t* first = nullptr;
  std::ptrdiff_t distance = 0;  // bytes from a row to the next; 0 and below are as good as any
  uint64_t width = 0;
  uint64_t height = 0;
  PixelPacking packing;
  uint64_t rowsPerBlock = 1;

  uint64_t rowSize() const { return width * packing.unitsPerPixel * packing.unitSize; }
  uint64_t writtenRowSize() const { return width * packing.unitsPerPixel * packing.keptCount; }
};

// Returns the number of rows of the last block, 0 when there are no rows, or a failure of buf2tif.
// Memory for a block is had first, also where the rows go out straight from where they stand: what
// a call needs does not depend on that.
int writePixelBlocks(std::FILE* file, const PixelRows& rows);

}  // namespace lumenforge
