// A call that fills a record, told as text: its result, every field of the record that is not zero, and what it said.
#pragma once

#include <gtest/gtest.h>

#include <charconv>
#include <functional>
#include <sstream>

#include "support/tiff_records.h"

namespace build {

template <typename... Parts>
std::string told(const Parts&... parts) {
  std::ostringstream out;
  out.precision(9);
  (out << ... << parts);
  return out.str();
}

template <typename T>
std::string field(const char* name, const T& value) {
  return value == T{} ? "" : told(' ', name, '=', value);
}

// The shortest text that reads back as this number.
inline std::string field(const char* name, float value) {
  char text[32];
  return value == 0 ? "" : told(' ', name, '=', std::string(text, std::to_chars(text, std::end(text), value).ptr));
}

inline std::string recordTold(const ExifInfo& i) {
  const auto words = [](const char* name, const auto& array) {
    std::string list;
    for (const uint32_t word : array) list += (list.empty() ? "" : ",") + std::to_string(word);
    return list.find_first_not_of("0,") == list.npos ? "" : told(' ', name, '=', list);
  };
  return field("source", i.valueSource) + field("t", i.exposureTime) + field("f", i.fNumber) + field("iso", i.iso) +
         field("mm", i.focalLength) + field("mm35", i.focalLength35mm) + field("x", i.focalPlaneXResolution) +
         field("unit", i.focalPlaneResolutionUnit) + field<std::string>("model", i.model) +
         field<std::string>("date", i.dateTimeOriginal) + field("width", i.thumbWidth) +
         field("height", i.thumbHeight) + field("row", i.thumbRowBytes) + field("thumb", i.thumbLength) +
         field("thumbAt", i.thumbOffset) + field("orientation", i.orientation) + field("iptc", i.iptcLength) +
         field("iptcAt", i.iptcOffset) + field("latRef", i.gpsLatitudeRef) + words("lat", i.gpsLatitude) +
         field("lonRef", i.gpsLongitudeRef) + words("lon", i.gpsLongitude) + field("altRef", +i.gpsAltitudeRef) +
         words("alt", i.gpsAltitude) + words("time", i.gpsTimeStamp) + field<std::string>("day", i.gpsDateStamp) +
         field("xmp", i.xmpLength) + field("xmpAt", i.xmpOffset) + field<std::string>("lens", i.lens);
}

inline std::string outcomeOf(const std::function<int(ExifInfo*)>& read) {
  ExifInfo info;
  std::memset(&info, 0xA5, sizeof info);
  testing::internal::CaptureStderr();
  const int result = read(&info);
  return told(result, recordTold(info), field("said", testing::internal::GetCapturedStderr()));
}

}  // namespace build
