// A photograph of each type, then the regions that its record points at.
#include "fuzzing.h"

void fuzz::check(std::string input) {
  const int type = take<uint8_t>(input) % 4;
  MemoryFile file(input);
  ExifInfo records[2];
  for (ExifInfo& info : records) {
    std::memset(&info, &info == records ? 0 : 'Z', sizeof info);
    require(isOneOf(getExifData(file.path(), type, &info), {1, -1, -2, -3, -10}));
    requireTexts(info);
  }
  require(bytesOf(records[0]) == bytesOf(records[1]));
  MetadataBuf meta{};
  GpsBuf gps{};
  require(get_exif_data(file.path(), type, &meta, &gps) == meta.exposureTime[0]);

  const std::size_t length = std::min<std::size_t>(meta.iptcLength, input.size());
  const auto offset = static_cast<int>(meta.iptcOffset);
  const Block iptc(std::string(length, 'Z'));
  const int size = read_iptc(file.path(), iptc.size(), offset, iptc.bytes());
  require(isOneOf(size, {iptc.size(), 0, -2}) || (size == -1 && input.empty()));
  require(size <= 0 || input.compare(meta.iptcOffset, length, iptc.text()) == 0);
  const Block packet = emptyBlock(std::min<int64_t>(meta.xmpLength, std::ssize(input)) + 1);
  require(extract_xmp(file.path(), packet.size() - 1, static_cast<int>(meta.xmpOffset), packet.bytes()) <= 15);
}
