#include "base/report.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>

#include "base/characters.h"

namespace lfmeta {

namespace {

bool isPlain(char c) {
  return c >= ' ' && c < 0x7F;
}

}  // namespace

void printFailure(std::string_view subject, std::string_view message) {
  std::string line = "lfmeta: " + printable(subject);
  if (!subject.empty()) line += ": ";
  line += printable(message) + "\n";
  std::fflush(stdout);
  // At once, and not through stderr, which the library's own messages go to.
  for (std::string_view rest = line; !rest.empty();) {
    const ssize_t count = write(STDERR_FILENO, rest.data(), rest.size());
    if (count < 0 && errno != EINTR) return;
    rest.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
  }
}

std::string printable(std::string_view text) {
  if (std::all_of(text.begin(), text.end(), isPlain)) return std::string(text);
  std::string out;
  while (!text.empty()) {
    const Character next = firstCharacter(text);
    const std::string_view bytes = text.substr(0, next.length);
    if (next.known && !isHidden(next.code)) {
      out += bytes;
    } else {
      for (const char byte : bytes) {
        out += "\\x";
        appendHex(out, static_cast<unsigned char>(byte), 2);
      }
    }
    text.remove_prefix(next.length);
  }
  return out;
}

}  // namespace lfmeta
