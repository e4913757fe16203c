// The subcommands, one file each. A command adds its options to the app; when it is the one that
// was asked for, parsing the command line chooses it to be run afterwards.
#pragma once

#include <functional>
#include <memory>

#include "base/cli_fwd.h"

namespace lfmeta {

// Returns the exit status; throws Failure.
using Run = std::function<int()>;

void addReadCommand(CLI::App& app, Run& chosen);
void addBracketsCommand(CLI::App& app, Run& chosen);
void addSettingsCommand(CLI::App& app, Run& chosen);
void addTiffCommand(CLI::App& app, Run& chosen);
void addIccCommand(CLI::App& app, Run& chosen);
void addExifCommand(CLI::App& app, Run& chosen);
void addHdrCommand(CLI::App& app, Run& chosen);
void addHelpCommand(CLI::App& app, Run& chosen);

void runWhenAsked(CLI::App& command, Run& chosen, const Run& run);
template <typename Options>
void runWhenAsked(CLI::App& command, Run& chosen, const std::shared_ptr<Options>& options,
                  int (*run)(const Options&)) {
  runWhenAsked(command, chosen, [options, run] { return run(*options); });
}

}  // namespace lfmeta
