// What goes into a finished file beside its pixels, as the options of the command line ask for it.
#pragma once

#include <LumenforgeMetaLib.h>

#include <optional>
#include <string>
#include <vector>

#include "base/cli_fwd.h"
#include "base/whole_file.h"
#include "commands/settings_options.h"
#include "photos/icc_profile.h"

namespace lfmeta {

struct FinishedMetadata {
  MetadataBuf meta{};
  GpsBuf gps{};
  int orientation = 0;  // of the photograph; 0 when it says nothing
  Bytes iptc;
  Bytes xmp;
  int method = 0;
  SettingsParams settings{};
  IccProfile profile;
  std::string notTaken;  // of the photograph, for a person; empty when all is
};

// The options --like, --keyword, --icc, --method and --set.
struct FinishedMetadataOptions {
  std::optional<std::string> photo;
  std::vector<std::string> keywords;
  std::optional<std::string> profile;
  SettingsOptions settings;

  void addTo(CLI::App& command);
  // Throws Failure.
  FinishedMetadata read() const;
  // The profile asked for or, where there is none, that of the picture if it fits its colours.
  // Throws Failure when the one asked for does not.
  void fitProfile(FinishedMetadata& finished, Bytes ofPicture, bool gray) const;
};

}  // namespace lfmeta
