// Images with any description, records and packet written as TIFF.
#include "fuzzing.h"

void fuzz::check(std::string input) {
  constexpr int kDepths[] = {8, 16, 32, 3216};
  TifImageInfo info{};
  info.width = 1 + take<uint8_t>(input);
  info.height = take<int8_t>(input);
  info.channels = 1 + take<uint8_t>(input) % 4;
  info.bitsPerSample = kDepths[take<uint8_t>(input) % 4];
  const bool narrow = take<uint8_t>(input) % 2 == 1;
  info.conversion = narrow && info.bitsPerSample == 8 ? 1 : 0;
  info.orientation = take<int8_t>(input);
  const bool bottomUp = take<uint8_t>(input) % 2 == 1 && info.height > 0;
  const int method = take<int8_t>(input);
  const Block icc(input.substr(0, take<uint8_t>(input)));
  const Block iptc(input.substr(0, take<uint8_t>(input)));
  info.iccLength = icc.size();
  const auto hostile = take<std::array<int32_t, 11>>(input);  // another description altogether
  const auto meta = take<MetadataBuf>(input);
  const auto gps = take<GpsBuf>(input);
  SettingsParams settings;
  for (float& slot : settings) slot = take<int8_t>(input);
  const Block xmp(input);

  const int sampleSize = info.bitsPerSample == 3216 ? 2 : info.bitsPerSample / 8;
  const int unit = 1 + info.conversion;
  const int rowSize = info.width * info.channels * sampleSize * unit;
  const int written = info.width * (info.channels <= 2 ? 1 : 3) * sampleSize;
  const int height = std::max(info.height, 0);
  std::string bytes(static_cast<std::size_t>(rowSize * height), 'p');
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i * 7 >> 1);
  const Block pixels(bytes);
  MemoryFile file("");
  const auto write = [&](const TifImageInfo& description) {
    return buf2tif(pixels.bytes() + (bottomUp ? rowSize * (height - 1) : 0), &description,
                   rowSize / unit * (bottomUp ? -1 : 1), icc.bytes(), &meta, &gps, iptc.size(), iptc.bytes(), method,
                   settings, xmp.size(), xmp.bytes(), file.path());
  };
  TifImageInfo other;
  std::memcpy(&other, hostile.data(), sizeof other);
  other.iccLength = std::min(other.iccLength, icc.size());
  if (other.width < 1) require(write(other) == -6 && file.bytes().empty());
  require(write(info) == height);
  const std::string first = file.bytes();
  require(write(info) == height && file.bytes() == first);
  if (rowSize == written && !bottomUp) require(first.compare(8, bytes.size(), bytes) == 0);
}
