// The changes that lfmeta settings makes, to photographs and to files of XMP text.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/output.h"
#include "commands/settings_options.h"

namespace lfmeta {

inline constexpr int kLastSetNumber = 99;

// All throw Failure with the file as it was.

// A new file of XMP text with the settings alone; a JPEG or TIFF photograph that is there gets them
// instead of those that it has, and keeps the rest of its packet.
void writeSettings(const Output& out, const SettingsOptions& settings);

// One more set of settings before the others, by default with the next number. The number of a set
// that is there is refused.
void insertSettings(const std::string& path, const SettingsOptions& settings,
                    std::optional<int> number);

// Other values for elements of a set, by default of the first one.
void editSettings(const std::string& path, const std::vector<std::string>& assignments,
                  std::optional<int> number);

}  // namespace lfmeta
