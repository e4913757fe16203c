#include "base/help.h"

#include <algorithm>
#include <sstream>
#include <utility>
#include <vector>

#include "base/command_description.h"

namespace lfmeta {

namespace {

constexpr std::size_t kColumns = 80;
constexpr std::size_t kWidestName = 26;  // a longer one has a line of its own

// Adds the text's words; a line that is full goes on below, at the given indentation.
void addWrapped(std::string& out, const std::string& text, std::size_t indentation) {
  std::size_t column = out.size() - (out.rfind('\n') + 1);
  std::istringstream words(text);
  bool begun = false;
  for (std::string word; words >> word; begun = true) {
    if (begun && column + 1 + word.size() > kColumns) {
      out.append("\n").append(indentation, ' ');
      column = indentation;
    } else if (begun) {
      out += ' ';
      ++column;
    }
    out += word;
    column += word.size();
  }
  out += '\n';
}

using Entry = std::pair<std::string, std::string>;  // a name and what it does

void addEntries(std::string& out, const char* title, const std::vector<Entry>& entries) {
  if (entries.empty()) return;
  std::size_t width = 0;
  for (const auto& [name, text] : entries) {
    if (name.size() <= kWidestName) width = std::max(width, name.size());
  }
  out.append("\n").append(title).append(":\n");
  for (const auto& [name, text] : entries) {
    out.append("  ").append(name);
    if (name.size() > width) {
      out.append("\n  ").append(width, ' ');
    } else {
      out.append(width - name.size(), ' ');
    }
    out.append("  ");
    addWrapped(out, text, width + 4);
  }
}

std::vector<Entry> entriesOf(const std::vector<OptionDescription>& options) {
  std::vector<Entry> entries;
  entries.reserve(options.size());
  for (const OptionDescription& option : options) {
    entries.emplace_back(option.nameList(), option.text);
  }
  return entries;
}

}  // namespace

std::string HelpFormatter::make_help(const CLI::App* app, std::string caller,
                                     CLI::AppFormatMode) const {
  const CommandDescription command = describe(*app);
  std::string out;
  addWrapped(out, command.text, 0);
  out += "\nUsage: ";
  // The caller is the whole road to the command, whose last step is its name.
  addWrapped(out, caller.substr(0, caller.size() - command.name.size()) + command.usage(), 7);

  std::vector<Entry> commands;
  for (const CommandDescription& below : command.commands) {
    commands.emplace_back(below.name, below.text);
  }
  addEntries(out, "Commands", commands);
  addEntries(out, "Arguments", entriesOf(command.words));
  addEntries(out, "Options", entriesOf(command.options));
  for (const std::string& paragraph : command.footer) {
    out += '\n';
    if (paragraph.front() == ' ') {
      out += paragraph + '\n';
    } else {
      addWrapped(out, paragraph, 0);
    }
  }
  return out;
}

}  // namespace lfmeta
