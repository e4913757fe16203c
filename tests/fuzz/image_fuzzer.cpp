// A photograph of each type, then the regions that its record points at.
#include "fuzzing.h"

namespace fuzz {

static void checkIptc(MemoryFile& file, std::string_view bytes, int length, int offset) {
  const auto begin = static_cast<std::size_t>(offset);
  const auto size = static_cast<std::size_t>(length);
  const bool inside = length >= 0 && offset >= 0 && begin + size < bytes.size();
  const Block out(inside ? size : 0);
  const int result = read_iptc(file.path(), length, offset, out.bytes());
  if (!inside) return require(result == (bytes.empty() ? -1 : 0));
  require(out.text() == bytes.substr(begin, size));
  require(result == (length > 0 && bytes[begin] == 0x1C ? length : -2));
}

void check(Input input) {
  const int type = input.take<uint8_t>() % 4;
  MemoryFile file(input.rest);
  ExifInfo info;
  ExifInfo again;
  std::memset(&info, 0, sizeof info);
  std::memset(&again, 'Z', sizeof again);
  const int result = getExifData(file.path(), type, &info);
  require(isOneOf(result, {1, -1, -2, -3, -10}));
  require(getExifData(file.path(), type, &again) == result && bytesOf(info) == bytesOf(again));
  requireTexts(info);

  MetadataBuf meta[2] = {};
  GpsBuf gps[2] = {};
  require(get_exif_data(file.path(), type, &meta[0], &gps[0]) == meta[0].exposureTime[0]);
  metadataBufFromExifInfo(&info, &meta[1], &gps[1]);
  require(bytesOf(meta[0]) == bytesOf(meta[1]) && bytesOf(gps[0]) == bytesOf(gps[1]));

  checkIptc(file, input.rest, static_cast<int>(info.iptcLength), static_cast<int>(info.iptcOffset));
  const std::size_t packetSize = std::min<std::size_t>(info.xmpLength, input.rest.size());
  const Block packet(packetSize + 1, 0);
  require(extract_xmp(file.path(), static_cast<int>(packetSize), static_cast<int>(info.xmpOffset),
                      packet.bytes()) <= 15);
}

}  // namespace fuzz
