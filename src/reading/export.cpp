// ExifInfo -> MetadataBuf and GpsBuf, the records that the host keeps.
#include <algorithm>
#include <cstring>
#include <iterator>

#include "LumenforgeMetaLib.h"

namespace {

int32_t truncated(double number) {
  constexpr double kLargest = 2147483647.0;
  return static_cast<int32_t>(std::min(number, kLargest));
}

// Nothing for 0, a negative number or not-a-number. Hosts rely on the truncation: the float nearest
// to 5.6 becomes 559/100.
void setFraction(float source, int32_t (&fraction)[2]) {
  const double value = source;
  if (value >= 1.0) {
    fraction[0] = truncated(value * 100.0);
    fraction[1] = 100;
  } else if (value > 0.0) {
    fraction[0] = 100;
    fraction[1] = truncated(100.0 / value);
  }
}

void exportGps(const ExifInfo& info, GpsBuf& gps) {
  std::copy(std::begin(info.gpsLatitude), std::end(info.gpsLatitude), gps.latitude);
  std::copy(std::begin(info.gpsLongitude), std::end(info.gpsLongitude), gps.longitude);
  std::copy(std::begin(info.gpsAltitude), std::end(info.gpsAltitude), gps.altitude);
  std::copy(std::begin(info.gpsTimeStamp), std::end(info.gpsTimeStamp), gps.timeStamp);
  gps.latitudeRef = info.gpsLatitudeRef;
  gps.longitudeRef = info.gpsLongitudeRef;
  gps.altitudeRef = info.gpsAltitudeRef;
  std::copy(std::begin(info.gpsDateStamp), std::end(info.gpsDateStamp), gps.dateStamp);
}

}  // namespace

int metadataBufFromExifInfo(const ExifInfo* info, MetadataBuf* buf, GpsBuf* gps) {
  setFraction(info->exposureTime, buf->exposureTime);
  setFraction(info->fNumber, buf->fNumber);
  buf->iso = info->iso;
  buf->valueSource = info->valueSource;
  setFraction(info->focalLength, buf->focalLength);
  buf->focalLength35mm = info->focalLength35mm;
  setFraction(info->focalPlaneXResolution, buf->focalPlaneXResolution);
  buf->focalPlaneResolutionUnit = info->focalPlaneResolutionUnit;
  buf->thumbOffset = info->thumbOffset;
  buf->thumbLength = info->thumbLength;
  buf->iptcOffset = info->iptcOffset;
  buf->iptcLength = info->iptcLength;
  buf->orientation = info->orientation;
  buf->xmpOffset = info->xmpOffset;
  buf->xmpLength = info->xmpLength;
  std::memcpy(buf->model, info->model, sizeof buf->model);
  std::memcpy(buf->dateTimeOriginal, info->dateTimeOriginal, sizeof buf->dateTimeOriginal);
  std::memcpy(buf->lens, info->lens, sizeof buf->lens);
  exportGps(*info, *gps);
  return buf->exposureTime[0];
}
