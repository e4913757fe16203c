#include "photos/read_report.h"

#include <array>
#include <charconv>
#include <cmath>
#include <optional>
#include <string_view>
#include <vector>

#include "base/report.h"
#include "photos/settings_vocabulary.h"

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

// Most models name their make.
std::string cameraText(std::string_view make, std::string_view model) {
  const std::string_view brand = make.substr(0, make.find(' '));
  const bool named = make.empty() || model.starts_with(brand);
  return printable(named ? model : concat({make, " ", model}));
}

std::string takenText(const PhotoReport& report) {
  std::string time(textOf(report.record.info.dateTimeOriginal));
  if (!time.empty() && !report.tags.subseconds.empty()) time += "." + report.tags.subseconds;
  return printable(time);
}

// "+0.67 EV"
std::string biasText(std::optional<float> bias) {
  if (!bias || *bias == 0) return {};
  return concat({*bias > 0 ? "+" : "", number(*bias, 3), " EV"});
}

void addExposure(Lines& lines, const PhotoReport& report) {
  const ExifInfo& info = report.record.info;
  const ExifTags& tags = report.tags;
  lines.add("Exposure",
            {info.exposureTime > 0 ? exposureText(info.exposureTime) + " s" : "",
             info.fNumber > 0 ? concat({"f/", number(info.fNumber, 3)}) : "",
             info.iso > 0 ? concat({"ISO ", number(info.iso)}) : "", biasText(tags.exposureBias),
             tags.exposureMode ? exposureModeName(*tags.exposureMode) : "",
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

void addBlocks(Lines& lines, const PhotoReport& report) {
  const ExifInfo& info = report.record.info;
  lines.add(
      "Thumbnail",
      {block(info.thumbLength, info.thumbOffset),
       info.thumbWidth > 0
           ? concat({number(info.thumbWidth), " x ", number(info.thumbHeight), " pixels"})
           : "",
       report.thumbnailFile.empty() ? ""
                                    : concat({"written to ", printable(report.thumbnailFile)})});
  lines.add("IPTC", {block(info.iptcLength, info.iptcOffset)});
  lines.add("XMP", {block(info.xmpLength, info.xmpOffset)});
}

// The lens, where the library has not looked for it, and the method.
void readPacket(Bytes& xmp, PhotoReport& report) {
  xmp.push_back('\0');
  const int length = static_cast<int>(xmp.size());
  if (report.lens.empty() && report.record.type != PhotoType::jpeg) {
    std::array<char, 64> lens{};
    get_settings_from_xmp(LUMENFORGE_SELECT_LENS, length, xmp.data(), lens.data(), nullptr);
    report.lens = lens.data();
  }
  report.method = std::max(
      get_settings_from_xmp(LUMENFORGE_SELECT_METHOD, length, xmp.data(), nullptr, nullptr), 0);
}

// The rules of the library that make another value than most readers give.
std::vector<std::string> noticesOf(const PhotoReport& report, bool lensFromExif) {
  const PhotoRecord& record = report.record;
  const ExifInfo& info = record.info;
  const ExifTags& tags = report.tags;
  std::vector<std::string> notices;
  if (record.layout.exif && record.layout.notRead != nullptr) {
    notices.push_back(concat({"its EXIF data is not read: ", record.layout.notRead}));
    return notices;
  }
  if (record.layout.exif && record.layout.fillBytes && record.result < 0) {
    notices.emplace_back("fill bytes stand between its segments: a Photoshop block is not read");
  }
  if (info.orientation != 0 && info.orientation != tags.orientation.value_or(0)) {
    notices.push_back(concat({"the orientation is that of the thumbnail; the picture's own is ",
                              tags.orientation ? number(*tags.orientation) : "not given"}));
  }
  const std::string_view model = textOf(info.model);
  if (tags.model.size() > model.size() && tags.model.starts_with(model)) {
    notices.push_back(concat({"the model is cut; the file says \"", tags.model, "\""}));
  }
  if (info.exposureTime > 0 && info.valueSource == 0 && !tags.hasExposureTime) {
    notices.emplace_back("the exposure time is computed from the shutter speed value");
  }
  if (lensFromExif) {
    notices.emplace_back("the lens stands in the EXIF data only, where the library does not look");
  }
  if (record.type != PhotoType::jpeg && info.xmpLength > kLongestPacket) {
    notices.emplace_back("the XMP packet is longer than 16 MiB and not read");
  }
  return notices;
}

}  // namespace

std::optional<PhotoReport> readPhotoReport(PhotoFile& file) {
  const std::optional<PhotoRecord> record = readPhotoRecord(file);
  if (!record) return std::nullopt;
  PhotoReport report;
  report.record = *record;
  report.lens = textOf(record->info.lens);
  const PhotoLayout& layout = record->layout;
  if (layout.exif && layout.notRead == nullptr) report.tags = readExifTags(file, *layout.exif);
  const bool isTiff = record->type == PhotoType::tiff;
  report.width = isTiff ? report.tags.width : layout.width;
  report.height = isTiff ? report.tags.height : layout.height;
  Bytes xmp = xmpOf(file, *record);
  if (!xmp.empty()) readPacket(xmp, report);
  const bool lensFromExif = report.lens.empty() && !report.tags.lens.empty();
  if (lensFromExif) report.lens = report.tags.lens;
  report.notices = noticesOf(report, lensFromExif);
  return report;
}

Position positionOf(const ExifInfo& info) {
  Position position{degrees(info.gpsLatitude, info.gpsLatitudeRef == 'S'),
                    degrees(info.gpsLongitude, info.gpsLongitudeRef == 'W'),
                    quotient(info.gpsAltitude)};
  if (position.altitude && info.gpsAltitudeRef == 1) position.altitude = -*position.altitude;
  return position;
}

std::string exposureText(float seconds) {
  if (seconds >= 0.3F) return number(seconds);
  return concat({"1/", number(std::round(1.0 / static_cast<double>(seconds)))});
}

const char* exposureModeName(uint32_t mode) {
  constexpr std::array kNames{"automatic", "manual", "automatic bracket"};
  return mode < kNames.size() ? kNames[mode] : "";
}

std::string describeForPerson(const std::string& path, const PhotoReport& report) {
  const ExifInfo& info = report.record.info;
  const ExifTags& tags = report.tags;
  const std::string size =
      report.width > 0 && report.height > 0
          ? concat({", ", number(report.width), " x ", number(report.height), " pixels"})
          : "";
  Lines lines(concat({path, " (", nameOf(report.record.type), size, ")"}));
  if (report.record.blank) lines.add("EXIF", {"no EXIF data"});
  lines.add("Camera", {cameraText(tags.make, textOf(info.model)), printable(report.lens)});
  addExposure(lines, report);
  lines.add("Taken", {takenText(report)});
  lines.add("Orientation", {orientationText(info.orientation)});
  addPosition(lines, info);
  addBlocks(lines, report);
  lines.add("Settings", {report.method > 0 ? concat({methodName(report.method), " (method ",
                                                     std::to_string(report.method), ")"})
                                           : ""});
  for (const std::string& notice : report.notices) lines.add("Notice", {printable(notice)});
  return lines.text();
}

}  // namespace lfmeta
