// lfmeta icc: the ICC profile of a TIFF file, shown or set.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/failure.h"
#include "base/json.h"
#include "base/report.h"
#include "commands/commands.h"
#include "photos/icc_profile.h"

namespace lfmeta {

namespace {

struct Options {
  std::vector<std::string> files;
  std::optional<std::string> profile;
  bool json = false;
};

std::string trimmed(std::string_view letters) {
  return std::string(letters.substr(0, letters.find_last_not_of(' ') + 1));
}

void showProfile(const std::string& file, bool asJson) {
  const std::optional<IccProfile> profile = readTiffProfile(file);
  if (asJson) {
    Json all = jsonOfFile(file);
    all["profile"] = nullptr;
    if (profile) {
      all["profile"] = {{"description", profile->description()},
                        {"version", profile->version()},
                        {"deviceClass", profile->deviceClass()},
                        {"colourSpace", trimmed(profile->colourSpace())},
                        {"size", profile->bytes.size()}};
    }
    std::printf("%s\n", jsonLine(all).c_str());
    return;
  }
  if (!profile) throw Failure(file, "has no ICC profile; --set gives it one");
  const std::string description = profile->description();
  std::printf("%s\n  Profile  %s\n  Kind     %s, %s, version %s\n  Size     %zu bytes\n",
              printable(file).c_str(),
              description.empty() ? "without a name" : printable(description).c_str(),
              printable(trimmed(profile->colourSpace())).c_str(),
              printable(profile->deviceClass()).c_str(), profile->version().c_str(),
              profile->bytes.size());
}

int showOrSetProfiles(const Options& options) {
  const auto& files = options.files;
  if (!options.profile) {
    return runForEachFile(files, [&](const auto& file) { showProfile(file, options.json); });
  }
  if (std::find(files.begin(), files.end(), "-") != files.end()) {
    throw UsageFailure("icc --set", "changes a file where it lies; standard input is none");
  }
  const auto profile = readProfile(*options.profile);
  return runForEachFile(files,
                        [&](const auto& file) { setTiffProfile(file, profile, *options.profile); });
}

}  // namespace

void addIccCommand(CLI::App& app, Run& chosen) {
  CLI::App* command = app.add_subcommand("icc", "Show or set the ICC profile of TIFF files");
  const auto options = std::make_shared<Options>();
  command->add_option("FILE.tif", options->files, "TIFF files; of several images, the first")
      ->type_name("")
      ->required();
  command
      ->add_option("--set", options->profile, "ICC profile that the file gets, instead of its own")
      ->type_name("FILE");
  command->add_flag("--json", options->json, "One JSON object a file")->excludes("--set");
  runWhenAsked(*command, chosen, options, showOrSetProfiles);
}

}  // namespace lfmeta
