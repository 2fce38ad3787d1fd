// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace vantle {

// Asks what somebody else can delay for ever (a file on a file system that has died, the memory of a process
// whose owner answers for its pages) on a thread of its own, and waits for it for a limited time. The kernel
// lets nobody wait for such files in any other way. A thread that is still stuck ends with the program.
class BoundedWait {
 public:
  // So many may be stuck at a time; whoever asks then gets no answer at once.
  explicit BoundedWait(int mostStuck) : m_mostStuck(mostStuck) {}

  // Absent when there is no answer in time; then `late`, if given, counts it when it is there after all.
  // What the work needs it must own: it may outlive the caller.
  template <class Work>
  auto answer(std::chrono::milliseconds limit, Work work, const std::shared_ptr<std::atomic<int>>& late = {})
      -> std::optional<decltype(work())> {
    auto result = std::make_shared<std::optional<decltype(work())>>();
    const bool isDone = run(
        limit, [result, work = std::move(work)] { result->emplace(work()); }, late);
    return isDone ? std::move(*result) : std::nullopt;
  }

 private:
  bool run(std::chrono::milliseconds limit, const std::function<void()>& work,
           const std::shared_ptr<std::atomic<int>>& late);

  int m_mostStuck;
  std::shared_ptr<std::atomic<int>> m_stuck = std::make_shared<std::atomic<int>>(0);
};

} // namespace vantle
