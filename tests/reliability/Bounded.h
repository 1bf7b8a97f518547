// Calls that must come back in time: a call that hangs fails the test run at
// once instead of holding the suite until the runner's own time limit.
#pragma once

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <thread>
#include <utility>

namespace kavrin::testing {

// Runs `call` on its own thread and answers its result (or rethrows what it
// threw), waiting at most `limit`. When the limit passes the process ends
// with a message: a thread stuck in a call cannot be taken back.
template <typename F>
auto Bounded(F&& call, std::chrono::milliseconds limit) -> decltype(call()) {
  using Result = decltype(call());
  std::packaged_task<Result()> task(std::forward<F>(call));
  auto result = task.get_future();
  std::thread runner(std::move(task));
  if (result.wait_for(limit) != std::future_status::ready) {
    std::fprintf(stderr, "a call did not come back within %lld ms\n",
                 static_cast<long long>(limit.count()));
    std::abort();
  }
  runner.join();
  return result.get();
}

}  // namespace kavrin::testing
