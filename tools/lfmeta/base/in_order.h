// Work on many units with several threads whose results are taken in the order of the units.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <exception>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace lfmeta {

template <typename Next, typename Work, typename Take>
class InOrder {
 public:
  InOrder(unsigned jobs, const Next& next, const Work& work, const Take& take)
      : jobs_(jobs), next_(next), work_(work), take_(take), results_(kUnitsAThread * (jobs + 1)) {}

  void run() {
    {
      std::vector<std::jthread> helpers;
      try {
        while (helpers.size() + 1 < jobs_) helpers.emplace_back([this] { workOn(); });
      } catch (const std::system_error&) {
        // No more threads are to be had; those that there are do the work.
      }
      workOn();
    }
    if (failure_) std::rethrow_exception(failure_);
  }

 private:
  static constexpr std::size_t kUnitsAThread = 4;
  using Unit = typename decltype(std::declval<const Next&>()())::value_type;
  using Result = decltype(std::declval<const Work&>()(std::declval<Unit&>()));

  void workOn() {
    try {
      for (std::size_t index = 0; auto unit = nextUnit(index);) put(index, work_(*unit));
    } catch (...) {
      const std::lock_guard guard(resultsLock_);
      if (!failure_) failure_ = std::current_exception();
      room_.notify_all();
    }
  }

  std::optional<Unit> nextUnit(std::size_t& index) {
    std::optional<Unit> unit;
    {
      const std::lock_guard guard(unitsLock_);
      if (atEnd_) return std::nullopt;
      unit = next_();
      atEnd_ = !unit.has_value();
      index = units_++;
    }
    std::unique_lock guard(resultsLock_);
    room_.wait(guard, [&] { return index < taken_ + results_.size() || failure_; });
    if (failure_) return std::nullopt;
    return unit;
  }

  // Whoever brings the result that is next takes it, and all that follow it meanwhile.
  void put(std::size_t index, Result result) {
    std::unique_lock guard(resultsLock_);
    results_[index % results_.size()] = std::move(result);
    if (taking_) return;
    taking_ = true;
    while (auto& ready = results_[taken_ % results_.size()]) {
      Result first = std::move(*ready);
      ready.reset();
      guard.unlock();
      take_(first);
      guard.lock();
      ++taken_;
      room_.notify_all();
    }
    taking_ = false;
  }

  unsigned jobs_;
  const Next& next_;
  const Work& work_;
  const Take& take_;

  std::mutex unitsLock_;
  std::size_t units_ = 0;
  bool atEnd_ = false;

  std::mutex resultsLock_;
  std::condition_variable room_;
  std::vector<std::optional<Result>> results_;  // a ring
  std::size_t taken_ = 0;
  bool taking_ = false;
  std::exception_ptr failure_;
};

// `next()` gives the next unit, if there is one; `take(result)` has its result. Neither is called
// by two threads at a time. `work(unit)` is. No thread waits for another but one that is far ahead,
// so that the results held stay few. What any of them throws ends the work and is thrown on.
template <typename Next, typename Work, typename Take>
void workInOrder(unsigned jobs, const Next& next, const Work& work, const Take& take) {
  InOrder<Next, Work, Take>(jobs, next, work, take).run();
}

}  // namespace lfmeta
