#include "base/line_output.h"

#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>

#include "base/failure.h"

namespace lfmeta {

namespace {

constexpr std::size_t kEnough = 65536;

std::size_t writeSome(std::string_view bytes) {
  for (;;) {
    const ssize_t count = write(STDOUT_FILENO, bytes.data(), bytes.size());
    if (count >= 0) return static_cast<std::size_t>(count);
    if (errno == EAGAIN) {  // somebody has made the pipe one that does not wait
      pollfd room{STDOUT_FILENO, POLLOUT, 0};
      poll(&room, 1, -1);
    } else if (errno != EINTR) {
      throw Failure("standard output", std::string("cannot be written: ") + std::strerror(errno));
    }
  }
}

// The lines that fit into `most` bytes; the first one if it does not.
std::string_view firstLines(std::string_view lines, std::size_t most) {
  if (lines.size() <= most) return lines;
  std::size_t end = lines.substr(0, most).rfind('\n');
  if (end == std::string_view::npos) end = lines.find('\n', most);
  return lines.substr(0, end == std::string_view::npos ? lines.size() : end + 1);
}

}  // namespace

LineOutput::LineOutput() : enough_(kEnough), piece_(kEnough) {
  struct stat status {};
  if (fstat(STDOUT_FILENO, &status) != 0) return;
  if (S_ISFIFO(status.st_mode)) piece_ = PIPE_BUF;
  if (isatty(STDOUT_FILENO) != 0) enough_ = 0;  // a person waits
}

void LineOutput::add(std::string_view lines) {
  const std::lock_guard guard(lock_);
  waiting_ += lines;
  if (waiting_.size() > enough_) writePieces();
}

void LineOutput::flush() {
  const std::lock_guard guard(lock_);
  writePieces();
}

void LineOutput::writePieces() {
  std::string_view rest = waiting_;
  try {
    while (!rest.empty()) {
      std::string_view piece = firstLines(rest, piece_);
      rest.remove_prefix(piece.size());
      while (!piece.empty()) piece.remove_prefix(writeSome(piece));
    }
  } catch (const Failure&) {
    waiting_.clear();
    throw;
  }
  waiting_.clear();
}

}  // namespace lfmeta
