// All functions at the same time on data of their own, under the thread sanitizer where the build
// has it; and what a process shares is left alone.
#include <gtest/gtest.h>
#include <unistd.h>

#include <clocale>
#include <filesystem>
#include <thread>

#include "support/calls.h"

// The C library keeps its time zone behind a lock that the sanitizer does not see: what it allocates and frees there is
// its own affair.
extern "C" const char* __tsan_default_suppressions() { return "called_from_lib:libc.so.6"; }

namespace {

using namespace calls;

std::string processState() {
  std::string state = std::setlocale(LC_ALL, nullptr) + std::filesystem::current_path().string();
  for (char** variable = environ; *variable != nullptr; ++variable) state += *variable;
  return state;
}

TEST(Threads, CallAllFunctionsAtTheSameTime) {
  const std::string before = processState();
  std::vector<Outcome> alone;
  for (const Call& call : kCalls) alone.push_back(run(call, *std::make_unique<Scene>()));
  std::vector<std::thread> threads;
  for (std::size_t thread = 0; thread < 8; ++thread) {
    threads.emplace_back([&, thread] {
      for (std::size_t i = 0; i < 4 * kCalls.size(); ++i) {
        const std::size_t number = (i + 4 * thread) % kCalls.size();
        EXPECT_EQ(run(kCalls[number], *std::make_unique<Scene>()), alone[number]) << number;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(processState(), before);
}

}  // namespace
