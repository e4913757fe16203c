// EXIF blocks of any records, written with their own counts and with any.
#include "fuzzing.h"

using namespace fuzz;

struct Sizes {
  int exifCount, exifDataSize, gpsCount, gpsDataSize, modelLength, makeLength, dateLength, gpsDateLength;
};

static void write(const Sizes& s, int orientation, const MetadataBuf& meta, const GpsBuf& gps, const Block& make) {
  const auto part = [](int count, int64_t size) { return count > 0 ? 12 + size : 0; };
  const auto directory = [&](int count, int data) { return part(count, 6 + int64_t{12} * count + std::max(data, 0)); };
  int64_t size = part(s.makeLength, s.makeLength) + part(s.modelLength, s.modelLength) +
                 directory(s.exifCount, s.exifDataSize) + directory(s.gpsCount, s.gpsDataSize);
  size = size == 0 || size + 26 > INT32_MAX ? -1 : size + 26;
  if (size > 1 << 16) return;  // nothing new for its time
  const Block out = emptyBlock(std::max<int64_t>(size, 0));
  require(write_exif_buf(s.exifCount, s.exifDataSize, s.gpsCount, s.gpsDataSize, s.modelLength, s.makeLength,
                         s.dateLength, s.gpsDateLength, orientation, &meta, &gps, make.chars(), out.bytes()) == size);
}

void fuzz::check(std::string input) {
  const int orientation = take<int8_t>(input);
  const auto hostile = take<Sizes>(input);
  const auto meta = take<MetadataBuf>(input);
  const auto gps = take<GpsBuf>(input);
  const Block make = emptyBlock(64);
  Sizes s;
  int lensLength;
  require(get_exif_count(&meta, &s.exifCount, &s.exifDataSize, &gps, &s.gpsCount, &s.gpsDataSize, &s.modelLength,
                         &s.makeLength, &s.dateLength, &s.gpsDateLength, &lensLength,
                         make.chars()) == s.exifCount + s.gpsCount);
  write(hostile, orientation, meta, gps, make);
  write(s, orientation, meta, gps, make);
}
