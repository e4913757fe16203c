// What the tool says: exit statuses, failures in one line, and text from outside.
#pragma once

#include <string>
#include <string_view>

namespace lfmeta {

inline constexpr int kSuccess = 0;
inline constexpr int kFailure = 1;     // at least one file failed; the others were done
inline constexpr int kUsageError = 2;  // the command line cannot be understood

// One line on standard error: "lfmeta: SUBJECT: MESSAGE", without a subject when it is empty. Both
// may come from outside.
void printFailure(std::string_view subject, std::string_view message);

// Text from outside (a file, a file's name, the command line) as a terminal may have it, and in one
// line: each byte of a control or invisible character, and each that is not UTF-8, becomes \xNN.
std::string printable(std::string_view text);

// A text in a fixed array, up to its NUL.
template <std::size_t size>
std::string_view textOf(const char (&text)[size]) {
  const std::string_view all(text, size);
  return all.substr(0, all.find('\0'));
}

}  // namespace lfmeta
