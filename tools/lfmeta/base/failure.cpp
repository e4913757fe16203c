#include "base/failure.h"

#include <algorithm>
#include <new>

namespace lfmeta {

int runReportingFailure(const std::function<int()>& command) {
  try {
    return command();
  } catch (const Failure& failure) {
    printFailure(failure.file(), failure.what());
    return failure.exitStatus();
  } catch (const std::bad_alloc&) {
    printFailure("", "needs more memory than there is");
  }
  return kFailure;
}

int runForEachFile(const std::vector<std::string>& files,
                   const std::function<void(const std::string&)>& work) {
  int status = kSuccess;
  for (const std::string& file : files) {
    const int one = runReportingFailure([&] {
      work(file);
      return kSuccess;
    });
    status = std::max(status, one);
    if (one == kUsageError) break;
  }
  return status;
}

}  // namespace lfmeta
