// Images with any description, records and packet written as TIFF, and the file read again.
#include "fuzzing.h"

namespace fuzz {

struct Request {
  int16_t width, height;
  int8_t channels, depth, conversion, padding, orientation, method;
  uint8_t bottomUp, dimensionShift;
  int32_t resolution;
  uint8_t iccLength, iptcLength;
};

static int valueOf(MemoryFile& file, int tag) {
  int count = 0;
  int value = 0;
  require(get_tif_tag(openAt(file, 0).get(), tag, &count, &value) > 0);
  return value;
}

void check(Input input) {
  const auto request = input.take<Request>();
  const auto meta = input.take<MetadataBuf>();
  const auto gps = input.take<GpsBuf>();
  float settings[60];
  for (float& slot : settings) slot = input.take<int8_t>();
  const Block icc(input.bytes(request.iccLength));
  const Block iptc(input.bytes(request.iptcLength));
  const Block xmp(input.rest);

  constexpr int kDepths[] = {8, 16, 32, 3216, 12};
  const int shift = request.dimensionShift % 17;
  const TifImageInfo info{request.width << shift,
                          request.height << shift,
                          request.channels % 6,
                          kDepths[static_cast<uint8_t>(request.depth) % 5],
                          request.resolution,
                          0,
                          icc.size(),
                          request.conversion % 3,
                          {},
                          request.orientation};
  const bool supported =
      info.width >= 1 && info.channels >= 1 && info.channels <= 4 && info.bitsPerSample != 12 &&
      info.resolution >= 0 && info.resolution <= 4294967 &&
      (info.conversion == 0 || (info.conversion == 1 && info.bitsPerSample == 8));
  const auto width = static_cast<uint64_t>(std::max(info.width, 1));
  const auto height = static_cast<uint64_t>(std::max(info.height, 0));
  const uint64_t sampleSize =
      info.bitsPerSample == 3216 ? 2 : static_cast<uint64_t>(info.bitsPerSample) / 8;
  const uint64_t written = width * (info.channels <= 2 ? 1 : 3) * sampleSize;
  const uint64_t unit = info.conversion == 1 ? 2 : 1;
  const uint64_t rowSize =
      width * static_cast<uint64_t>(std::max(info.channels, 0)) * sampleSize * unit;
  const uint64_t distance = rowSize + (request.padding & 3) * unit;
  const bool fits = written * height < UINT32_MAX;
  const bool refused = !supported || !fits;
  if (!refused && (distance * height > 1 << 16 || distance > 1 << 16)) return;

  const Block pixels(refused || height == 0 ? 0 : distance * (height - 1) + rowSize, 'p');
  for (int i = 0; i < pixels.size(); ++i) pixels.bytes()[i] = static_cast<uint8_t>(i * 7 >> 1);
  const bool bottomUp = request.bottomUp % 2 == 1 && height > 0 && !refused;
  const uint8_t* first = pixels.bytes() + (bottomUp ? distance * (height - 1) : 0);
  const int stride = static_cast<int>(distance / unit) * (bottomUp ? -1 : 1);

  const std::string junk = "there before";
  std::string files[2];
  MemoryFile file(junk);
  for (std::string& bytes : files) {
    const int result =
        buf2tif(first, &info, stride, icc.bytes(), &meta, &gps, iptc.size(), iptc.bytes(),
                request.method, settings, xmp.size(), xmp.bytes(), file.path());
    bytes = file.bytes();
    if (refused) return require(result == -6 && bytes == junk);
    require(result == static_cast<int>(height));
  }
  require(files[0] == files[1]);
  require(valueOf(file, 0x100) == info.width && valueOf(file, 0x101) == static_cast<int>(height));
  require(valueOf(file, 0x117) == static_cast<int>(written * height) && valueOf(file, 0x111) == 8);
  if (info.conversion == 0 && info.channels % 2 == 1) {  // rows as they stand in memory
    for (uint64_t y = 0; y < height; ++y) {
      const uint64_t at = distance * (bottomUp ? height - 1 - y : y);
      require(pixels.text().substr(at, rowSize) == files[0].substr(8 + y * rowSize, rowSize));
    }
  }
  ExifInfo back;
  require(getExifData(file.path(), 0, &back) == 1);
  requireTexts(back);
  require(back.xmpOffset + uint64_t{back.xmpLength} <= files[0].size());
  require(back.iptcOffset + uint64_t{back.iptcLength} <= files[0].size());
  require(std::string_view(files[0]).substr(back.iptcOffset).starts_with(iptc.text()) ||
          iptc.size() == 0);
}

}  // namespace fuzz
