// SPDX-License-Identifier: MIT
#include "platform/linux/band/ThreadLevers.h"

#include <algorithm>
#include <sched.h>
#include <utility>
#include <vector>

namespace vantle {

namespace {

using SchedulingClass = ThreadMark::SchedulingClass;

// The real-time I/O class is the only one that an ordinary user cannot give back.
bool needsPrivilegeToGiveBack(const ThreadMark& mark) {
  constexpr int realTimeIo = 1;
  return mark.ioClass == realTimeIo;
}

// Calls back with each thread once, and with those born meanwhile, until no new one is left. The callback
// says whether to go on. The main thread comes first, or last with `Order::mainLast`.
enum class Order { mainFirst, mainLast };
template <typename Callback>
void forEachThread(const Kernel& kernel, Pid pid, Order order, const ThreadsSeen& known, Callback call) {
  std::vector<Pid> seen;
  std::optional<Pid> births = known.birthMark ? known.birthMark : kernel.birthMark();
  if (known.birthMark && known.hasOneThread) {
    if (!call(pid) || known.isTrusted || births == kernel.birthMark()) return;
    seen.push_back(pid);
    births = kernel.birthMark();
  }
  for (bool foundNew = true; foundNew;) {
    foundNew = false;
    std::vector<Pid> threads = kernel.threads(pid); // as the kernel lists them, the main thread first
    if (order == Order::mainLast) std::reverse(threads.begin(), threads.end());
    for (const Pid tid : threads) {
      if (std::find(seen.begin(), seen.end(), tid) != seen.end()) continue;
      seen.push_back(tid);
      foundNew = true;
      if (!call(tid)) return;
    }
    if (known.isTrusted) return;
    const std::optional<Pid> before = std::exchange(births, kernel.birthMark());
    if (before && before == births) return; // nobody was born anywhere: the list was complete
  }
}

} // namespace

ThreadLevers::ThreadLevers(Kernel& kernel, BandLedger& ledger)
    : m_kernel(kernel), m_narrowed(ledger), m_mayRaise(kernel.hasNiceCapability()) {
  refresh();
}

void ThreadLevers::refresh() {
  std::string online = m_kernel.read("/sys/devices/system/cpu/online").value_or("");
  if (online == m_onlineText) return;
  m_onlineText = std::move(online);
  m_efficiency = EfficiencySet::read(m_kernel);
}

bool ThreadLevers::enter(Pid pid, const Plan& plan, const ThreadsSeen& seen) {
  const std::optional<ThreadMark> before = mark(pid);
  const bool isNew = !before || before->isLeaving();
  bool refused = false;
  bool marked = false;
  bool slowedByClass = false;
  forEachThread(m_kernel, pid, Order::mainFirst, seen, [&](Pid tid) {
    const Entered entered = enterThread(tid, plan, isNew);
    refused = refused || entered.outcome == Outcome::refused;
    marked = marked || entered.outcome == Outcome::done;
    slowedByClass = slowedByClass || entered.slowedByClass;
    return !refused;
  });
  if (plan.classIsTheEffect && !slowedByClass) refused = true;
  if (refused && isNew) leave(pid, before && before->sessionLowered);
  return marked && !refused;
}

void ThreadLevers::complete(Pid pid, const Plan& plan) {
  forEachThread(m_kernel, pid, Order::mainFirst, {}, [&](Pid tid) {
    if (!threadMark(tid)) enterThread(tid, plan, /*isNew=*/true);
    return true;
  });
}

ThreadLevers::Entered ThreadLevers::enterThread(Pid tid, const Plan& plan, bool isNew) {
  const Answer<int> priority = m_kernel.ioPriority(tid);
  if (!priority) return {priority.isGone ? Outcome::gone : Outcome::refused};
  const Answer<Scheduling> scheduling = m_kernel.scheduling(tid);
  if (!scheduling) return {scheduling.isGone ? Outcome::gone : Outcome::refused};
  if (scheduling->isRealTime()) return {Outcome::untouchable};

  const std::optional<ThreadMark> earlier = ThreadMark::decode(*priority);
  const std::optional<ThreadMark> remembered = earlier ? earlier : ThreadMark::remembering(*priority);
  if (!remembered || (needsPrivilegeToGiveBack(*remembered) && !m_mayRaise)) return {Outcome::refused};

  ThreadMark mark = *remembered;
  if (mark.isLeaving()) mark.schedulingClass = SchedulingClass::unchanged;
  mark.sessionLowered = mark.sessionLowered || plan.sessionLowered;
  const bool isFair = scheduling->policy == SCHED_OTHER || scheduling->policy == SCHED_BATCH;
  // A thread born from a marked one between its mark and its change carries the mark only; one that somebody
  // else has changed back since looks the same, so this is done only while its process enters, by this lever.
  const bool enters = isNew || (plan.classIsTheEffect && mark.schedulingClass == SchedulingClass::unchanged);
  const bool slowClass = enters && isFair && (m_mayRaise || m_kernel.mayLeaveIdleClass(tid));
  if (slowClass) {
    mark.schedulingClass =
        scheduling->policy == SCHED_BATCH ? SchedulingClass::wasBatch : SchedulingClass::wasOther;
  } else if (isFair && enters && plan.classIsTheEffect) {
    return {Outcome::refused};
  }
  const bool narrow = isNew && mayNarrow(tid);
  mark.affinityNarrowed = mark.affinityNarrowed || narrow;

  Change change = mark.encode() == *priority ? Change::done : setMark(tid, mark, *priority);
  if (change == Change::done && slowClass) {
    change = m_kernel.setScheduling(tid, {SCHED_IDLE, scheduling->resetsOnFork});
  }
  if (change != Change::done) return {change == Change::gone ? Outcome::gone : Outcome::refused};
  if (narrow)
    m_kernel.setAffinity(tid, m_efficiency.chosen); // a refusal is no loss: undoing looks at what is there
  // A mark that tells of it says nothing about now: somebody else may have given the class back.
  const bool isSlow = slowClass || scheduling->policy == SCHED_IDLE;
  return {Outcome::done, isSlow && mark.schedulingClass != SchedulingClass::unchanged};
}

// A kernel that does not keep all bits cannot hold the memory, so it is asked, with the first mark: the
// pattern in every mark reaches the highest bits.
Change ThreadLevers::setMark(Pid tid, const ThreadMark& mark, int before) {
  const Change change = m_kernel.setIoPriority(tid, mark.encode());
  if (change != Change::done) return change;
  m_keepsBits = m_keepsBits || m_kernel.ioPriority(tid) == mark.encode();
  if (m_keepsBits) return Change::done;
  return m_kernel.setIoPriority(tid, before) == Change::gone ? Change::gone : Change::refused;
}

// Only threads that may run anywhere: a mask of its own is kept.
bool ThreadLevers::mayNarrow(Pid tid) {
  return !m_efficiency.chosen.empty() && m_kernel.affinity(tid) == m_efficiency.online &&
         m_narrowed.remember(m_efficiency.chosen);
}

// Which processors are active is asked only where they may have changed: when none of the sets is there
// whole.
bool ThreadLevers::isOurNarrowing(Pid tid) {
  const std::optional<ProcessorSet> now = m_kernel.affinity(tid);
  if (!now) return false;
  if (*now == m_efficiency.chosen || m_narrowed.contains(*now)) return true;
  refresh();
  return m_narrowed.contains(*now, m_efficiency.online);
}

bool ThreadLevers::leave(Pid pid, bool keepSession, const ThreadsSeen& seen) {
  bool refused = false;
  bool found = false;
  // The main thread comes last: as long as it is marked, the process is found again after a crash.
  forEachThread(m_kernel, pid, Order::mainLast, seen, [&](Pid tid) {
    found = true;
    refused = !leaveThread(tid, keepSession) || refused;
    return true;
  });
  return found && !refused;
}

void ThreadLevers::releaseUnmarked(Pid pid) {
  forEachThread(m_kernel, pid, Order::mainLast, {}, [&](Pid tid) {
    const Answer<Scheduling> scheduling = m_kernel.scheduling(tid);
    if (!scheduling || scheduling->isRealTime() || threadMark(tid)) return true;
    if (m_mayRaise && scheduling->policy == SCHED_IDLE) {
      m_kernel.setScheduling(tid, {SCHED_OTHER, scheduling->resetsOnFork});
    }
    if (isOurNarrowing(tid)) m_kernel.setAffinity(tid, ProcessorSet::everything());
    return true;
  });
}

bool ThreadLevers::leaveThread(Pid tid, bool keepSession) {
  const std::optional<ThreadMark> mark = threadMark(tid);
  if (!mark) return true;
  // What is no longer as this program left it was changed by somebody else, and is theirs.
  if (mark->schedulingClass == SchedulingClass::wasOther ||
      mark->schedulingClass == SchedulingClass::wasBatch) {
    const Answer<Scheduling> scheduling = m_kernel.scheduling(tid);
    if (!scheduling) return true; // gone
    const int policy = mark->schedulingClass == SchedulingClass::wasBatch ? SCHED_BATCH : SCHED_OTHER;
    const Change change = scheduling->policy == SCHED_IDLE
                              ? m_kernel.setScheduling(tid, {policy, scheduling->resetsOnFork})
                              : Change::done;
    if (change != Change::done) return change == Change::gone;
  }
  if (mark->affinityNarrowed && isOurNarrowing(tid)) {
    m_kernel.setAffinity(tid, ProcessorSet::everything());
  }
  int priority = mark->originalIoPriority();
  if (keepSession && mark->sessionLowered) {
    ThreadMark rest;
    rest.ioClass = mark->ioClass;
    rest.ioLevel = mark->ioLevel;
    rest.schedulingClass = SchedulingClass::leaving;
    rest.sessionLowered = true;
    priority = rest.encode();
  }
  return m_kernel.setIoPriority(tid, priority) != Change::refused;
}

std::optional<ThreadMark> ThreadLevers::threadMark(Pid tid) const {
  const Answer<int> priority = m_kernel.ioPriority(tid);
  return priority ? ThreadMark::decode(*priority) : std::nullopt;
}

std::optional<bool> ThreadLevers::isIn(Pid pid) const {
  const Answer<int> priority = pid > 0 ? m_kernel.ioPriority(pid) : Answer<int>();
  if (!priority) return std::nullopt;
  const std::optional<ThreadMark> own = ThreadMark::decode(*priority);
  const std::optional<ThreadMark> found = own ? own : markBehindRealTime(pid);
  return found && !found->isLeaving();
}

std::optional<ThreadMark> ThreadLevers::mark(Pid pid) const {
  const std::optional<ThreadMark> own = threadMark(pid);
  return own ? own : markBehindRealTime(pid);
}

std::optional<ThreadMark> ThreadLevers::markBehindRealTime(Pid pid) const {
  // A main thread that is real-time is never marked, whatever its process is.
  const Answer<Scheduling> scheduling = m_kernel.scheduling(pid);
  return scheduling && scheduling->isRealTime() ? anyMark(pid) : std::nullopt;
}

std::optional<ThreadMark> ThreadLevers::anyMark(Pid pid) const {
  for (const Pid tid : m_kernel.threads(pid)) {
    if (const std::optional<ThreadMark> any = threadMark(tid)) return any;
  }
  return std::nullopt;
}

} // namespace vantle
