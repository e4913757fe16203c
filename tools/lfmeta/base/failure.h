// How a command ends when it cannot do what was asked: one line that names the file (or the option)
// and says what to do about it.
#pragma once

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/report.h"

namespace lfmeta {

class Failure : public std::runtime_error {
 public:
  Failure(std::string theFile, const std::string& message)
      : Failure(std::move(theFile), message, kFailure) {}
  const std::string& file() const { return file_; }
  int exitStatus() const { return exitStatus_; }

 protected:
  Failure(std::string theFile, const std::string& message, int theExitStatus)
      : std::runtime_error(message), file_(std::move(theFile)), exitStatus_(theExitStatus) {}

 private:
  std::string file_;
  int exitStatus_;
};

// A word of the command line that means nothing, whatever the files hold: the option is named
// instead of a file.
class UsageFailure : public Failure {
 public:
  UsageFailure(std::string option, const std::string& message)
      : Failure(std::move(option), message, kUsageError) {}
};

// Runs the command; a Failure becomes its line on standard error. Returns the command's exit
// status, or the Failure's.
int runReportingFailure(const std::function<int()>& command);

// The same for each file by itself; a wrong command line is said once.
int runForEachFile(const std::vector<std::string>& files,
                   const std::function<void(const std::string&)>& work);

}  // namespace lfmeta
