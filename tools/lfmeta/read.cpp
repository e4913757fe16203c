// lfmeta read: what photographs say about themselves.
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "commands.h"
#include "failure.h"
#include "photo_type.h"
#include "read_report.h"
#include "report.h"
#include "thumbnail.h"

namespace {

namespace fs = std::filesystem;

struct Options {
  std::vector<std::string> paths;
  bool recursive = false;
  bool json = false;
  std::string thumbnails;
  unsigned jobs = 1;
};

// The photographs below a folder, in the order of their paths. Other files there are no failures.
std::vector<std::string> photosBelow(const std::string& folder) {
  std::vector<std::string> photos;
  std::error_code error;
  for (fs::recursive_directory_iterator
           at(folder, fs::directory_options::skip_permission_denied, error),
       end;
       !error && at != end; at.increment(error)) {
    std::error_code unknown;
    if (at->is_regular_file(unknown) && findPhotoType(at->path().string())) {
      photos.push_back(at->path().string());
    }
  }
  if (error) {
    throw Failure(folder, "cannot be listed: " + error.message());
  }
  std::sort(photos.begin(), photos.end());
  return photos;
}

// The files named, folders replaced by what is below them.
int collect(const Options& options, std::vector<std::string>& files) {
  int status = kSuccess;
  for (const std::string& path : options.paths) {
    std::error_code unknown;
    if (!fs::is_directory(path, unknown)) {
      files.push_back(path);
      continue;
    }
    status = std::max(status, runReportingFailure([&] {
                        if (!options.recursive) {
                          throw Failure(path, "is a folder; add -r to read what is below it");
                        }
                        const std::vector<std::string> below = photosBelow(path);
                        files.insert(files.end(), below.begin(), below.end());
                      }));
  }
  return status;
}

// What has become of one file.
struct Outcome {
  std::optional<PhotoReport> report;
  std::string text;
  std::optional<Failure> failure;
};

Outcome readOne(const std::string& path, bool json) {
  Outcome outcome;
  try {
    outcome.report = readPhotoReport(path);
    outcome.text =
        json ? describeAsJson(path, *outcome.report) : describeForPerson(path, *outcome.report);
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
    if (shown_) {
      std::fputs("\r\033[K", stderr);
    }
  }
  void show(std::size_t done) const {
    if (shown_ && done % kStep == 0) {
      std::fprintf(stderr, "\r%zu of %zu files", done, total_);
    }
  }

 private:
  static constexpr std::size_t kManyFiles = 300;
  static constexpr std::size_t kStep = 50;
  std::size_t total_;
  bool shown_;
};

// Reads all files with the given number of threads, a stretch of files at a time so that memory
// does not grow with their number, and hands the outcomes on in the order of the files.
template <typename Take>
void readAll(const std::vector<std::string>& files, const Options& options, const Take& take) {
  constexpr std::size_t kStretch = 256;
  std::vector<Outcome> outcomes(std::min(files.size(), kStretch));
  for (std::size_t first = 0; first < files.size(); first += kStretch) {
    const std::size_t count = std::min(kStretch, files.size() - first);
    std::atomic<std::size_t> next = 0;
    const auto work = [&] {
      for (std::size_t i = next++; i < count; i = next++) {
        outcomes[i] = readOne(files[first + i], options.json);
      }
    };
    std::vector<std::thread> helpers;
    for (unsigned i = 1; i < std::min<std::size_t>(options.jobs, count); ++i) {
      helpers.emplace_back(work);
    }
    work();
    for (std::thread& helper : helpers) {
      helper.join();
    }
    for (std::size_t i = 0; i < count; ++i) {
      take(first + i, outcomes[i]);
    }
  }
}

int readPhotos(const Options& options) {
  std::vector<std::string> files;
  int status = collect(options, files);
  const Progress progress(files.size());
  readAll(files, options, [&](std::size_t index, const Outcome& outcome) {
    progress.show(index);
    status = std::max(status, runReportingFailure([&] {
                        if (outcome.failure) {
                          throw Failure(*outcome.failure);
                        }
                        std::fwrite(outcome.text.data(), 1, outcome.text.size(), stdout);
                        if (!options.thumbnails.empty()) {
                          writeThumbnail(options.thumbnails, files[index], outcome.report->record);
                        }
                      }));
  });
  return status;
}

}  // namespace

void addReadCommand(CLI::App& app, int& exitStatus) {
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
  command->add_option("-j,--jobs", options->jobs, "Files read at the same time (1)")
      ->type_name("N")
      ->check(CLI::Range(1U, 256U));
  command->callback([options, &exitStatus] { exitStatus = readPhotos(*options); });
}
