// lfmeta icc: the ICC profile of a TIFF file, shown or replaced.
#include <LumenforgeMetaLib.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string>

#include "base/failure.h"
#include "base/report.h"
#include "base/whole_file.h"
#include "commands/commands.h"
#include "photos/icc_profile.h"

namespace lfmeta {

namespace {

struct Options {
  std::string file;
  std::optional<std::string> profile;
};

void showProfile(const std::string& path) {
  const std::optional<Bytes> profile = readTiffProfile(path);
  if (!profile) throw Failure(path, "has no ICC profile");
  char name[32];
  const int known = get_profile_name(static_cast<int>(profile->size()), profile->data(), name);
  std::printf("%s\n  Profile  %s\n  Size     %zu bytes\n", printable(path).c_str(),
              known < 0 ? "without a name" : printable(textOf(name)).c_str(), profile->size());
}

void setProfile(const std::string& path, const std::string& profilePath) {
  const Bytes profile = readForLibrary(profilePath);
  if (profile.empty()) throw Failure(profilePath, "is empty");
  if (access(path.c_str(), R_OK | W_OK) != 0) {
    throw Failure(path, std::string("cannot be changed: ") + std::strerror(errno));
  }
  const int result =
      update_tif_profile(static_cast<int>(profile.size()), profile.data(), path.c_str());
  if (result == 0) {
    throw Failure(path,
                  "is no little-endian TIFF file with a profile entry, and an entry is never "
                  "added; nothing is changed");
  }
  if (result < 0) {
    throw Failure(path, "cannot be changed (is there room on the disk?); it is as it was");
  }
}

int showOrSetProfile(const Options& options) {
  if (options.profile) {
    setProfile(options.file, *options.profile);
  } else {
    showProfile(options.file);
  }
  return kSuccess;
}

}  // namespace

void addIccCommand(CLI::App& app, Run& chosen) {
  CLI::App* command = app.add_subcommand("icc", "Show or replace the ICC profile of a TIFF file");
  const auto options = std::make_shared<Options>();
  command->add_option("FILE.tif", options->file, "A little-endian TIFF file")
      ->type_name("")
      ->required();
  command->add_option("--set", options->profile, "File whose ICC profile replaces the present one")
      ->type_name("FILE");
  runWhenAsked(*command, chosen, options, showOrSetProfile);
}

}  // namespace lfmeta
