#include "failure.h"

#include <new>

#include "report.h"

int runReportingFailure(const std::function<void()>& command) {
  try {
    command();
    return kSuccess;
  } catch (const Failure& failure) {
    fail(failure.file(), failure.what());
  } catch (const std::bad_alloc&) {
    fail("lfmeta", "needs more memory than there is");
  }
  return kFailure;
}
