// The parts of the man page that follow from the options (mdoc).
#pragma once

#include <string>

#include "base/command_description.h"

namespace lfmeta {

std::string manualSynopsis(const CommandDescription& tool);
// One subsection a command: what it does, its arguments and its options.
std::string manualCommands(const CommandDescription& tool);

}  // namespace lfmeta
