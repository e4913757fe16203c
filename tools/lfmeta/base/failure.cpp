#include "base/failure.h"

#include <new>

#include "base/report.h"

namespace lfmeta {

int runReportingFailure(const std::function<int()>& command) {
  try {
    return command();
  } catch (const Failure& failure) {
    printFailure(failure.file(), failure.what());
  } catch (const std::bad_alloc&) {
    printFailure("lfmeta", "needs more memory than there is");
  }
  return kFailure;
}

}  // namespace lfmeta
