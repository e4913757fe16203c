// lfmeta brackets: the exposure brackets among the photographs of folders, ready to be merged.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "base/command_line.h"
#include "base/failure.h"
#include "base/in_order.h"
#include "base/json.h"
#include "base/json_text.h"
#include "base/line_output.h"
#include "base/report.h"
#include "commands/commands.h"
#include "photos/bracket_sets.h"
#include "photos/file_list.h"
#include "photos/progress.h"

namespace lfmeta {

namespace {

constexpr std::size_t kFilesAUnit = 32;

struct Options {
  FileList::Options files;
  bool json = false;
  double longestGap = 2;
  unsigned jobs = std::max(1U, std::thread::hardware_concurrency());
};

struct Found {
  std::vector<Shot> shots;
  std::size_t photographs = 0;
  std::vector<Failure> failures;
};

void readFile(const ListedFile& listed, Found& found) {
  try {
    if (!listed.failure.empty()) throw Failure(listed.path, listed.failure);
    PhotoFile file(listed.path);
    const std::optional<PhotoReport> report = readPhotoReport(file);
    if (!report && listed.named) throw Failure(listed.path, kNoPhoto);
    if (!report) return;
    ++found.photographs;
    if (auto shot = shotOf(listed.path, *report)) found.shots.push_back(std::move(*shot));
    if (report->record.damage != nullptr) throw Failure(listed.path, report->record.damage);
  } catch (const Failure& failure) {
    found.failures.push_back(failure);
  }
}

Found readShots(const Options& options) {
  Found all;
  FileList list(options.files);
  Progress progress;
  const auto next = [&]() -> std::optional<std::vector<ListedFile>> {
    auto files = list.take(kFilesAUnit, [] {});
    if (files.empty()) return std::nullopt;
    return files;
  };
  const auto work = [](const std::vector<ListedFile>& files) {
    Found found;
    for (const ListedFile& file : files) readFile(file, found);
    return std::pair(std::move(found), files.size());
  };
  const auto take = [&](std::pair<Found, std::size_t>& result) {
    auto& [found, files] = result;
    std::move(found.shots.begin(), found.shots.end(), std::back_inserter(all.shots));
    all.photographs += found.photographs;
    for (const Failure& failure : found.failures) {
      progress.clear();
      printFailure(failure.file(), failure.what());
      all.failures.push_back(failure);
    }
    progress.add(files);
  };
  workInOrder(options.jobs, next, work, take);
  return all;
}

std::string shortest(double number, bool sign = false) {
  std::string text = sign && number > 0 ? "+" : "";
  appendNumber(text, number + 0.0);  // no negative zero
  return text;
}

std::string listOf(const std::vector<double>& numbers) {
  std::string text;
  for (const double number : numbers) text += (text.empty() ? "" : ", ") + shortest(number);
  return text;
}

std::string describe(const BracketSet& set, std::size_t number) {
  constexpr std::size_t kEvWidth = 10;
  constexpr std::size_t kExposureWidth = 26;
  const Shot& first = *set.frames.front();
  std::string text = "Set " + std::to_string(number) + ": " + std::to_string(set.frames.size()) +
                     " frames from " + printable(first.takenText) + ", steps of " +
                     listOf(set.steps) + " EV, gaps of " + listOf(set.gaps) + " s\n";
  const std::string camera = first.model.empty() ? first.make : first.model;
  if (!camera.empty() || !first.lens.empty()) {
    text += "  " + printable(camera) + (camera.empty() || first.lens.empty() ? "" : ", ") +
            printable(first.lens) + "\n";
  }
  for (std::size_t i = 0; i < set.frames.size(); ++i) {
    const Shot& frame = *set.frames[i];
    std::string ev = shortest(set.ev[i], true) + " EV";
    std::string exposure = exposureText(frame.exposureTime) + " s";
    if (frame.fNumber > 0)
      exposure += ", f/" + shortest(static_cast<double>(std::round(frame.fNumber * 10)) / 10);
    if (frame.iso > 0) exposure += ", ISO " + std::to_string(frame.iso);
    ev.resize(std::max(ev.size() + 1, kEvWidth), ' ');
    exposure.resize(std::max(exposure.size() + 1, kExposureWidth), ' ');
    text.append("  ").append(ev).append(exposure).append(printable(frame.file)).append("\n");
  }
  for (const std::string& reason : set.odd) text += "  odd: " + reason + "\n";
  return text;
}

Json numberOrNull(float number) {
  return number > 0 ? jsonNumber(number) : Json();
}

std::string describeAsJson(const BracketSet& set, std::size_t number) {
  const Shot& first = *set.frames.front();
  const auto [darkest, brightest] = std::minmax_element(set.ev.begin(), set.ev.end());
  Json frames = Json::array();
  for (std::size_t i = 0; i < set.frames.size(); ++i) {
    const Shot& frame = *set.frames[i];
    Json told = jsonOfFile(frame.file);
    told.update({{"ev", set.ev[i] + 0.0},
                 {"exposureTime", jsonNumber(frame.exposureTime)},
                 {"exposureText", exposureText(frame.exposureTime)},
                 {"fNumber", numberOrNull(frame.fNumber)},
                 {"iso", frame.iso > 0 ? Json(frame.iso) : Json()},
                 {"exposureBias", frame.exposureBias ? jsonNumber(*frame.exposureBias) : Json()}});
    frames.push_back(std::move(told));
  }
  return jsonLine({{"set", number},
                   {"count", set.frames.size()},
                   {"range", *brightest - *darkest},
                   {"steps", set.steps},
                   {"gaps", set.gaps},
                   {"odd", set.odd.empty() ? Json() : Json(set.odd)},
                   {"automaticBracket", first.automatic},
                   {"make", textOrNull(first.make)},
                   {"model", textOrNull(first.model)},
                   {"serialNumber", textOrNull(first.serialNumber)},
                   {"lens", textOrNull(first.lens)},
                   {"taken", first.takenText},
                   {"reference", set.frames[set.reference]->file},
                   {"frames", frames}}) +
         "\n";
}

std::string summary(const Found& found, std::size_t sets, std::size_t frames) {
  const std::size_t without = found.photographs - found.shots.size();
  std::string text = std::to_string(sets) + (sets == 1 ? " set of " : " sets of ") +
                     std::to_string(frames) + " photographs; " +
                     std::to_string(found.photographs - frames) + " in none";
  if (without > 0) {
    text += ", " + std::to_string(without) + " of them without capture or exposure time";
  }
  return text + "\n";
}

int showBrackets(const Options& options) {
  setenv("TZ", "UTC0", 1);  // a camera's clock has no time zone, and jumps at none
  const Found found = readShots(options);
  const std::vector<BracketSet> sets = findBrackets(found.shots, options.longestGap);
  LineOutput output;
  std::size_t frames = 0;
  for (std::size_t i = 0; i < sets.size(); ++i) {
    output.add(options.json ? describeAsJson(sets[i], i + 1) : describe(sets[i], i + 1));
    frames += sets[i].frames.size();
  }
  if (!options.json) output.add(summary(found, sets.size(), frames));
  output.flush();
  return found.failures.empty() ? kSuccess : kFailure;
}

}  // namespace

void addBracketsCommand(CLI::App& app, Run& chosen) {
  CLI::App* command =
      app.add_subcommand("brackets", "Find the exposure brackets among photographs");
  const auto options = std::make_shared<Options>();
  options->files.recursive = true;
  command
      ->add_option("FOLDER", options->files.paths,
                   "Folders, which are searched with all below them, or photographs")
      ->type_name("")
      ->required();
  command->add_flag("--json", options->json, "One JSON object a set, on a line");
  command
      ->add_option("--gap", options->longestGap,
                   "Longest pause between two frames of a set, in seconds (2)")
      ->type_name("SECONDS")
      ->check(numberNotBelowZero());
  command->add_option("-j,--jobs", options->jobs, "Files read at the same time (one a processor)")
      ->type_name("N")
      ->transform(wholeNumber(1, 256));
  command->footer(
      "A set has frames of one folder, camera, lens, focal length, size and kind of file, each "
      "with "
      "another exposure, taken one after the other; the pause counts from the end of an "
      "exposure. EV is the difference in brightness against the reference: the frame without "
      "exposure bias, else the middle one.");
  runWhenAsked(*command, chosen, options, showBrackets);
}

}  // namespace lfmeta
