#include "commands/commands.h"

#include <CLI/CLI.hpp>

namespace lfmeta {

void runWhenAsked(CLI::App& command, Run& chosen, const Run& run) {
  command.callback([&chosen, run] { chosen = run; });
}

}  // namespace lfmeta
