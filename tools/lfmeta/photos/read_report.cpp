#include "photos/read_report.h"

#include <array>
#include <charconv>
#include <cmath>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "base/report.h"
#include "commands/settings_vocabulary.h"

namespace lfmeta {

namespace {

std::string concat(std::initializer_list<std::string_view> parts) {
  std::string all;
  for (const std::string_view part : parts) all += part;
  return all;
}

// Six digits say more than any of these numbers was measured to.
std::string number(double value, int digits = 6) {
  std::array<char, 32> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(), value,
                                 std::chars_format::general, digits);
  return {text.data(), end.ptr};
}

// A hundred-thousandth of a degree is a metre.
std::string degreesText(double value) {
  std::array<char, 32> text{};
  const auto end =
      std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, 6);
  return {text.data(), end.ptr};
}

std::string number(uint32_t value) {
  return std::to_string(value);
}

// A quotient of 32-bit numbers, without what follows the point.
std::string twoDigits(double value) {
  return concat({value < 10 ? "0" : "", number(static_cast<uint32_t>(value))});
}

// Numerator over denominator; none for a denominator of 0.
std::optional<double> quotient(const uint32_t* fraction) {
  if (fraction[1] == 0) return std::nullopt;
  return static_cast<double>(fraction[0]) / fraction[1];
}

// Degrees, minutes and seconds as signed degrees. Parts that the file leaves out are 0 over 0.
std::optional<double> degrees(const uint32_t (&parts)[6], bool negative) {
  const auto whole = quotient(parts);
  if (!whole) return std::nullopt;
  const double sum =
      *whole + quotient(parts + 2).value_or(0) / 60 + quotient(parts + 4).value_or(0) / 3600;
  return negative ? -sum : sum;
}

struct Position {
  std::optional<double> latitude;
  std::optional<double> longitude;
  std::optional<double> altitude;  // metres
};

Position positionOf(const ExifInfo& info) {
  Position position{degrees(info.gpsLatitude, info.gpsLatitudeRef == 'S'),
                    degrees(info.gpsLongitude, info.gpsLongitudeRef == 'W'),
                    quotient(info.gpsAltitude)};
  if (position.altitude && info.gpsAltitudeRef == 1) position.altitude = -*position.altitude;
  return position;
}

std::string exposureText(float seconds) {
  if (seconds >= 0.3F) return concat({number(seconds), " s"});
  return concat({"1/", number(std::round(1.0 / static_cast<double>(seconds))), " s"});
}

// Lines of a label and what is known; a label without anything is left out.
class Lines {
 public:
  explicit Lines(const std::string& title) : text_(printable(title) + "\n") {}

  void add(std::string_view label, std::initializer_list<std::string_view> parts) {
    bool begun = false;
    for (const std::string_view part : parts) {
      if (part.empty()) continue;
      if (begun) {
        text_ += ", ";
      } else {
        text_.append("  ").append(label).append(kLabelWidth - label.size(), ' ');
        begun = true;
      }
      text_ += part;
    }
    if (begun) text_ += '\n';
  }

  const std::string& text() const { return text_; }

 private:
  static constexpr std::size_t kLabelWidth = 13;
  std::string text_;
};

std::string block(uint32_t length, uint32_t offset) {
  return length == 0 ? "" : concat({number(length), " bytes at ", number(offset)});
}

std::string orientationText(uint32_t orientation) {
  constexpr std::array kNames{"upright",
                              "mirrored",
                              "upside down",
                              "upside down, mirrored",
                              "mirrored, turned left",
                              "turned right",
                              "mirrored, turned right",
                              "turned left"};
  if (orientation < 1 || orientation > kNames.size()) {
    return orientation == 0 ? "" : number(orientation);
  }
  return concat({number(orientation), " (", kNames[orientation - 1], ")"});
}

std::string timeStampText(const ExifInfo& info) {
  std::string time(textOf(info.gpsDateStamp));
  const auto hours = quotient(info.gpsTimeStamp);
  if (hours) {
    time = concat({time, time.empty() ? "" : " ", twoDigits(*hours), ":",
                   twoDigits(quotient(info.gpsTimeStamp + 2).value_or(0)), ":",
                   twoDigits(quotient(info.gpsTimeStamp + 4).value_or(0)), " UTC"});
  }
  return printable(time);
}

std::string methodName(int method) {
  static const std::vector<Method> methods = namedMethods();
  for (const Method& known : methods) {
    if (known.number == method) return known.name;
  }
  return "";
}

void addExposure(Lines& lines, const ExifInfo& info) {
  lines.add("Exposure", {info.exposureTime > 0 ? exposureText(info.exposureTime) : "",
                         info.fNumber > 0 ? concat({"f/", number(info.fNumber, 3)}) : "",
                         info.iso > 0 ? concat({"ISO ", number(info.iso)}) : "",
                         info.valueSource == 2 ? "from the image description" : ""});
  lines.add("Focal length",
            {info.focalLength > 0 ? concat({number(info.focalLength), " mm"}) : "",
             info.focalLength35mm > 0 ? concat({number(info.focalLength35mm), " mm on 35 mm film"})
                                      : ""});
}

void addPosition(Lines& lines, const ExifInfo& info) {
  const Position position = positionOf(info);
  lines.add(
      "Position",
      {position.latitude && position.longitude
           ? concat({degreesText(*position.latitude), ", ", degreesText(*position.longitude)})
           : "",
       position.altitude ? concat({number(*position.altitude), " m"}) : "", timeStampText(info)});
}

void addBlocks(Lines& lines, const ExifInfo& info) {
  lines.add("Thumbnail", {block(info.thumbLength, info.thumbOffset),
                          info.thumbWidth > 0 ? concat({number(info.thumbWidth), " x ",
                                                        number(info.thumbHeight), " pixels"})
                                              : ""});
  lines.add("IPTC", {block(info.iptcLength, info.iptcOffset)});
  lines.add("XMP", {block(info.xmpLength, info.xmpOffset)});
}

Json numbers(std::span<const uint32_t> words) {
  return Json(std::vector<uint32_t>(words.begin(), words.end()));
}

Json numberOrNull(std::optional<double> number) {
  return number ? Json(*number) : Json(nullptr);
}

std::string letter(char c) {
  return c == '\0' ? "" : std::string(1, c);
}

Json gpsJson(const ExifInfo& info) {
  const Position position = positionOf(info);
  return {{"latitude", numberOrNull(position.latitude)},
          {"longitude", numberOrNull(position.longitude)},
          {"altitude", numberOrNull(position.altitude)},
          {"gpsLatitudeRef", letter(info.gpsLatitudeRef)},
          {"gpsLatitude", numbers(info.gpsLatitude)},
          {"gpsLongitudeRef", letter(info.gpsLongitudeRef)},
          {"gpsLongitude", numbers(info.gpsLongitude)},
          {"gpsAltitudeRef", info.gpsAltitudeRef},
          {"gpsAltitude", numbers(info.gpsAltitude)},
          {"gpsTimeStamp", numbers(info.gpsTimeStamp)},
          {"gpsDateStamp", std::string(textOf(info.gpsDateStamp))}};
}

// The fractions as the host keeps them; [0, 0] where the float is none.
Json fractionsJson(const ExifInfo& info) {
  MetadataBuf buf;
  GpsBuf gps;
  exportRecords(info, buf, gps);
  return {{"exposureTime", buf.exposureTime},
          {"fNumber", buf.fNumber},
          {"focalLength", buf.focalLength},
          {"focalPlaneXResolution", buf.focalPlaneXResolution}};
}

}  // namespace

std::optional<PhotoReport> readPhotoReport(const std::string& path) {
  const std::optional<PhotoRecord> record = readPhotoRecord(path);
  if (!record) return std::nullopt;
  PhotoReport report{
      .record = *record, .method = 0, .lens = std::string(textOf(record->info.lens))};
  Bytes xmp = xmpOf(path, *record);
  if (!xmp.empty()) {
    xmp.push_back('\0');
    const int length = static_cast<int>(xmp.size());
    if (report.lens.empty()) {  // the library looks for it in JPEGs only
      std::array<char, 64> lens{};
      get_settings_from_xmp(LUMENFORGE_SELECT_LENS, length, xmp.data(), lens.data(), nullptr);
      report.lens = lens.data();
    }
    report.method = std::max(
        get_settings_from_xmp(LUMENFORGE_SELECT_METHOD, length, xmp.data(), nullptr, nullptr), 0);
  }
  return report;
}

std::string describeForPerson(const std::string& path, const PhotoReport& report) {
  const ExifInfo& info = report.record.info;
  Lines lines(concat({path, " (", nameOf(report.record.type), ")"}));
  lines.add("Camera", {printable(textOf(info.model)), printable(report.lens)});
  addExposure(lines, info);
  lines.add("Taken", {printable(textOf(info.dateTimeOriginal))});
  lines.add("Orientation", {orientationText(info.orientation)});
  addPosition(lines, info);
  addBlocks(lines, info);
  lines.add("Settings", {report.method > 0 ? concat({methodName(report.method), " (method ",
                                                     std::to_string(report.method), ")"})
                                           : ""});
  return lines.text();
}

std::string describeAsJson(const std::string& path, const PhotoReport& report) {
  const ExifInfo& info = report.record.info;
  Json json{{"file", path},
            {"type", nameOf(report.record.type)},
            {"damage", report.record.damage == nullptr ? Json() : Json(report.record.damage)},
            {"model", std::string(textOf(info.model))},
            {"lens", report.lens},
            {"dateTimeOriginal", std::string(textOf(info.dateTimeOriginal))},
            {"valueSource", info.valueSource},
            {"exposureTime", jsonNumber(info.exposureTime)},
            {"fNumber", jsonNumber(info.fNumber)},
            {"iso", info.iso},
            {"focalLength", jsonNumber(info.focalLength)},
            {"focalLength35mm", info.focalLength35mm},
            {"focalPlaneXResolution", jsonNumber(info.focalPlaneXResolution)},
            {"focalPlaneResolutionUnit", info.focalPlaneResolutionUnit},
            {"orientation", info.orientation},
            {"thumbWidth", info.thumbWidth},
            {"thumbHeight", info.thumbHeight},
            {"thumbRowBytes", info.thumbRowBytes},
            {"thumbOffset", info.thumbOffset},
            {"thumbLength", info.thumbLength},
            {"iptcOffset", info.iptcOffset},
            {"iptcLength", info.iptcLength},
            {"xmpOffset", info.xmpOffset},
            {"xmpLength", info.xmpLength},
            {"method", report.method}};
  json["MetadataBuf"] = fractionsJson(info);
  json["gps"] = gpsJson(info);
  return jsonLine(json) + "\n";
}

}  // namespace lfmeta
