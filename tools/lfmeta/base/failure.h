// How a command ends when it cannot do what was asked: one line that names the file (or the option)
// and says what to do about it.
#pragma once

#include <functional>
#include <stdexcept>
#include <string>

namespace lfmeta {

class Failure : public std::runtime_error {
 public:
  Failure(std::string theFile, const std::string& message)
      : std::runtime_error(message), file_(std::move(theFile)) {}
  const std::string& file() const { return file_; }

 private:
  std::string file_;
};

// Runs the command; a Failure becomes its line on standard error. Returns the command's exit
// status, or kFailure.
int runReportingFailure(const std::function<int()>& command);

}  // namespace lfmeta
