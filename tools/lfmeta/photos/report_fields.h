// One photograph's metadata for a program: the table of fields, as a JSON object or as a row of
// comma-separated values.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "photos/read_report.h"

namespace lfmeta {

// What has become of a file. A file that fails has a failure, and a report as far as it was read;
// without one, only errorFields mean something.
struct FileReport {
  const std::string& path;
  const PhotoReport* report;
  std::string_view failure;
};

struct Field;
using Fields = std::vector<const Field*>;

// All but "error".
Fields allFields();
Fields errorFields();  // those of a file of which nothing is known but its failure
const Field* errorField();
// The fields of that name, several for a group of them ("gps"); none when there is no such name.
Fields findFields(std::string_view name);
std::string fieldNames();  // for a person

void appendCsvHeader(std::string& out, const Fields& fields);

// What is written of each file, with its line feed: the fields' values between texts that are the
// same for all files. In JSON each field stands once, and those of a group in an object of their
// own where the first of them is named.
class ReportLine {
 public:
  enum class Format { json, csv };
  ReportLine(Format format, const Fields& fields);

  void append(std::string& out, const FileReport& file) const;

 private:
  struct Place {
    std::string before;
    const Field* field;
  };

  Format format_;
  std::vector<Place> places_;
  std::string end_;
};

}  // namespace lfmeta
