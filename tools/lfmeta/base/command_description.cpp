#include "base/command_description.h"

#include <CLI/CLI.hpp>
#include <algorithm>

namespace lfmeta {

namespace {

// The shape of a word: "[FILE...]".
std::string shapeOf(const OptionDescription& word) {
  const std::string shape = word.value + (word.repeats ? "..." : "");
  return word.required ? shape : "[" + shape + "]";
}

OptionDescription describe(const CLI::Option& option) {
  OptionDescription one{.names = {},
                        .value = option.get_positional() ? option.get_name() : "",
                        .repeats = option.get_expected_max() > 1,
                        .required = option.get_required(),
                        .text = option.get_description()};
  for (const std::string& name : option.get_snames()) one.names.push_back("-" + name);
  for (const std::string& name : option.get_lnames()) one.names.push_back("--" + name);
  if (!option.get_positional() && option.get_type_size() > 0) {
    one.value = option.get_type_name();
    one.value.resize(std::min(one.value.find(':'), one.value.size()));  // what checks say of it
  }
  return one;
}

}  // namespace

std::string OptionDescription::nameList() const {
  std::string list;
  for (const std::string& name : names) list += (list.empty() ? "" : ", ") + name;
  if (list.empty()) return value + (repeats ? "..." : "");
  return value.empty() ? list : list + " " + value;
}

bool OptionDescription::isHelp() const {
  return !names.empty() && names.back() == "--help";
}

std::string CommandDescription::usage() const {
  std::string line = name;
  const auto add = [&](const std::string& part) { line += " " + part; };
  if (!options.empty()) add("[OPTIONS]");
  for (const OptionDescription& option : options) {
    if (option.required) add(option.nameList());
  }
  for (const OptionDescription& word : words) add(shapeOf(word));
  if (!commands.empty()) add("COMMAND");
  return line;
}

CommandDescription describe(const CLI::App& app) {
  CommandDescription command{.name = app.get_name(),
                             .text = app.get_description(),
                             .words = {},
                             .options = {},
                             .commands = {},
                             .footer = paragraphsOf(app.get_footer())};
  for (const CLI::Option* option : app.get_options()) {
    if (option->get_group().empty()) continue;
    (option->get_positional() ? command.words : command.options).push_back(describe(*option));
  }
  // What every command has comes last.
  std::stable_partition(command.options.begin(), command.options.end(),
                        [](const OptionDescription& option) { return !option.isHelp(); });
  for (const CLI::App* below : app.get_subcommands([](const CLI::App*) { return true; })) {
    if (!below->get_group().empty()) command.commands.push_back(describe(*below));
  }
  return command;
}

std::vector<std::string> paragraphsOf(const std::string& text) {
  std::vector<std::string> paragraphs;
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = std::min(text.find("\n\n", start), text.size());
    if (end > start) paragraphs.push_back(text.substr(start, end - start));
    start = end + 2;
  }
  return paragraphs;
}

}  // namespace lfmeta
