#include "tiff/pixel_blocks.h"

#include <algorithm>
#include <cstring>

#include "LumenforgeMetaLib.h"
#include "base/zeroed.h"

namespace lumenforge {
namespace {

const uint8_t* rowAt(const PixelRows& rows, uint64_t row) {
  return rows.first + static_cast<std::ptrdiff_t>(row) * rows.distance;
}

bool rowsAreWhole(const PixelRows& rows) {
  return rows.packing.keptCount == rows.packing.unitSize;
}

// Whether the rows of a block stand in memory as they stand in the file.
bool blocksStandInMemory(const PixelRows& rows, uint64_t rowsPerBlock) {
  return rowsAreWhole(rows) &&
         (rowsPerBlock == 1 || rows.distance == static_cast<std::ptrdiff_t>(rows.rowSize()));
}

void gatherBlock(const PixelRows& rows, uint64_t firstRow, uint64_t rowCount, uint8_t* block) {
  const uint64_t size = rows.writtenRowSize();
  for (uint64_t row = firstRow; row < firstRow + rowCount; ++row, block += size) {
    const uint8_t* source = rowAt(rows, row);
    if (rowsAreWhole(rows)) {
      std::memcpy(block, source, size);
    } else {
      packUnits(rows.packing, source, rows.width * rows.packing.unitsPerPixel, {block, size});
    }
  }
}

}  // namespace

int writePixelBlocks(std::FILE* file, const PixelRows& rows) {
  const uint64_t rowsPerBlock = std::min(rows.rowsPerBlock, rows.height);
  const ZeroedBuffer block = allocateZeroed(rowsPerBlock * rows.writtenRowSize());
  if (block == nullptr) return LUMENFORGE_NO_MEMORY;
  const bool straight = blocksStandInMemory(rows, rowsPerBlock);
  uint64_t rowCount = 0;
  for (uint64_t row = 0; row < rows.height; row += rowCount) {
    rowCount = std::min(rowsPerBlock, rows.height - row);
    if (!straight) gatherBlock(rows, row, rowCount, block.get());
    const uint8_t* bytes = straight ? rowAt(rows, row) : block.get();
    if (std::fwrite(bytes, rows.writtenRowSize(), rowCount, file) != rowCount) {
      return LUMENFORGE_PIXELS_NOT_WRITTEN;
    }
  }
  return static_cast<int>(rowCount);
}

}  // namespace lumenforge
