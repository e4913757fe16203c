// Every allocation, write, read, seek and close of every function fails once, alone: the documented
// result comes back, memory and files are given back, and nothing but good values is written. No
// file that is opened on the way would be another program's, too.
#include <gtest/gtest.h>

#include <filesystem>
#include <utility>

#include "support/calls.h"
#include "support/interposed.h"

namespace {

using namespace calls;
using namespace interposed;

auto openFiles() {
  using Entries = std::filesystem::directory_iterator;
  return std::distance(Entries("/proc/self/fd"), Entries());
}

// Each byte is the one of a good call, was cleared or was not touched; a file written anew stands
// as far as it was written.
void expectNothingWrong(const Call& call, const Outcome& good, const Outcome& outcome) {
  for (std::size_t i = 0; i < call.memorySize; ++i) {
    const char byte = outcome.memory[i];
    ASSERT_TRUE(byte == good.memory[i] || byte == kUntouched || byte == 0) << "byte " << i;
  }
  if (outcome == good || outcome.file == Scene().output.bytes()) return;
  EXPECT_FALSE(call.takesBack);
  EXPECT_TRUE(good.file.starts_with(outcome.file));
}

// The results with the first, the second, ... call of these kinds failing.
std::vector<int> resultsWithout(const Call& call, uint32_t kinds) {
  Scene goodScene;
  const Outcome good = run(call, goodScene);
  EXPECT_EQ(good.result, call.result) << call.name;
  std::vector<int> results;
  for (int successes = 0;; ++successes) {
    SCOPED_TRACE(std::string(call.name) + " after " + std::to_string(successes));
    Scene scene;
    const auto filesBefore = openFiles();
    state = {kinds, successes};
    const Outcome outcome = run(call, scene);
    const State record = std::exchange(state, {});
    EXPECT_EQ(record.held, 0U);
    EXPECT_EQ(record.inherited, 0);
    EXPECT_EQ(openFiles(), filesBefore);
    expectNothingWrong(call, good, outcome);
    EXPECT_TRUE(kinds != kWholeRead || outcome == good);
    if (!record.failed) return results;
    results.push_back(outcome.result);
  }
}

TEST(Faults, ComeBackAsDocumented) {
  for (const Call& call : kCalls) {
    EXPECT_EQ(resultsWithout(call, kMemory), call.withoutMemory) << call.name;
    EXPECT_EQ(resultsWithout(call, kWrite), call.withoutWrite) << call.name;
    resultsWithout(call, kWholeRead);
    for (const int result : resultsWithout(call, kRead)) {
      EXPECT_TRUE(result == call.result || std::ranges::count(call.withoutRead, result) == 1)
          << call.name << ' ' << result;
    }
  }
}

}  // namespace
