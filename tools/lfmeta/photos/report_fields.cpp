#include "photos/report_fields.h"

#include <algorithm>
#include <optional>

#include "base/json_text.h"
#include "base/report.h"

namespace lfmeta {

namespace {

using Words = std::span<const uint32_t>;

// One value in the making: null, or an empty cell, for what is missing.
class Value {
 public:
  Value(std::string& out, bool json) : out_(out), json_(json) {}

  void none() {
    if (json_) out_ += "null";
  }
  void text(std::string_view text) {
    if (text.empty()) return none();
    if (json_) return appendJsonText(out_, text);
    const std::string shown = printable(text);
    if (shown.find_first_of(",\"") == std::string::npos) {
      out_ += shown;
      return;
    }
    out_ += '"';
    for (const char c : shown) out_.append(c == '"' ? 2 : 1, c);
    out_ += '"';
  }
  template <typename Number>
  void number(Number number) {
    if (json_ || std::isfinite(static_cast<double>(number))) appendNumber(out_, number);
  }
  template <typename Number>
  void number(std::optional<Number> value) {
    value ? number(*value) : none();
  }
  // Of which 0 means that it is not known.
  template <typename Number>
  void positive(Number value) {
    value == 0 ? none() : number(value);
  }
  template <typename List, typename Append>
  void list(const List& values, const Append& append) {
    if (json_) out_ += '[';
    for (std::size_t i = 0; i < values.size(); ++i) {
      if (i > 0) out_ += json_ ? "," : " ";
      append(values[i]);
    }
    if (json_) out_ += ']';
  }
  // Fractions, of which all zero means that they are not known.
  template <typename Number>
  void fractions(std::span<const Number> words) {
    if (std::all_of(words.begin(), words.end(), [](Number word) { return word == 0; })) {
      return none();
    }
    list(words, [&](Number word) { appendNumber(out_, word); });
  }
  void texts(const std::vector<std::string>& texts) {
    if (texts.empty()) return none();
    if (json_) return list(texts, [&](const std::string& one) { appendJsonText(out_, one); });
    std::string all;
    for (const std::string& one : texts) all.append(all.empty() ? "" : "; ").append(one);
    text(all);
  }

 private:
  std::string& out_;
  bool json_;
};

// What the fields are taken from, with what several of them need.
struct Source {
  explicit Source(const FileReport& of) : file(of) {
    GpsBuf gps;
    exportRecords(info, exported, gps);
  }

  static const PhotoReport& reportOf(const FileReport& file) {
    static const PhotoReport nothing;
    return file.report == nullptr ? nothing : *file.report;
  }

  const FileReport& file;
  const PhotoReport& report = reportOf(file);
  const ExifInfo& info = report.record.info;
  const ExifTags& tags = report.tags;
  const Position position = positionOf(info);
  MetadataBuf exported{};
};

std::string_view letter(const char& c) {
  return {&c, c == '\0' ? 0U : 1U};
}

}  // namespace

struct Field {
  std::string_view group;
  std::string_view name;
  void (*write)(Value&, const Source&);
};

namespace {

constexpr Field kFields[] = {
    {"", "file", [](Value& out, const Source& from) { out.text(from.file.path); }},
    {"", "fileBytes",
     [](Value& out, const Source& from) { out.text(bytesOfName(from.file.path)); }},
    {"", "error", [](Value& out, const Source& from) { out.text(from.file.failure); }},
    {"", "type", [](Value& out, const Source& from) { out.text(nameOf(from.report.record.type)); }},
    {"", "width", [](Value& out, const Source& from) { out.positive(from.report.width); }},
    {"", "height", [](Value& out, const Source& from) { out.positive(from.report.height); }},
    {"", "damage",
     [](Value& out, const Source& from) {
       const char* damage = from.report.record.damage;
       out.text(damage == nullptr ? "" : damage);
     }},
    {"", "notices", [](Value& out, const Source& from) { out.texts(from.report.notices); }},
    {"", "make", [](Value& out, const Source& from) { out.text(from.tags.make); }},
    {"", "model", [](Value& out, const Source& from) { out.text(textOf(from.info.model)); }},
    {"", "serialNumber", [](Value& out, const Source& from) { out.text(from.tags.serialNumber); }},
    {"", "lens", [](Value& out, const Source& from) { out.text(from.report.lens); }},
    {"", "dateTimeOriginal",
     [](Value& out, const Source& from) { out.text(textOf(from.info.dateTimeOriginal)); }},
    {"", "subseconds", [](Value& out, const Source& from) { out.text(from.tags.subseconds); }},
    {"", "valueSource", [](Value& out, const Source& from) { out.number(from.info.valueSource); }},
    {"", "exposureTime",
     [](Value& out, const Source& from) { out.positive(from.info.exposureTime); }},
    {"", "exposureText",
     [](Value& out, const Source& from) {
       const float time = from.info.exposureTime;
       out.text(time > 0 ? exposureText(time) : "");
     }},
    {"", "fNumber", [](Value& out, const Source& from) { out.positive(from.info.fNumber); }},
    {"", "iso", [](Value& out, const Source& from) { out.positive(from.info.iso); }},
    {"", "exposureBias",
     [](Value& out, const Source& from) { out.number(from.tags.exposureBias); }},
    {"", "exposureMode",
     [](Value& out, const Source& from) { out.number(from.tags.exposureMode); }},
    {"", "focalLength",
     [](Value& out, const Source& from) { out.positive(from.info.focalLength); }},
    {"", "focalLength35mm",
     [](Value& out, const Source& from) { out.positive(from.info.focalLength35mm); }},
    {"", "focalPlaneXResolution",
     [](Value& out, const Source& from) { out.positive(from.info.focalPlaneXResolution); }},
    {"", "focalPlaneResolutionUnit",
     [](Value& out, const Source& from) { out.positive(from.info.focalPlaneResolutionUnit); }},
    {"", "orientation",
     [](Value& out, const Source& from) { out.positive(from.info.orientation); }},
    {"", "thumbWidth", [](Value& out, const Source& from) { out.positive(from.info.thumbWidth); }},
    {"", "thumbHeight",
     [](Value& out, const Source& from) { out.positive(from.info.thumbHeight); }},
    {"", "thumbRowBytes",
     [](Value& out, const Source& from) { out.positive(from.info.thumbRowBytes); }},
    {"", "thumbOffset",
     [](Value& out, const Source& from) { out.positive(from.info.thumbOffset); }},
    {"", "thumbLength",
     [](Value& out, const Source& from) { out.positive(from.info.thumbLength); }},
    {"", "thumbnailFile",
     [](Value& out, const Source& from) { out.text(from.report.thumbnailFile); }},
    {"", "iptcOffset", [](Value& out, const Source& from) { out.positive(from.info.iptcOffset); }},
    {"", "iptcLength", [](Value& out, const Source& from) { out.positive(from.info.iptcLength); }},
    {"", "xmpOffset", [](Value& out, const Source& from) { out.positive(from.info.xmpOffset); }},
    {"", "xmpLength", [](Value& out, const Source& from) { out.positive(from.info.xmpLength); }},
    {"", "method", [](Value& out, const Source& from) { out.positive(from.report.method); }},
    // The fractions as the host keeps them.
    {"MetadataBuf", "exposureTime",
     [](Value& out, const Source& from) { out.fractions<int32_t>(from.exported.exposureTime); }},
    {"MetadataBuf", "fNumber",
     [](Value& out, const Source& from) { out.fractions<int32_t>(from.exported.fNumber); }},
    {"MetadataBuf", "focalLength",
     [](Value& out, const Source& from) { out.fractions<int32_t>(from.exported.focalLength); }},
    {"MetadataBuf", "focalPlaneXResolution",
     [](Value& out, const Source& from) {
       out.fractions<int32_t>(from.exported.focalPlaneXResolution);
     }},
    {"gps", "latitude", [](Value& out, const Source& from) { out.number(from.position.latitude); }},
    {"gps", "longitude",
     [](Value& out, const Source& from) { out.number(from.position.longitude); }},
    {"gps", "altitude", [](Value& out, const Source& from) { out.number(from.position.altitude); }},
    {"gps", "gpsLatitudeRef",
     [](Value& out, const Source& from) { out.text(letter(from.info.gpsLatitudeRef)); }},
    {"gps", "gpsLatitude",
     [](Value& out, const Source& from) { out.fractions<uint32_t>(from.info.gpsLatitude); }},
    {"gps", "gpsLongitudeRef",
     [](Value& out, const Source& from) { out.text(letter(from.info.gpsLongitudeRef)); }},
    {"gps", "gpsLongitude",
     [](Value& out, const Source& from) { out.fractions<uint32_t>(from.info.gpsLongitude); }},
    {"gps", "gpsAltitudeRef",
     [](Value& out, const Source& from) {
       const bool known = from.info.gpsAltitude[1] != 0 || from.info.gpsAltitudeRef != 0;
       known ? out.number(from.info.gpsAltitudeRef) : out.none();
     }},
    {"gps", "gpsAltitude",
     [](Value& out, const Source& from) { out.fractions<uint32_t>(from.info.gpsAltitude); }},
    {"gps", "gpsTimeStamp",
     [](Value& out, const Source& from) { out.fractions<uint32_t>(from.info.gpsTimeStamp); }},
    {"gps", "gpsDateStamp",
     [](Value& out, const Source& from) { out.text(textOf(from.info.gpsDateStamp)); }},
};

std::string nameOf(const Field& field) {
  std::string name(field.group);
  if (!name.empty()) name += '.';
  return name.append(field.name);
}

// Each field once, those of a group together.
Fields grouped(const Fields& fields) {
  Fields grouped;
  for (const Field* field : fields) {
    if (std::find(grouped.begin(), grouped.end(), field) != grouped.end()) continue;
    const auto last = std::find_if(grouped.rbegin(), grouped.rend(), [&](const Field* before) {
      return !field->group.empty() && before->group == field->group;
    });
    grouped.insert(last == grouped.rend() ? grouped.end() : last.base(), field);
  }
  return grouped;
}

}  // namespace

Fields allFields() {
  Fields fields;
  for (const Field& field : kFields) {
    if (&field != errorField()) fields.push_back(&field);
  }
  return fields;
}

Fields errorFields() {
  return {&kFields[0], &kFields[1], &kFields[2]};
}

const Field* errorField() {
  return &kFields[2];
}

Fields findFields(std::string_view name) {
  Fields found;
  for (const Field& field : kFields) {
    if (nameOf(field) == name || (field.group == name && !name.empty())) found.push_back(&field);
  }
  return found;
}

std::string fieldNames() {
  std::string names;
  for (const Field& field : kFields) names += (names.empty() ? "" : ", ") + nameOf(field);
  return names;
}

ReportLine::ReportLine(Format format, const Fields& fields) : format_(format), end_("\n") {
  if (format == Format::csv) {
    for (const Field* field : fields) places_.push_back({places_.empty() ? "" : ",", field});
    return;
  }
  std::string_view group;
  for (const Field* field : grouped(fields)) {
    std::string before;
    if (field->group != group && !group.empty()) before += '}';
    before += places_.empty() ? '{' : ',';
    if (field->group != group && !field->group.empty()) {
      before.append("\"").append(field->group).append("\":{");
    }
    group = field->group;
    before.append("\"").append(field->name).append("\":");
    places_.push_back({std::move(before), field});
  }
  end_ = group.empty() ? "}\n" : "}}\n";
}

void ReportLine::append(std::string& out, const FileReport& file) const {
  const Source source(file);
  Value value(out, format_ == Format::json);
  for (const auto& [before, field] : places_) {
    out += before;
    field->write(value, source);
  }
  out += end_;
}

void appendCsvHeader(std::string& out, const Fields& fields) {
  for (std::size_t i = 0; i < fields.size(); ++i) {
    out.append(i == 0 ? "" : ",").append(nameOf(*fields[i]));
  }
  out += '\n';
}

}  // namespace lfmeta
