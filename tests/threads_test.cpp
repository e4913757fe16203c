// All functions at the same time on data of their own, under the thread sanitizer where the build
// has it; and what a process shares is left alone.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cfenv>
#include <clocale>
#include <filesystem>
#include <thread>

#include "support/calls.h"

namespace {

using namespace calls;

// What a library may change behind its host's back.
std::vector<std::string> processState() {
  std::vector<std::string> state = {std::setlocale(LC_ALL, nullptr),
                                    std::filesystem::current_path(),
                                    std::to_string(std::fegetround())};
  for (char** variable = environ; *variable != nullptr; ++variable) state.emplace_back(*variable);
  return state;
}

TEST(Threads, CallAllFunctionsAtTheSameTime) {
  const std::vector<std::string> before = processState();
  std::vector<Outcome> alone;
  for (const Call& call : kCalls) {
    Scene scene;
    alone.push_back(run(call, scene));
  }
  std::vector<std::thread> threads;
  for (std::size_t thread = 0; thread < 8; ++thread) {
    threads.emplace_back([&, thread] {
      for (std::size_t i = 0; i < 4 * kCalls.size(); ++i) {
        const std::size_t number = (i + 4 * thread) % kCalls.size();
        Scene scene;
        EXPECT_EQ(run(kCalls[number], scene), alone[number]) << kCalls[number].name;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(processState(), before);
}

}  // namespace
