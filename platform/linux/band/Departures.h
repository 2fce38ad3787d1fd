// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"
#include "platform/linux/band/SessionWeights.h"
#include "platform/linux/band/ThreadLevers.h"
#include "platform/linux/kernel/Kernel.h"
#include "platform/shared/EventLoop.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace vantle {

// Sees those out who have left the band: processes that keep a mark because they may be in the middle of a
// fork, or because the weight of their session has not had its turn. When the last of them is done with,
// everybody is looked at once more, if anybody was born since: a child that was on its way when its parent
// came back has been born by then, with a mark that is on nobody's list.
class Departures {
 public:
  // A child whose parent was seen resting between two forks, and forked before its mark was off, is born
  // within this time; and a thread that computes has used a good part of what a fork may take.
  static constexpr std::chrono::milliseconds firstPause{20};

  // Whose mark is another copy's business.
  using IsForeign = std::function<bool(Pid)>;

  Departures(EventLoop& loop, Kernel& kernel, ThreadLevers& threads, SessionWeights& sessions,
             IsForeign isForeign);

  // As `ThreadLevers::leave`; what is left to do is done later.
  bool leave(Pid pid, bool keepSession, const ThreadsSeen& seen = {});

  // Called after that last look, in which only leaving processes are put back, for whoever knows who is meant
  // to be in the band.
  void onLateBirths(const std::function<void()>& call) { m_lateBirths = call; }

  // One that carries a mark and may not be changed: it has become another user, with a program that may do
  // so. Often enough it is this one's again a moment later.
  void refused(Pid pid, std::uint64_t startTicks);

  // Somebody has left, who may have forked since that moment; absent: now.
  void expectBirths(const std::optional<Pid>& since);

  // There is something left to do, after a pause, by this class itself or by `proceed`.
  bool isBusy() const { return m_isWatching; }
  void proceed();

 private:
  void wait();
  void startTimer();
  void waitForRefused();
  void tryRefused();
  void sessionRaised(const std::vector<Pid>& members);
  void sweep();
  void seeOut(Pid pid);
  void chase();

  EventLoop& m_loop;
  Kernel& m_kernel;
  ThreadLevers& m_threads;
  SessionWeights& m_sessions;
  IsForeign m_isForeign;
  std::function<void()> m_lateBirths;
  bool m_isWatching = false;
  std::optional<Pid> m_births; // of the moment from which on somebody may have been born unseen
  std::chrono::milliseconds m_pause = firstPause;
  std::chrono::steady_clock::time_point m_due; // of the next step
  std::chrono::steady_clock::time_point m_timerEnd;
  std::unique_ptr<EventLoop::Handle> m_timer;
  std::map<Pid, std::uint64_t> m_refused; // with the start, in clock ticks since boot
  std::chrono::milliseconds m_refusedPause{0};
  std::unique_ptr<EventLoop::Handle> m_refusedTimer;
};

} // namespace vantle
