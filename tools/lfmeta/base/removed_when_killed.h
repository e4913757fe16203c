// A file that must not stay behind when a signal ends the tool.
#pragma once

#include <csignal>
#include <string>

namespace lfmeta {

// While it exists, such a signal removes the file before it ends the tool. `path` must outlive it.
class RemovedWhenKilled {
 public:
  explicit RemovedWhenKilled(const std::string& path);
  ~RemovedWhenKilled();
  RemovedWhenKilled(const RemovedWhenKilled&) = delete;
  RemovedWhenKilled& operator=(const RemovedWhenKilled&) = delete;

 private:
  int place_;
};

// Such signals wait for the end of the scope.
class SignalsHeld {
 public:
  SignalsHeld();
  ~SignalsHeld();
  SignalsHeld(const SignalsHeld&) = delete;
  SignalsHeld& operator=(const SignalsHeld&) = delete;

 private:
  sigset_t before_;
};

}  // namespace lfmeta
