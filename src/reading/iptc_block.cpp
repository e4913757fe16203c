// An IPTC block (IPTC-IIM 4) at a known place of a file -> the host's buffer.
#include "LumenforgeMetaLib.h"
#include "base/file.h"

int read_iptc(const char* path, int length, int offset, unsigned char* buf) {
  using namespace lumenforge;
  constexpr unsigned char kDatasetMarker = 0x1C;
  constexpr int kNotInFile = 0;
  InputFile file(path);
  if (!file.isOpen()) return LUMENFORGE_CANNOT_READ;
  const auto size = file.size();
  if (!size || *size == 0) return LUMENFORGE_CANNOT_READ;
  if (length < 0 || offset < 0) return kNotInFile;
  const auto wanted = static_cast<uint64_t>(length);
  const auto start = static_cast<uint64_t>(offset);
  if (start + wanted >= *size) return kNotInFile;

  const std::size_t count = file.read(start, {buf, wanted}, wanted);
  if (count == 0 && wanted > 0) return LUMENFORGE_CANNOT_READ;
  if (count == 0 || buf[0] != kDatasetMarker) return LUMENFORGE_WRONG_SIGNATURE;
  return count == wanted ? length : LUMENFORGE_CANNOT_READ;
}
