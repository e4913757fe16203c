// The words of the command line: taken as they are, and what is wrong with them in one line.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace lfmeta {

// Parses the words for the app and all of its commands, which have their options by now. Each word
// reaches its option as it is: a file named "[2021]" is not a list. Throws CLI::ParseError.
void parseWords(CLI::App& app, int argc, const char* const* argv);

// The command that the words parsed so far have led to.
const CLI::App& chosenCommand(const CLI::App& app);
// "lfmeta settings show"
std::string roadTo(const CLI::App& command);

// What a failed parse says to a person: one line, with the name that was probably meant.
std::string usageMessage(const CLI::App& app, const CLI::ParseError& error);
// ", did you mean show?" for the command or the option of `app` that the word comes close to, else
// nothing.
std::string suggestion(const CLI::App& app, const std::string& word);

// For option->transform: a whole number in decimal digits from `least` to `most`.
CLI::Validator wholeNumber(long long least, long long most);
// A number of bytes with a unit, such as 500M; a unit is 1024 times the one before.
CLI::Validator sizeInBytes();
CLI::Validator numberNotBelowZero();

}  // namespace lfmeta
