// The options --method and --set, as every command takes them that writes settings.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/cli_fwd.h"

namespace lfmeta {

struct SettingsOptions {
  std::optional<std::string> method;
  std::vector<std::string> assignments;

  // Returns the option --method.
  CLI::Option* addTo(CLI::App& command);
  // The option --set alone.
  CLI::Option* addAssignmentsTo(CLI::App& command, const std::string& help);
  // Fills the record; returns the number of the method, or 0 when none was asked for. Throws
  // Failure.
  int read(float* params) const;
};

}  // namespace lfmeta
