// SPDX-License-Identifier: MIT
#pragma once

#include "platform/shared/EventLoop.h"

#include <functional>
#include <memory>

namespace vantle {

// A plain poll(2) loop, for programs without a toolkit: tests, benchmarks, the self-test.
class PollEventLoop final : public EventLoop {
 public:
  PollEventLoop();
  ~PollEventLoop() override;
  PollEventLoop(const PollEventLoop&) = delete;
  PollEventLoop& operator=(const PollEventLoop&) = delete;

  std::unique_ptr<Handle> watch(int descriptor, Readiness readiness, std::function<void()> ready) override;
  std::unique_ptr<Handle> after(std::chrono::milliseconds delay, std::function<void()> due) override;

  // Runs what is due until the condition holds or the time is up; true when it holds.
  bool runUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit);

 private:
  struct State;
  class StateHandle;
  std::shared_ptr<State> m_state;
};

} // namespace vantle
