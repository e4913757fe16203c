#include "read_report.h"

#include <array>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <optional>
#include <span>

#include "report.h"
#include "settings_vocabulary.h"

namespace {

constexpr int kMethodSelector = -1;
constexpr int kLensSelector = 100;

__attribute__((format(printf, 1, 2))) std::string format(const char* pattern, ...) {
  std::array<char, 256> text{};
  va_list arguments;
  va_start(arguments, pattern);
  std::vsnprintf(text.data(), text.size(), pattern, arguments);
  va_end(arguments);
  return text.data();
}

// Numerator over denominator; none for a denominator of 0.
std::optional<double> quotient(const std::uint32_t* fraction) {
  if (fraction[1] == 0) {
    return std::nullopt;
  }
  return static_cast<double>(fraction[0]) / fraction[1];
}

// Degrees, minutes and seconds as signed degrees. Parts that the file leaves out are 0 over 0.
std::optional<double> degrees(const std::uint32_t (&parts)[6], bool negative) {
  const auto whole = quotient(parts);
  if (!whole) {
    return std::nullopt;
  }
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
  if (position.altitude && info.gpsAltitudeRef == 1) {
    position.altitude = -*position.altitude;
  }
  return position;
}

std::string exposureText(float seconds) {
  if (seconds >= 0.3F) {
    return format("%g s", static_cast<double>(seconds));
  }
  return format("1/%g s", std::round(1.0 / static_cast<double>(seconds)));
}

// Lines of a label and what is known; a label without anything is left out.
class Lines {
 public:
  explicit Lines(const std::string& title) : text_(printable(title) + "\n") {}

  void add(const char* label, std::initializer_list<std::string> parts) {
    std::string line;
    for (const std::string& part : parts) {
      line.append(part.empty() || line.empty() ? "" : ", ").append(part);
    }
    if (!line.empty()) {
      text_ += format("  %-13s", label) + line + "\n";
    }
  }

  const std::string& text() const { return text_; }

 private:
  std::string text_;
};

std::string block(std::uint32_t length, std::uint32_t offset) {
  return length == 0 ? "" : format("%u bytes at %u", length, offset);
}

std::string orientationText(std::uint32_t orientation) {
  constexpr std::array kNames{"upright",
                              "mirrored",
                              "upside down",
                              "upside down, mirrored",
                              "mirrored, turned left",
                              "turned right",
                              "mirrored, turned right",
                              "turned left"};
  if (orientation < 1 || orientation > kNames.size()) {
    return orientation == 0 ? "" : format("%u", orientation);
  }
  return format("%u (%s)", orientation, kNames[orientation - 1]);
}

std::string timeStampText(const ExifInfo& info) {
  std::string time(textOf(info.gpsDateStamp));
  const auto hours = quotient(info.gpsTimeStamp);
  if (hours) {
    time += format("%s%02.0f:%02.0f:%02.0f UTC", time.empty() ? "" : " ", *hours,
                   quotient(info.gpsTimeStamp + 2).value_or(0),
                   std::floor(quotient(info.gpsTimeStamp + 4).value_or(0)));
  }
  return printable(time);
}

std::string methodName(int method) {
  for (const Method& known : namedMethods()) {
    if (known.number == method) {
      return known.name;
    }
  }
  return "";
}

void addExposure(Lines& lines, const ExifInfo& info) {
  lines.add("Exposure",
            {info.exposureTime > 0 ? exposureText(info.exposureTime) : "",
             info.fNumber > 0 ? format("f/%.3g", static_cast<double>(info.fNumber)) : "",
             info.iso > 0 ? format("ISO %u", info.iso) : "",
             info.valueSource == 2 ? "from the image description" : ""});
  lines.add("Focal length",
            {info.focalLength > 0 ? format("%g mm", static_cast<double>(info.focalLength)) : "",
             info.focalLength35mm > 0 ? format("%u mm on 35 mm film", info.focalLength35mm) : ""});
}

void addPosition(Lines& lines, const ExifInfo& info) {
  const Position position = positionOf(info);
  lines.add("Position",
            {position.latitude && position.longitude
                 ? format("%.6f, %.6f", *position.latitude, *position.longitude)
                 : "",
             position.altitude ? format("%g m", *position.altitude) : "", timeStampText(info)});
}

Json numbers(std::span<const std::uint32_t> words) {
  return Json(std::vector<std::uint32_t>(words.begin(), words.end()));
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

PhotoReport readPhotoReport(const std::string& path) {
  PhotoReport report{.record = readPhotoRecord(path), .method = 0, .lens = ""};
  report.lens = textOf(report.record.info.lens);
  Bytes xmp = xmpOf(path, report.record);
  if (!xmp.empty()) {
    xmp.push_back('\0');
    const int length = static_cast<int>(xmp.size());
    std::array<char, 64> lens{};
    get_settings_from_xmp(kLensSelector, length, xmp.data(), lens.data(), nullptr);
    report.lens = lens.data();
    report.method =
        std::max(get_settings_from_xmp(kMethodSelector, length, xmp.data(), nullptr, nullptr), 0);
  }
  return report;
}

std::string describeForPerson(const std::string& path, const PhotoReport& report) {
  const ExifInfo& info = report.record.info;
  Lines lines(path + " (" + nameOf(report.record.type) + ")");
  lines.add("Camera", {printable(textOf(info.model)), printable(report.lens)});
  addExposure(lines, info);
  lines.add("Taken", {printable(textOf(info.dateTimeOriginal))});
  lines.add("Orientation", {orientationText(info.orientation)});
  addPosition(lines, info);
  lines.add(
      "Thumbnail",
      {block(info.thumbLength, info.thumbOffset),
       info.thumbWidth > 0 ? format("%u x %u pixels", info.thumbWidth, info.thumbHeight) : ""});
  lines.add("IPTC", {block(info.iptcLength, info.iptcOffset)});
  lines.add("XMP", {block(info.xmpLength, info.xmpOffset)});
  lines.add(
      "Settings",
      {report.method > 0 ? methodName(report.method) + format(" (method %d)", report.method) : ""});
  return lines.text();
}

std::string describeAsJson(const std::string& path, const PhotoReport& report) {
  const ExifInfo& info = report.record.info;
  Json json{{"file", path},
            {"type", nameOf(report.record.type)},
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
