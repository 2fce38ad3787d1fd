// SPDX-License-Identifier: MIT
#include "platform/linux/band/Departures.h"

#include <algorithm>
#include <utility>

namespace vantle {

namespace {

// A thread that computes has its last value back when it has used as much processor time as a fork may take.
constexpr std::chrono::milliseconds longestPause{250};
// Password prompts and mounts take seconds; a shell of another user may stay for days.
constexpr std::chrono::milliseconds firstRefusedPause{1000};
constexpr std::chrono::milliseconds longestRefusedPause{60'000};

} // namespace

Departures::Departures(EventLoop& loop, Kernel& kernel, ThreadLevers& threads, SessionWeights& sessions,
                       IsForeign isForeign)
    : m_loop(loop), m_kernel(kernel), m_threads(threads), m_sessions(sessions),
      m_isForeign(std::move(isForeign)) {
  m_sessions.onRaised([this](const std::vector<Pid>& members) { sessionRaised(members); });
}

bool Departures::leave(Pid pid, bool keepSession, const ThreadsSeen& seen) {
  expectBirths(seen.birthMark);
  const bool isOut = m_threads.leave(pid, keepSession, seen);
  if (!isOut) {
    const std::optional<ProcessStat> process = m_kernel.stat(pid);
    if (process && process->isAlive()) refused(pid, process->startTicks);
  }
  return isOut;
}

void Departures::refused(Pid pid, std::uint64_t startTicks) {
  m_refused[pid] = startTicks;
  m_refusedPause = firstRefusedPause;
  waitForRefused();
}

void Departures::waitForRefused() {
  m_refusedTimer = m_loop.after(m_refusedPause, [this] { tryRefused(); });
}

void Departures::tryRefused() {
  m_refusedPause = std::min(m_refusedPause * 2, longestRefusedPause);
  const std::chrono::milliseconds pause = m_refusedPause;
  for (const auto& [pid, startTicks] : std::map<Pid, std::uint64_t>(m_refused)) {
    const std::optional<ProcessStat> process = m_kernel.stat(pid);
    const bool isSame = process && process->isAlive() && process->startTicks == startTicks;
    const std::optional<ThreadMark> mark = isSame ? m_threads.anyMark(pid) : std::nullopt;
    if (mark && !m_kernel.isOwn(pid)) continue;
    m_refused.erase(pid);
    if (!mark) continue;
    // It may be meant to be slowed again by now.
    if (!mark->isLeaving && m_lateBirths) {
      m_lateBirths();
    } else {
      leave(pid, false);
    }
  }
  m_refusedPause = pause;
  if (!m_refused.empty()) waitForRefused();
}

void Departures::expectBirths(const std::optional<Pid>& since) {
  if (!m_isWatching) m_births = since ? since : m_kernel.birthMark();
  m_isWatching = true;
  m_pause = firstPause;
  wait();
}

// Hundreds leave one after the other: the timer of the first of them serves all.
void Departures::wait() {
  m_due = m_kernel.now() + m_pause;
  if (!m_timer || m_due < m_timerEnd) startTimer();
}

void Departures::startTimer() {
  m_timerEnd = m_due;
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(m_due - m_kernel.now());
  m_timer = m_loop.after(left, [this] {
    if (m_kernel.now() < m_due) return startTimer();
    m_timer.reset();
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
    if (!process.isAlive() || process.isKernelThread() || m_refused.contains(process.pid)) continue;
    seeOut(process.pid);
  }
  chase();
  if (m_lateBirths) m_lateBirths();
}

void Departures::seeOut(Pid pid) {
  const std::optional<ThreadMark> mark = m_threads.mark(pid);
  if (!mark || !mark->isLeaving || m_isForeign(pid)) return;
  // It may be the last one through whom the weight can be given back.
  const auto session = mark->sessionLowered ? m_sessions.raise({pid}) : SessionWeights::Outcome::done;
  leave(pid, session == SessionWeights::Outcome::queued);
}

// Somebody may do nothing but fork and end, faster than everybody can be looked at: then the youngest of all
// is the one to see.
void Departures::chase() {
  constexpr int mostSteps = 300; // 1 ms or so
  for (int step = 0; step < mostSteps; ++step) {
    const std::optional<Pid> youngest = m_kernel.birthMark();
    if (!youngest) return;
    seeOut(*youngest);
  }
}

} // namespace vantle
