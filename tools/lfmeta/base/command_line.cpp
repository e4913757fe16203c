#include "base/command_line.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "base/command_description.h"

namespace lfmeta {

namespace {

// CLI11 takes a word in brackets for a list of words, and one behind "--" for a word too many where
// an argument repeats. A mark in front of the word hides what it begins with until it is taken.
constexpr char kMark = '\x01';

std::string marked(const std::string& word, bool isNoOption) {
  const bool mistakable =
      word.starts_with('[') || word.starts_with(kMark) || (isNoOption && word.starts_with('-'));
  return mistakable ? kMark + word : word;
}

std::string withoutMark(const std::string& word) {
  return word.starts_with(kMark) ? word.substr(1) : word;
}

std::vector<CLI::App*> commandsOf(CLI::App& app) {
  return app.get_subcommands([](CLI::App*) { return true; });
}

void takeWordsUnmarked(CLI::App& app) {
  for (CLI::Option* option : app.get_options()) {
    option->transform(CLI::Validator(
        [](std::string& word) {
          word = withoutMark(word);
          return std::string();
        },
        ""));
  }
  for (CLI::App* command : commandsOf(app)) takeWordsUnmarked(*command);
}

// Letters to leave out, to add, to replace, or to swap with their neighbour.
std::size_t distance(const std::string& a, const std::string& b) {
  std::vector<std::vector<std::size_t>> steps(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
  for (std::size_t i = 0; i <= a.size(); ++i) {
    for (std::size_t j = 0; j <= b.size(); ++j) {
      if (i == 0 || j == 0) {
        steps[i][j] = i + j;
        continue;
      }
      const std::size_t replaced = steps[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
      steps[i][j] = std::min({replaced, steps[i - 1][j] + 1, steps[i][j - 1] + 1});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
        steps[i][j] = std::min(steps[i][j], steps[i - 2][j - 2] + 1);
      }
    }
  }
  return steps[a.size()][b.size()];
}

std::vector<std::string> namesOf(const CLI::App& app) {
  const CommandDescription command = describe(app);
  std::vector<std::string> names;
  for (const CommandDescription& below : command.commands) names.push_back(below.name);
  for (const OptionDescription& option : command.options) {
    names.insert(names.end(), option.names.begin(), option.names.end());
  }
  return names;
}

std::string unknownWord(const CLI::App& app, const std::string& word) {
  const bool isOption = word.size() > 1 && word.front() == '-';
  const bool needsCommand = app.get_require_subcommand_min() > 0;
  const char* what = isOption       ? " is no option"
                     : needsCommand ? " is no command"
                                    : " is one argument too many";
  return word + what + suggestion(app, word);
}

// What no command along the road has taken.
std::vector<std::string> wordsLeft(const CLI::App& command) {
  for (const CLI::App* app = &command; app != nullptr; app = app->get_parent()) {
    std::vector<std::string> words = app->remaining();
    if (!words.empty()) return words;
  }
  return {};
}

}  // namespace

void parseWords(CLI::App& app, int argc, const char* const* argv) {
  takeWordsUnmarked(app);
  std::vector<std::string> words;
  bool optionsEnded = false;
  for (const std::string_view word : std::span(argv, static_cast<std::size_t>(argc)).subspan(1)) {
    if (!optionsEnded && word == "--") {
      optionsEnded = true;
    } else {
      words.push_back(marked(std::string(word), optionsEnded));
    }
  }
  std::reverse(words.begin(), words.end());  // as the parser wants them
  app.parse(std::move(words));
}

const CLI::App& chosenCommand(const CLI::App& app) {
  const std::vector<CLI::App*> below = app.get_subcommands();
  return below.empty() ? app : chosenCommand(*below.front());
}

std::string roadTo(const CLI::App& command) {
  const CLI::App* parent = command.get_parent();
  return parent == nullptr ? command.get_name() : roadTo(*parent) + " " + command.get_name();
}

std::string usageMessage(const CLI::App& app, const CLI::ParseError& error) {
  const CLI::App& command = chosenCommand(app);
  const std::vector<std::string> left = wordsLeft(command);
  std::string message;
  if (!left.empty()) {
    message = unknownWord(command, withoutMark(left.front()));
  } else if (command.get_require_subcommand_min() > 0) {
    for (const CommandDescription& below : describe(command).commands) {
      message += (message.empty() ? "a command is needed: " : ", ") + below.name;
    }
  } else {
    message = error.what();
    std::erase(message, kMark);
  }
  return message + "; see " + roadTo(command) + " --help";
}

std::string suggestion(const CLI::App& app, const std::string& word) {
  const std::string given = word.substr(0, word.find('='));
  std::string closest;
  std::size_t least = given.size() / 3 + 1;  // one letter in three may be wrong, but not more
  for (const std::string& name : namesOf(app)) {
    const std::size_t steps = distance(given, name);
    if (name.size() < 3 || steps >= least) continue;
    closest = name;
    least = steps;
  }
  return closest.empty() ? "" : ", did you mean " + closest + "?";
}

CLI::Validator wholeNumber(long long least, long long most) {
  return CLI::Validator(
      [least, most](std::string& text) -> std::string {
        long long number = 0;
        const char* end = text.data() + text.size();
        const auto [rest, error] = std::from_chars(text.data(), end, number);
        if (error != std::errc() || rest != end || number < least || number > most) {
          return text + " is no whole number from " + std::to_string(least) + " to " +
                 std::to_string(most);
        }
        text = std::to_string(number);  // without zeros in front, which would make it octal
        return {};
      },
      "");
}

CLI::Validator sizeInBytes() {
  return CLI::Validator(
      [](std::string& text) -> std::string {
        constexpr std::string_view kUnits = "KMGT";
        uint64_t number = 0;
        const char* end = text.data() + text.size();
        const auto [rest, error] = std::from_chars(text.data(), end, number);
        std::string unit(rest, end);
        for (char& c : unit) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        const std::size_t power = unit.empty() ? 0 : kUnits.find(unit.front()) + 1;
        const std::string_view more = std::string_view(unit).substr(unit.empty() ? 0 : 1);
        const bool known =
            unit.empty() || (power > 0 && (more.empty() || more == "B" || more == "IB"));
        if (error != std::errc() || !known || number > UINT64_MAX >> 10 * power) {
          return text + " is no size such as 500M or 8G";
        }
        text = std::to_string(number << 10 * power);
        return {};
      },
      "");
}

CLI::Validator numberNotBelowZero() {
  return CLI::Validator(
      [](std::string& text) -> std::string {
        double number = 0;
        const char* end = text.data() + text.size();
        const auto [rest, error] = std::from_chars(text.data(), end, number);
        const bool good =
            error == std::errc() && rest == end && std::isfinite(number) && number >= 0;
        return good ? std::string() : text + " is no number of 0 or more";
      },
      "");
}

}  // namespace lfmeta
