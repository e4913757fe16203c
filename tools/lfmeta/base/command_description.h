// What the commands and options are, as plain data: the help, the completions of the shells and the
// man page are written from it.
#pragma once

#include <string>
#include <vector>

#include "base/cli_fwd.h"

namespace lfmeta {

struct OptionDescription {
  std::vector<std::string> names;  // "-j", "--jobs"; none for a word without an option
  std::string value;               // "DIR", "8|16|half|float"; the label of a word; empty: a flag
  bool repeats;
  bool required;
  std::string text;

  std::string nameList() const;  // "-j, --jobs N"
  bool isHelp() const;
};

struct CommandDescription {
  std::string name;
  std::string text;
  std::vector<OptionDescription> words;
  std::vector<OptionDescription> options;
  std::vector<CommandDescription> commands;
  std::vector<std::string> footer;  // paragraphs; one that begins with a blank stands as it is

  std::string usage() const;  // "read [OPTIONS] FILE..."
};

// Options and commands in an empty group are left out.
CommandDescription describe(const CLI::App& app);

// Paragraphs stand apart by an empty line.
std::vector<std::string> paragraphsOf(const std::string& text);

}  // namespace lfmeta
