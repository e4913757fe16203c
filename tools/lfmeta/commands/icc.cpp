// lfmeta icc: the ICC profile of a TIFF file, shown or set.
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

#include "base/failure.h"
#include "base/report.h"
#include "commands/commands.h"
#include "photos/icc_profile.h"

namespace lfmeta {

namespace {

struct Options {
  std::string file;
  std::optional<std::string> profile;
  bool json = false;
};

std::string trimmed(std::string_view letters) {
  return std::string(letters.substr(0, letters.find_last_not_of(' ') + 1));
}

int showProfile(const Options& options) {
  const std::optional<IccProfile> profile = readTiffProfile(options.file);
  if (options.json) {
    Json all{{"file", options.file}, {"profile", nullptr}};
    if (profile) {
      all["profile"] = {{"description", profile->description()},
                        {"version", profile->version()},
                        {"deviceClass", profile->deviceClass()},
                        {"colourSpace", trimmed(profile->colourSpace())},
                        {"size", profile->bytes.size()}};
    }
    std::printf("%s\n", jsonLine(all).c_str());
    return kSuccess;
  }
  if (!profile) throw Failure(options.file, "has no ICC profile; --set gives it one");
  const std::string description = profile->description();
  std::printf("%s\n  Profile  %s\n  Kind     %s, %s, version %s\n  Size     %zu bytes\n",
              printable(options.file).c_str(),
              description.empty() ? "without a name" : printable(description).c_str(),
              printable(trimmed(profile->colourSpace())).c_str(),
              printable(profile->deviceClass()).c_str(), profile->version().c_str(),
              profile->bytes.size());
  return kSuccess;
}

int showOrSetProfile(const Options& options) {
  if (!options.profile) return showProfile(options);
  if (options.file == "-") {
    throw UsageFailure("icc --set", "changes a file where it lies; standard input is none");
  }
  setTiffProfile(options.file, readProfile(*options.profile), *options.profile);
  return kSuccess;
}

}  // namespace

void addIccCommand(CLI::App& app, Run& chosen) {
  CLI::App* command = app.add_subcommand("icc", "Show or set the ICC profile of a TIFF file");
  const auto options = std::make_shared<Options>();
  command->add_option("FILE.tif", options->file, "A TIFF file; of several images, the first")
      ->type_name("")
      ->required();
  command
      ->add_option("--set", options->profile, "ICC profile that the file gets, instead of its own")
      ->type_name("FILE");
  command->add_flag("--json", options->json, "One JSON object")->excludes("--set");
  runWhenAsked(*command, chosen, options, showOrSetProfile);
}

}  // namespace lfmeta
