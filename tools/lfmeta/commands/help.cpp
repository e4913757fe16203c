// lfmeta help: the help of lfmeta or of one of its commands.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <string>
#include <vector>

#include "base/command_line.h"
#include "base/failure.h"
#include "commands/commands.h"

namespace lfmeta {

namespace {

struct Options {
  const CLI::App* app;
  std::vector<std::string> road;
};

int showHelp(const Options& options) {
  const CLI::App* command = options.app;
  for (const std::string& name : options.road) {
    const auto found =
        command->get_subcommands([&](const CLI::App* below) { return below->get_name() == name; });
    if (found.empty()) {
      throw UsageFailure(name, "is no command of " + roadTo(*command) + suggestion(*command, name));
    }
    command = found.front();
  }
  const std::string text =
      command->get_formatter()->make_help(command, roadTo(*command), CLI::AppFormatMode::Normal);
  std::fputs(text.c_str(), stdout);
  return kSuccess;
}

}  // namespace

void addHelpCommand(CLI::App& app, Run& chosen) {
  CLI::App* command = app.add_subcommand("help", "Show the help of a command");
  const auto options = std::make_shared<Options>(Options{&app, {}});
  command->add_option("COMMAND", options->road, "Such as read, or settings show")->type_name("");
  runWhenAsked(*command, chosen, options, showHelp);
}

}  // namespace lfmeta
