// lfmeta read: what photographs say about themselves.
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "base/command_line.h"
#include "base/failure.h"
#include "base/report.h"
#include "commands/commands.h"
#include "photos/read_report.h"
#include "photos/thumbnail.h"

namespace lfmeta {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kStretch = 128;  // files whose reports are held at a time

struct Options {
  std::vector<std::string> paths;
  bool recursive = false;
  bool json = false;
  std::string thumbnails;
  unsigned jobs = std::max(1U, std::thread::hardware_concurrency());
};

struct File {
  std::string path;
  bool named;  // on the command line; a file found below a folder need not be a photograph
};

// The files below a folder, in the order of their paths.
std::vector<std::string> filesBelow(const std::string& folder) {
  std::vector<std::string> files;
  std::error_code error;
  for (fs::recursive_directory_iterator
           at(folder, fs::directory_options::skip_permission_denied, error),
       end;
       !error && at != end; at.increment(error)) {
    std::error_code unknown;
    if (at->is_regular_file(unknown)) files.push_back(at->path().string());
  }
  if (error) throw Failure(folder, "cannot be listed: " + error.message());
  std::sort(files.begin(), files.end());
  return files;
}

// The files named, folders replaced by what is below them.
int collect(const Options& options, std::vector<File>& files) {
  int status = kSuccess;
  for (const std::string& path : options.paths) {
    std::error_code unknown;
    if (!options.recursive || !fs::is_directory(path, unknown)) {
      files.push_back({path, true});
      continue;
    }
    status = std::max(status, runReportingFailure([&] {
                        for (std::string& below : filesBelow(path)) {
                          files.push_back({std::move(below), false});
                        }
                        return kSuccess;
                      }));
  }
  return status;
}

// What has become of one file: nothing of a file below a folder that is no photograph.
struct Outcome {
  std::optional<PhotoReport> report;
  std::string text;
  std::optional<Failure> failure;
};

Outcome readOne(const File& file, bool json) {
  const std::string& path = file.path;
  Outcome outcome;
  try {
    outcome.report = readPhotoReport(path);
    if (outcome.report) {
      outcome.text =
          json ? describeAsJson(path, *outcome.report) : describeForPerson(path, *outcome.report);
      if (const char* damage = outcome.report->record.damage) {
        outcome.failure = Failure(path, damage);
      }
    } else if (file.named) {
      outcome.failure = Failure(path, kNoPhoto);
    }
  } catch (const Failure& failure) {
    outcome.failure = failure;
  } catch (const std::exception& error) {
    outcome.failure = Failure(path, error.what());
  }
  return outcome;
}

// Shows how far the work is where a person waits: many files, and a terminal that is not the one
// that the report goes to.
class Progress {
 public:
  explicit Progress(std::size_t total)
      : total_(total),
        shown_(total > kManyFiles && isatty(STDERR_FILENO) != 0 && isatty(STDOUT_FILENO) == 0) {}
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress() {
    if (shown_) std::fputs("\r\033[K", stderr);
  }
  void show(std::size_t done) const {
    if (shown_ && done % kStretch == 0) std::fprintf(stderr, "\r%zu of %zu files", done, total_);
  }

 private:
  static constexpr std::size_t kManyFiles = 300;
  std::size_t total_;
  bool shown_;
};

// Reads all files with the given number of threads, a stretch of files at a time so that memory
// does not grow with their number, and hands the outcomes on in the order of the files.
template <typename Take>
void readAll(const std::vector<File>& files, const Options& options, const Take& take) {
  std::vector<Outcome> outcomes(std::min(files.size(), kStretch));
  for (std::size_t first = 0; first < files.size(); first += kStretch) {
    const std::size_t count = std::min(kStretch, files.size() - first);
    std::atomic<std::size_t> next = 0;
    const auto work = [&] {
      for (std::size_t i = next++; i < count; i = next++) {
        outcomes[i] = readOne(files[first + i], options.json);
      }
    };
    {
      std::vector<std::jthread> helpers;
      try {
        while (helpers.size() + 1 < std::min<std::size_t>(options.jobs, count)) {
          helpers.emplace_back(work);
        }
      } catch (const std::system_error&) {
        // No more threads are to be had; those that there are do the work.
      }
      work();
    }
    for (std::size_t i = 0; i < count; ++i) take(first + i, outcomes[i]);
  }
}

int report(const Outcome& outcome, const std::string& path, const std::string& thumbnails) {
  std::fwrite(outcome.text.data(), 1, outcome.text.size(), stdout);
  if (outcome.report && !thumbnails.empty()) {
    writeThumbnail(thumbnails, path, outcome.report->record);
  }
  if (outcome.failure) throw Failure(*outcome.failure);
  return kSuccess;
}

int readPhotos(const Options& options) {
  std::vector<File> files;
  int status = collect(options, files);
  const Progress progress(files.size());
  readAll(files, options, [&](std::size_t index, const Outcome& outcome) {
    status = std::max(status, runReportingFailure([&] {
                        return report(outcome, files[index].path, options.thumbnails);
                      }));
    progress.show(index + 1);
  });
  return status;
}

}  // namespace

void addReadCommand(CLI::App& app, Run& chosen) {
  CLI::App* command = app.add_subcommand("read", "Show the metadata of photographs");
  const auto options = std::make_shared<Options>();
  command->add_option("FILE", options->paths, "JPEG, TIFF or PSD images, or folders with -r")
      ->type_name("")
      ->required();
  command->add_flag("-r,--recursive", options->recursive, "Read all photographs below folders");
  command->add_flag("--json", options->json, "One JSON object a line");
  command->add_option("--thumbnail", options->thumbnails, "Write embedded thumbnails into DIR")
      ->type_name("DIR")
      ->check(CLI::ExistingDirectory);
  command->add_option("-j,--jobs", options->jobs, "Files read at the same time (one a processor)")
      ->type_name("N")
      ->transform(wholeNumber(1, 256));
  runWhenAsked(*command, chosen, options, readPhotos);
}

}  // namespace lfmeta
