// SPDX-License-Identifier: MIT
#include "platform/posix/process/BoundedWait.h"

#include "platform/posix/process/SignalsBlocked.h"

#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>

namespace vantle {

namespace {

struct Attempt {
  std::mutex mutex;
  std::condition_variable changed;
  bool isDone = false;
  bool isGivenUp = false;
};

} // namespace

bool BoundedWait::run(std::chrono::milliseconds limit, const std::function<void()>& work,
                      const std::shared_ptr<std::atomic<int>>& late) {
  if (*m_stuck >= m_mostStuck) return false;
  const auto attempt = std::make_shared<Attempt>();
  const auto thread = [attempt, work, stuck = m_stuck, late] {
    work();
    const std::lock_guard lock(attempt->mutex);
    attempt->isDone = true;
    if (attempt->isGivenUp) {
      --*stuck;
      if (late) ++*late;
    }
    attempt->changed.notify_one();
  };
  try {
    const SignalsBlocked blocked;
    std::thread(thread).detach();
  } catch (const std::system_error&) {
    work(); // no thread to be had: better to wait than to know nothing
    return true;
  }
  std::unique_lock lock(attempt->mutex);
  if (attempt->changed.wait_for(lock, limit, [&] { return attempt->isDone; })) return true;
  attempt->isGivenUp = true;
  ++*m_stuck;
  return false;
}

} // namespace vantle
