#include "photos/progress.h"

#include <unistd.h>

#include <array>
#include <cstdio>
#include <string_view>

namespace lfmeta {

namespace {

// A terminal that is gone is no reason to stop.
void say(std::string_view text) {
  [[maybe_unused]] const ssize_t count = write(STDERR_FILENO, text.data(), text.size());
}

}  // namespace

Progress::Progress() : wanted_(isatty(STDERR_FILENO) != 0 && isatty(STDOUT_FILENO) == 0) {}

void Progress::add(std::size_t files) {
  const std::size_t before = done_ / kStep;
  done_ += files;
  if (!wanted_ || done_ / kStep == before) return;
  std::array<char, 40> text{};
  std::snprintf(text.data(), text.size(), "\r%zu files", done_ / kStep * kStep);
  say(text.data());
  shown_ = true;
}

void Progress::clear() {
  if (shown_) say("\r\033[K");
  shown_ = false;
}

}  // namespace lfmeta
