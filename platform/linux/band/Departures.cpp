// SPDX-License-Identifier: MIT
#include "platform/linux/band/Departures.h"

#include <algorithm>
#include <utility>

namespace vantle {

namespace {

constexpr std::chrono::milliseconds longestPause{1000};

} // namespace

Departures::Departures(EventLoop& loop, Kernel& kernel, ThreadLevers& threads, SessionWeights& sessions,
                       IsForeign isForeign)
    : m_loop(loop), m_kernel(kernel), m_threads(threads), m_sessions(sessions),
      m_isForeign(std::move(isForeign)) {
  m_sessions.onRaised([this](const std::vector<Pid>& members) { sessionRaised(members); });
}

bool Departures::leave(Pid pid, bool keepSession, const ThreadsSeen& seen) {
  expectBirths(seen.birthMark);
  return m_threads.leave(pid, keepSession, seen);
}

void Departures::expectBirths(const std::optional<Pid>& since) {
  if (!m_isWatching) m_births = since ? since : m_kernel.birthMark();
  m_isWatching = true;
  m_pause = firstPause;
  wait();
}

void Departures::wait() {
  m_timer = m_loop.after(m_pause, [this] {
    m_pause = std::min(m_pause * 2, longestPause);
    proceed();
  });
}

void Departures::sessionRaised(const std::vector<Pid>& members) {
  for (const Pid pid : members) m_threads.sessionRaised(pid);
  // Whoever was born meanwhile of one that waited has its mark.
  expectBirths({});
}

void Departures::proceed() {
  for (const Pid pid : m_threads.departing()) m_threads.leaveAgain(pid);
  if (m_threads.isDeparting()) return wait();
  m_timer.reset();
  if (m_sessions.isRaising()) return; // which ends with a call
  m_isWatching = false;
  if (!m_births || m_births != m_kernel.birthMark()) sweep();
}

void Departures::sweep() {
  for (const ProcessStat& process : m_kernel.scan()) {
    if (!process.isAlive() || process.isKernelThread()) continue;
    const std::optional<ThreadMark> mark = m_threads.mark(process.pid);
    if (!mark || !mark->isLeaving || m_isForeign(process.pid)) continue;
    // It may be the last one through whom the weight can be given back.
    const auto session =
        mark->sessionLowered ? m_sessions.raise({process.pid}) : SessionWeights::Outcome::done;
    leave(process.pid, session == SessionWeights::Outcome::queued);
  }
  if (m_lateBirths) m_lateBirths();
}

} // namespace vantle
