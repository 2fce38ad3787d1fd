// SPDX-License-Identifier: MIT
#include "platform/linux/process/BoundedWait.h"

#include <condition_variable>
#include <csignal>
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

// Signals are the main thread's.
class SignalsBlocked {
 public:
  SignalsBlocked() {
    sigset_t all;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &m_before);
  }
  ~SignalsBlocked() { ::pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;

 private:
  sigset_t m_before{};
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
