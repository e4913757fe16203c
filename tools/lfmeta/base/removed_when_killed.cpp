#include "base/removed_when_killed.h"

#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>

namespace lfmeta {

namespace {

constexpr std::array kEndingSignals{SIGHUP,  SIGINT,  SIGQUIT, SIGPIPE, SIGALRM,   SIGTERM,
                                    SIGUSR1, SIGUSR2, SIGXCPU, SIGXFSZ, SIGVTALRM, SIGPROF};

// All that the handler looks at. More files than there are places for are not at work at a time.
constexpr int kPlaces = 16;
std::array<std::atomic<const char*>, kPlaces> pathsToRemove;
static_assert(std::atomic<const char*>::is_always_lock_free, "read by a signal handler");

// The signal has its default effect again, which it has as soon as the handler returns.
void removeAndDie(int signal) {
  for (const auto& path : pathsToRemove) {
    if (const char* name = path.load()) unlink(name);
  }
  raise(signal);
}

// A signal that is ignored, as under nohup, stays ignored.
bool handleSignals() {
  for (const int signal : kEndingSignals) {
    struct sigaction action {};
    if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler != SIG_DFL) continue;
    action.sa_handler = removeAndDie;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigaction(signal, &action, nullptr);
  }
  return true;
}

}  // namespace

RemovedWhenKilled::RemovedWhenKilled(const std::string& path) : place_(0) {
  static const bool handled = handleSignals();
  for (const char* none = nullptr; handled && place_ < kPlaces; ++place_, none = nullptr) {
    const auto place = static_cast<std::size_t>(place_);
    if (pathsToRemove[place].compare_exchange_strong(none, path.c_str())) return;
  }
}

RemovedWhenKilled::~RemovedWhenKilled() {
  if (place_ < kPlaces) pathsToRemove[static_cast<std::size_t>(place_)] = nullptr;
}

SignalsHeld::SignalsHeld() {
  sigset_t ending;
  sigemptyset(&ending);
  for (const int signal : kEndingSignals) sigaddset(&ending, signal);
  pthread_sigmask(SIG_BLOCK, &ending, &before_);
}

SignalsHeld::~SignalsHeld() {
  const int reason = errno;  // of what failed meanwhile
  pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  errno = reason;
}

}  // namespace lfmeta
