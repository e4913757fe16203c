// Scripts that complete the command line in a shell.
#pragma once

#include <string>

#include "base/command_description.h"

namespace lfmeta {

std::string bashCompletion(const CommandDescription& tool);
std::string zshCompletion(const CommandDescription& tool);

}  // namespace lfmeta
