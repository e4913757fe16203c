// All functions at the same time on data of their own, under the thread sanitizer where the build
// has it; what a process shares is left alone; and how much stack a thread needs for them.
#include <gtest/gtest.h>
#include <pthread.h>

#include <clocale>
#include <filesystem>
#include <functional>
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

// How much of a painted stack a thread has touched that does `work`.
std::size_t stackOf(const std::function<void()>& work) {
  constexpr std::size_t kSize = 1 << 20;
  constexpr unsigned char kPaint = 0xA7;
  const std::unique_ptr<unsigned char[], void (*)(void*)> stack(
      static_cast<unsigned char*>(std::aligned_alloc(4096, kSize)), std::free);
  std::fill_n(stack.get(), kSize, kPaint);
  pthread_attr_t attributes;
  pthread_t thread;
  pthread_attr_init(&attributes);
  pthread_attr_setstack(&attributes, stack.get(), kSize);
  const auto run = [](void* given) -> void* { return (*static_cast<const std::function<void()>*>(given))(), nullptr; };
  EXPECT_EQ(pthread_create(&thread, &attributes, run, const_cast<std::function<void()>*>(&work)), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
  unsigned char* const end = stack.get() + kSize;
  return static_cast<std::size_t>(end - std::find_if(stack.get(), end, [](auto byte) { return byte != kPaint; }));
}

TEST(Threads, NeedLittleStack) {
#if !defined(__OPTIMIZE__) || defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "as this library is not built for hosts";
#endif
  const std::size_t ofThread = stackOf([] {});
  for (const Call& call : kCalls) {
    Scene scene;
    std::vector<unsigned char> memory(call.memorySize, kUntouched);
    const std::size_t size = stackOf([&] { call.function(scene, {memory.data()}); }) - ofThread;
    EXPECT_LT(size, 32768U) << call.name;
  }
}

}  // namespace
