// lfmeta read: what photographs say about themselves.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "base/command_line.h"
#include "base/failure.h"
#include "base/in_order.h"
#include "base/line_output.h"
#include "base/report.h"
#include "commands/commands.h"
#include "photos/file_list.h"
#include "photos/progress.h"
#include "photos/read_report.h"
#include "photos/report_fields.h"
#include "photos/thumbnail.h"

namespace lfmeta {

namespace {

constexpr std::size_t kMostFilesAUnit = 32;

struct Options {
  FileList::Options files;
  bool json = false;
  bool csv = false;
  bool errorsAsJson = false;
  std::vector<std::string> fields;
  std::string thumbnails;
  unsigned jobs = std::max(1U, std::thread::hardware_concurrency());
};

using Files = std::vector<ListedFile>;

struct FailedFile {
  std::string path;
  std::string message;
  std::size_t before;  // bytes of the unit's text that come before it
};

// What has become of a few files that stand together.
struct Outcome {
  std::size_t files = 0;
  std::string text;
  std::vector<FailedFile> failures;  // for standard error
  bool failed = false;
};

class Reading {
 public:
  explicit Reading(const Options& options)
      : options_(options), list_(options.files), line_(formatOf(options), chosenFields(options)) {
    if (!options.thumbnails.empty()) thumbnails_.emplace(options.thumbnails);
  }

  int run() {
    if (options_.csv) {
      std::string header;
      appendCsvHeader(header, chosenFields(options_));
      output_.add(header);
    }
    const auto next = [this] { return nextFiles(); };
    const auto work = [this](const Files& files) { return readFiles(files); };
    const auto take = [this](const Outcome& outcome) { show(outcome); };
    workInOrder(options_.jobs, next, work, take);
    output_.flush();
    return status_;
  }

 private:
  static ReportLine::Format formatOf(const Options& options) {
    return options.csv ? ReportLine::Format::csv : ReportLine::Format::json;
  }

  static Fields chosenFields(const Options& options) {
    Fields fields;
    for (const std::string& name : options.fields) {
      for (const Field* field : findFields(name)) fields.push_back(field);
    }
    if (options.fields.empty()) fields = allFields();
    if (options.errorsAsJson) fields.push_back(errorField());
    return fields;
  }

  std::optional<Files> nextFiles() {
    const std::size_t named = options_.files.paths.size();
    const bool few = !options_.files.recursive && !options_.files.namesIn &&
                     named < kMostFilesAUnit * options_.jobs * 4;
    const std::size_t most =
        few ? std::max<std::size_t>(named / (options_.jobs * 4), 1) : kMostFilesAUnit;
    Files files = list_.take(most, [this] { output_.flush(); });
    if (files.empty()) return std::nullopt;
    return files;
  }

  Outcome readFiles(const Files& files) {
    Outcome outcome;
    outcome.files = files.size();
    for (const ListedFile& file : files) {
      if (file.failure.empty()) {
        readFile(file, outcome);
      } else {
        addFailure(outcome, file.path, nullptr, file.failure);
      }
    }
    return outcome;
  }

  void readFile(const ListedFile& listed, Outcome& outcome) {
    std::optional<PhotoReport> report;
    try {
      PhotoFile file(listed.path);
      report = readPhotoReport(file);
      if (!report && listed.named) throw Failure(listed.path, kNoPhoto);
      if (!report) return;
      if (thumbnails_) report->thumbnailFile = thumbnails_->write(file, report->record.info);
      if (report->record.damage != nullptr) throw Failure(listed.path, report->record.damage);
      describe(outcome.text, {listed.path, &*report, {}});
    } catch (const Failure& failure) {
      std::string message = failure.what();
      if (failure.file() != listed.path) message = failure.file() + ": " + message;  // a thumbnail
      std::error_code unknown;
      if (std::filesystem::is_directory(listed.path, unknown)) {
        message += "; -r reads what is below it";
      }
      addFailure(outcome, listed.path, report ? &*report : nullptr, message);
    } catch (const std::exception& error) {
      addFailure(outcome, listed.path, report ? &*report : nullptr, error.what());
    }
  }

  // What was read of the file is told in any case.
  void addFailure(Outcome& outcome, const std::string& path, const PhotoReport* report,
                  const std::string& message) const {
    outcome.failed = true;
    if (report != nullptr) {
      describe(outcome.text, {path, report, message});
    } else if (options_.errorsAsJson) {
      errorLine_.append(outcome.text, {path, nullptr, message});
    }
    if (!options_.errorsAsJson) outcome.failures.push_back({path, message, outcome.text.size()});
  }

  void describe(std::string& out, const FileReport& file) const {
    if (options_.json || options_.csv) {
      line_.append(out, file);
    } else {
      out += describeForPerson(file.path, *file.report);
    }
  }

  void show(const Outcome& outcome) {
    std::string_view rest = outcome.text;
    std::size_t shown = 0;
    for (const FailedFile& failure : outcome.failures) {
      output_.add(rest.substr(shown, failure.before - shown));
      shown = failure.before;
      output_.flush();
      progress_.clear();
      printFailure(failure.path, failure.message);
    }
    output_.add(rest.substr(shown));
    if (outcome.failed) status_ = kFailure;
    if (list_.isWaiting()) output_.flush();
    progress_.add(outcome.files);
  }

  const Options& options_;
  FileList list_;
  ReportLine line_;
  ReportLine errorLine_{ReportLine::Format::json, errorFields()};
  std::optional<ThumbnailFolder> thumbnails_;
  LineOutput output_;
  Progress progress_;
  int status_ = kSuccess;
};

int readPhotos(const Options& options) {
  const auto& paths = options.files.paths;
  if (paths.empty() && !options.files.namesIn)
    throw UsageFailure("read", "needs a FILE, or --files0-from LIST");
  if (options.files.namesIn == "-" && std::find(paths.begin(), paths.end(), "-") != paths.end()) {
    throw UsageFailure("read", "can have a photograph or a list from standard input, not both");
  }
  if (!options.fields.empty() && !options.json && !options.csv) {
    throw UsageFailure("--fields", "needs --json or --csv");
  }
  return Reading(options).run();
}

CLI::Validator fieldName() {
  return CLI::Validator(
      [](std::string& name) {
        return findFields(name).empty() ? name + " is no field; the fields are " + fieldNames()
                                        : std::string();
      },
      "");
}

}  // namespace

void addReadCommand(CLI::App& app, Run& chosen) {
  CLI::App* command = app.add_subcommand("read", "Show the metadata of photographs");
  const auto options = std::make_shared<Options>();
  CLI::Option* files = command->add_option("FILE", options->files.paths,
                                           "JPEG, TIFF or PSD images; folders with -r; - is "
                                           "standard input");
  files->type_name("");
  command->add_flag("-r,--recursive", options->files.recursive,
                    "Read all photographs below folders");
  CLI::Option* json = command->add_flag("--json", options->json, "One JSON object a line");
  command->add_flag("--csv", options->csv, "Comma-separated values under a line of names")
      ->excludes(json);
  command
      ->add_option("--fields", options->fields,
                   "Only these fields, in this order (--json and --csv)")
      ->delimiter(',')
      ->allow_extra_args(false)
      ->allow_extra_args(false)
      ->type_name("A,B,...")
      ->check(fieldName());
  command
      ->add_flag("--errors-as-json", options->errorsAsJson,
                 "A file that fails is a line with an error, not one on standard error")
      ->needs(json);
  command
      ->add_option("--files0-from", options->files.namesIn,
                   "Also the files named in LIST, each name ending in NUL; - is standard input")
      ->type_name("LIST");
  command
      ->add_option("--thumbnail", options->thumbnails,
                   "Write embedded thumbnails below DIR, under the photographs' paths")
      ->type_name("DIR");
  command->add_option("-j,--jobs", options->jobs, "Files read at the same time (one a processor)")
      ->type_name("N")
      ->transform(wholeNumber(1, 256));
  runWhenAsked(*command, chosen, options, readPhotos);
}

}  // namespace lfmeta
