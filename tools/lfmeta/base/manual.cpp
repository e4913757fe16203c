#include "base/manual.h"

#include <cctype>

namespace lfmeta {

namespace {

// Text of which nothing is taken for a request, and of which each sentence begins a line.
std::string plain(const std::string& text) {
  std::string lines;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool begins = lines.empty() || lines.back() == '\n';
    if (begins && (text[i] == '.' || text[i] == '\'')) lines += "\\&";
    const bool sentenceEnds =
        lines.ends_with('.') && i + 1 < text.size() && std::isupper(text[i + 1]) != 0;
    if (text[i] == '\\') {
      lines += "\\e";
    } else if (text[i] == ' ' || text[i] == '\n') {
      lines += sentenceEnds ? '\n' : ' ';
    } else {
      lines += text[i];
    }
  }
  return lines + "\n";
}

std::string shapeOf(const OptionDescription& option) {
  std::string shape;
  for (const std::string& name : option.names) {
    shape += (shape.empty() ? "Fl " : " , Fl ") + name.substr(1);
  }
  if (!option.value.empty()) shape += (shape.empty() ? "Ar " : " Ar ") + option.value;
  return shape + (option.repeats && !shape.ends_with("...") ? " ..." : "");
}

void addSynopsis(std::string& page, const CommandDescription& command, const std::string& road) {
  for (const CommandDescription& below : command.commands) {
    addSynopsis(page, below, road.empty() ? below.name : road + " " + below.name);
  }
  if (!command.commands.empty()) return;
  page += ".Nm\n.Cm " + road + "\n";
  for (const OptionDescription& option : command.options) {
    if (!option.isHelp()) page += (option.required ? "." : ".Op ") + shapeOf(option) + "\n";
  }
  for (const OptionDescription& word : command.words) {
    page += (word.required ? "." : ".Op ") + shapeOf(word) + "\n";
  }
}

void addList(std::string& page, const std::vector<OptionDescription>& options) {
  for (const OptionDescription& option : options) {
    page += ".It " + shapeOf(option) + "\n" + plain(option.text);
  }
}

void addCommand(std::string& page, const CommandDescription& command, const std::string& road) {
  page += ".Ss " + road + "\n" + plain(command.text + ".");
  const bool hasOwnOptions = command.options.size() > 1;  // beside --help
  if (hasOwnOptions || !command.words.empty()) {
    page += ".Bl -tag -width Ds\n";
    addList(page, command.words);
    addList(page, {command.options.begin(), command.options.end() - 1});
    page += ".El\n";
  }
  for (const std::string& paragraph : command.footer) {
    const bool asItIs = paragraph.front() == ' ';
    page += asItIs ? ".Bd -literal\n" : ".Pp\n";
    page += asItIs ? paragraph + "\n.Ed\n" : plain(paragraph);
  }
  for (const CommandDescription& below : command.commands) {
    addCommand(page, below, road + " " + below.name);
  }
}

}  // namespace

std::string manualSynopsis(const CommandDescription& tool) {
  std::string page;
  addSynopsis(page, tool, "");
  return page;
}

std::string manualCommands(const CommandDescription& tool) {
  std::string page = ".Bl -tag -width Ds\n";
  addList(page, tool.options);
  page += ".El\n";
  for (const CommandDescription& command : tool.commands) addCommand(page, command, command.name);
  return page;
}

}  // namespace lfmeta
