#include "base/failure.h"

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

}  // namespace lfmeta
