// Photographs as lfmeta read tells of them: a line of JSON, a row, and a text that no terminal minds.
#include "fuzzing.h"

#include "base/failure.h"
#include "base/json.h"
#include "photos/bracket_sets.h"
#include "photos/report_fields.h"

void fuzz::check(std::string input) {
  using namespace lfmeta;
  MemoryFile file(input);
  const std::string path = file.path();
  try {
    PhotoFile photo(path);
    const std::optional<PhotoReport> report = readPhotoReport(photo);
    if (!report) return;
    requireTexts(report->record.info);
    std::string line;
    ReportLine(ReportLine::Format::json, allFields()).append(line, {path, &*report, {}});
    require(line.find('\n') == line.size() - 1 && Json::parse(line)["file"] == path);
    std::string row;
    ReportLine(ReportLine::Format::csv, allFields()).append(row, {path, &*report, {}});
    require(row.find('\n') == row.size() - 1 && printable(row.substr(0, row.size() - 1)) + "\n" == row);
    std::string text = describeForPerson(path, *report);
    std::erase(text, '\n');
    require(printable(text) == text);
    const std::optional<Shot> shot = shotOf(path, *report);
    if (shot) require(findBrackets({*shot, *shot}, 2).empty());
  } catch (const Failure& failure) {
    require(failure.what()[0] != '\0');
  }
}
