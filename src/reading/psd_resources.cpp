// A Photoshop file's header and image resource section -> its EXIF resource.
#include "reading/psd_resources.h"

#include <cstring>

#include "reading/tiff_directories.h"

namespace lumenforge {
namespace {

constexpr std::size_t kSignatureSize = 4;
constexpr uint16_t kExifResource = 0x0422;
constexpr uint16_t kRgbMode = 3;
constexpr uint16_t kMinChannels = 3;
constexpr uint64_t kResourceHeaderSize = 12;  // signature, ID, empty name, data size

// The signature has been read; afterwards the cursor stands at the colour mode data.
int checkHeader(Cursor& cursor) {
  cursor.skip(2 + 6);  // version, reserved
  const auto channels = cursor.read16();
  if (!channels || *channels < kMinChannels) return LUMENFORGE_UNSUPPORTED;
  cursor.skip(4 + 4 + 2);  // height, width, depth
  return cursor.read16() == kRgbMode ? LUMENFORGE_OK : LUMENFORGE_UNSUPPORTED;
}

// File position of the EXIF resource's data. Every resource is stepped over as if its name were
// empty: hosts rely on it.
std::optional<uint64_t> findExifResource(Cursor& cursor, uint32_t sectionLength) {
  uint64_t consumed = 0;
  while (consumed < sectionLength) {
    const uint64_t start = cursor.offset();
    const uint8_t* signature = cursor.readBytes(kSignatureSize);
    if (signature == nullptr || std::memcmp(signature, "8BIM", kSignatureSize) != 0) break;
    const auto id = cursor.read16();
    cursor.skip(2);  // name
    const auto size = cursor.read32();
    if (!id || !size) break;
    if (*id == kExifResource) return cursor.offset();
    const uint64_t step = uint64_t{*size} + *size % 2 + kResourceHeaderSize;
    cursor.moveTo(start + step);
    consumed += step;
  }
  return std::nullopt;
}

}  // namespace

int readPsd(Reading& reading) {
  Cursor cursor(reading.window, 0, ByteOrder::big);
  const uint8_t* signature = cursor.readBytes(kSignatureSize);
  if (signature == nullptr) return LUMENFORGE_CANNOT_READ;
  if (std::memcmp(signature, "8BPS", kSignatureSize) != 0) return LUMENFORGE_WRONG_SIGNATURE;
  if (const int result = checkHeader(cursor); result < 0) return result;

  const auto colourDataLength = cursor.read32();
  if (!colourDataLength) return LUMENFORGE_CANNOT_READ;
  cursor.skip(*colourDataLength);
  const auto sectionLength = cursor.read32();
  if (!sectionLength) return LUMENFORGE_CANNOT_READ;
  const auto base = findExifResource(cursor, *sectionLength);
  return base ? readTiffStructure(reading, *base, *base) : LUMENFORGE_CANNOT_READ;
}

}  // namespace lumenforge
