#include "base/completion.h"

#include <algorithm>
#include <functional>
#include <map>

namespace lfmeta {

namespace {

// What may stand where the description says `value`.
enum class Completion { words, commands, folders, files, none };

Completion completionOf(const std::string& value) {
  static const std::map<std::string, Completion> kOthers{
      {"COMMAND", Completion::commands}, {"DIR", Completion::folders},
      {"FOLDER", Completion::folders},   {"N", Completion::none},
      {"SIZE", Completion::none},        {"SECONDS", Completion::none},
      {"TEXT", Completion::none},        {"METHOD", Completion::none},
      {"A,B,...", Completion::none},     {"Element=value", Completion::none}};
  if (value.find('|') != std::string::npos) return Completion::words;
  const auto other = kOthers.find(value);
  return other == kOthers.end() ? Completion::files : other->second;
}

std::string wordsOf(std::string value) {
  std::replace(value.begin(), value.end(), '|', ' ');
  return value;
}

std::string namesOf(const std::vector<CommandDescription>& commands) {
  std::string names;
  for (const CommandDescription& command : commands) {
    names += (names.empty() ? "" : " ") + command.name;
  }
  return names;
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
    text.replace(at, from.size(), to);
  }
  return text;
}

std::string between(char before, const std::string& text, char behind) {
  return std::string(1, before).append(text).append(1, behind);
}

std::string inQuotes(const std::string& text) {
  return between('\'', replaced(text, "'", "'\\''"), '\'');
}

// Calls `visit` with each command and the road to it, " settings show"; the tool's own is empty.
void visitAll(const CommandDescription& command, const std::string& road,
              const std::function<void(const CommandDescription&, const std::string&)>& visit) {
  visit(command, road);
  for (const CommandDescription& below : command.commands) {
    visitAll(below, road + " " + below.name, visit);
  }
}

// A branch of a "case".
std::string branch(const std::string& pattern, const std::string& action) {
  return "    " + pattern + ") " + action + " ;;\n";
}

std::string bashValues(const CommandDescription& command, const std::string& road) {
  static const std::map<Completion, std::string> kActions{
      {Completion::folders, "compopt -o dirnames +o default; return"},
      {Completion::files, "return"},
      {Completion::none, "compopt +o default; return"}};
  std::string branches;
  const std::string start = road + " ";
  for (const OptionDescription& option : command.options) {
    if (option.value.empty()) continue;
    std::string patterns;
    for (const std::string& name : option.names) {
      patterns.append(patterns.empty() ? "" : " | ").append(inQuotes(start + name));
    }
    const Completion completion = completionOf(option.value);
    branches += branch(patterns, completion == Completion::words
                                     ? "words=" + inQuotes(wordsOf(option.value))
                                     : kActions.at(completion));
  }
  return branches;
}

std::string zshAction(const std::string& value) {
  switch (completionOf(value)) {
    case Completion::words:
      return between('(', wordsOf(value), ')');
    case Completion::commands:
      return "_lfmeta__commands";
    case Completion::folders:
      return "_files -/";
    case Completion::files:
      return "_files";
    default:
      return " ";
  }
}

std::string zshText(std::string text) {
  for (const char* special : {"\\", "[", "]", ":"}) {
    text = replaced(text, special, std::string("\\") + special);
  }
  return text;
}

std::string zshArgument(const OptionDescription& option) {
  const std::string value =
      between(':', replaced(option.value, ":", "\\:"), ':') + zshAction(option.value);
  if (option.names.empty()) return inQuotes((option.repeats ? "*" : "") + value);
  const std::string help =
      between('[', zshText(option.text), ']') + (option.value.empty() ? "" : value);
  std::string names;
  for (const std::string& name : option.names) names += (names.empty() ? "" : " ") + name;
  const std::string before = option.repeats ? "*" : between('(', names, ')');
  if (option.names.size() == 1) return inQuotes(before + names + help);
  return inQuotes(before) + between('{', replaced(names, " ", ","), '}') + inQuotes(help);
}

std::string zshFunction(const CommandDescription& command, const std::string& road) {
  const std::string function = "_lfmeta" + replaced(road, " ", "_");
  std::string text;
  if (!command.commands.empty()) {
    text += function + "__commands() {\n  local -a commands=(\n";
    for (const CommandDescription& below : command.commands) {
      text += "    " + inQuotes(below.name + ":" + zshText(below.text)) + "\n";
    }
    text += "  )\n  _describe command commands\n}\n";
  }
  text += function + "() {\n";
  if (!command.commands.empty()) text += "  local context state state_descr line\n";
  text += "  _arguments -C -s -S";
  for (const OptionDescription& option : command.options) text += " \\\n    " + zshArgument(option);
  for (const OptionDescription& word : command.words) text += " \\\n    " + zshArgument(word);
  if (!command.commands.empty()) {
    text += " \\\n    ':command:" + function + "__commands' '*::word:->words'\n" +
            "  [[ $state != words ]] || (( ! $+functions[" + function + "_$words[1]] )) || " +
            function + "_$words[1]";
  }
  return text + "\n}\n";
}

}  // namespace

std::string bashCompletion(const CommandDescription& tool) {
  std::string commands;
  std::string values;
  std::string options;
  std::string words;
  visitAll(tool, "", [&](const CommandDescription& command, const std::string& road) {
    if (!road.empty()) commands += (commands.empty() ? "" : " | ") + inQuotes(road);
    values += bashValues(command, road);
    std::string names;
    for (const OptionDescription& option : command.options) {
      for (const std::string& name : option.names) names += (names.empty() ? "" : " ") + name;
    }
    options += branch(inQuotes(road), "words=" + inQuotes(names));
    const bool takesCommand = std::any_of(
        command.words.begin(), command.words.end(),
        [](const auto& word) { return completionOf(word.value) == Completion::commands; });
    const std::string below = namesOf(takesCommand ? tool.commands : command.commands);
    if (!below.empty()) words += branch(inQuotes(road), "words=" + inQuotes(below));
  });
  return "# bash completion of lfmeta, made from the description of its options\n"
         "_lfmeta() {\n"
         "  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}\n"
         "  local command= words= i\n"
         "  COMPREPLY=()\n"
         "  for ((i = 1; i < COMP_CWORD; ++i)); do\n"
         "    case \"$command ${COMP_WORDS[i]}\" in\n" +
         branch(commands, "command+=\" ${COMP_WORDS[i]}\"") +
         "    esac\n"
         "  done\n"
         "  case \"$command $before\" in\n" +
         values + "  esac\n  if [[ -z $words && $word == -* ]]; then\n    case \"$command\" in\n" +
         options + "    esac\n  elif [[ -z $words ]]; then\n    case \"$command\" in\n" + words +
         "    esac\n"
         "  fi\n"
         "  COMPREPLY=($(compgen -W \"$words\" -- \"$word\"))\n"
         "}\n"
         "complete -o default -F _lfmeta lfmeta\n";
}

std::string zshCompletion(const CommandDescription& tool) {
  std::string functions;
  visitAll(tool, "", [&](const CommandDescription& command, const std::string& road) {
    functions += zshFunction(command, road);
  });
  return "#compdef lfmeta\n# made from the description of lfmeta's options\n" + functions +
         "_lfmeta \"$@\"\n";
}

}  // namespace lfmeta
