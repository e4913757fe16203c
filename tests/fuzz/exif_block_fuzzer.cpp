// EXIF blocks of any records: written with their own counts and read back, then with any counts.
#include "fuzzing.h"

namespace fuzz {

struct Sizes {
  int exifCount, exifDataSize, gpsCount, gpsDataSize, modelLength, makeLength, dateTimeLength,
      gpsDateLength;
};

static std::string write(const Sizes& s, int orientation, const MetadataBuf& meta,
                         const GpsBuf& gps, const Block& make) {
  const auto sum = [](int fixed, int each, int count, int data) {
    return count > 0 ? int64_t{fixed} + int64_t{each} * count + std::max(data, 0) : 0;
  };
  const int64_t rest =
      sum(12, 0, s.makeLength, s.makeLength) + sum(12, 0, s.modelLength, s.modelLength) +
      sum(18, 12, s.exifCount, s.exifDataSize) + sum(18, 12, s.gpsCount, s.gpsDataSize);
  const int64_t size = rest == 0 || rest + 26 > INT32_MAX ? 0 : rest + 26;
  if (size > 1 << 20) return "";  // nothing new for its time
  const Block out(static_cast<std::size_t>(size), 0);
  require(write_exif_buf(s.exifCount, s.exifDataSize, s.gpsCount, s.gpsDataSize, s.modelLength,
                         s.makeLength, s.dateTimeLength, s.gpsDateLength, orientation, &meta, &gps,
                         make.chars(), out.bytes()) == (size == 0 ? -1 : size));
  return std::string(out.text());
}

static void readBack(const std::string& block, int orientation, const Sizes& sizes,
                     const MetadataBuf& meta, const GpsBuf& gps) {
  MemoryFile file(block);
  ExifInfo info;
  require(getExifData(file.path(), 0, &info) == 1);
  require(info.orientation == (orientation >= 1 && orientation <= 8 ? uint32_t(orientation) : 1));
  const std::string model(meta.model, static_cast<std::size_t>(std::max(sizes.modelLength - 1, 0)));
  if (model.size() > 3 && model.find('\n') == std::string::npos) require(info.model == model);
  if (static_cast<int32_t>(meta.iso) > 0) require(info.iso == (meta.iso & 0xFFFF));
  const auto present = [](const uint32_t* words) {
    return static_cast<int32_t>(words[0]) > 0 && static_cast<int32_t>(words[1]) > 0;
  };
  if (present(gps.latitude)) require(bytesOf(info.gpsLatitude) == bytesOf(gps.latitude));
  if (present(gps.timeStamp)) require(bytesOf(info.gpsTimeStamp) == bytesOf(gps.timeStamp));
  if (present(gps.altitude)) require(bytesOf(info.gpsAltitude) == bytesOf(gps.altitude));
}

void check(Input input) {
  const int orientation = input.take<int8_t>();
  const Sizes hostile = input.take<Sizes>();
  const auto meta = input.take<MetadataBuf>();
  const auto gps = input.take<GpsBuf>();
  const Block make(64);
  Sizes s;
  int lensLength;
  require(get_exif_count(&meta, &s.exifCount, &s.exifDataSize, &gps, &s.gpsCount, &s.gpsDataSize,
                         &s.modelLength, &s.makeLength, &s.dateTimeLength, &s.gpsDateLength,
                         &lensLength, make.chars()) == s.exifCount + s.gpsCount);
  require(make.bytes()[63] == 0 && lensLength >= 0 && lensLength <= 64);
  const std::string block = write(s, orientation, meta, gps, make);
  if (!block.empty()) readBack(block, orientation, s, meta, gps);
  write(hostile, orientation, meta, gps, make);
}

}  // namespace fuzz
