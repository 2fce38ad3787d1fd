// SPDX-License-Identifier: MIT
#include "platform/linux/band/ThreadLevers.h"

#include <algorithm>
#include <charconv>
#include <sched.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace vantle {

namespace {

using SchedulingClass = ThreadMark::SchedulingClass;

// A class that an ordinary user could not have given back. Nobody's I/O is real-time by a mark: whoever may
// write an I/O priority can forge one, and a privileged copy of this program would hand out what it says.
bool isRealTimeIo(const ThreadMark& mark) {
  constexpr int realTimeIo = 1;
  return mark.ioClass == realTimeIo;
}

// The most processor time that a fork takes. Measured on a virtual machine of 2026: 0.03 to 0.17 us for each
// page of 4 KB and 1.7 us for each of at most 65,530 mappings, which is 111 ms; with room for slower ones.
constexpr std::chrono::microseconds longestFork{250'000};
constexpr double longestPage = 0.5; // us

// A fork that sleeps without any use of a processor waits for the kernel to find memory, and goes on with the
// first page of it. Who sleeps for longer waits for something else: for the child of a vfork, which was born
// long ago, or for a disk.
constexpr std::chrono::seconds longestSleep{2};

std::uint64_t inTicks(std::chrono::microseconds time) {
  static const auto ticks = static_cast<std::uint64_t>(::sysconf(_SC_CLK_TCK));
  return static_cast<std::uint64_t>(time.count()) * ticks / 1'000'000;
}

// As start times are counted; no start is later than the largest, where nobody tells.
std::uint64_t ticksSinceBoot(const Kernel& kernel) {
  const std::string uptime = kernel.read("/proc/uptime").value_or(""); // "17245.40 10537.30"
  std::uint64_t seconds = 0;
  std::uint64_t hundredths = 0;
  const char* const end = uptime.data() + uptime.size();
  const auto whole = std::from_chars(uptime.data(), end, seconds);
  if (whole.ec != std::errc{} || end - whole.ptr < 3 || *whole.ptr != '.') return ~std::uint64_t{0};
  const auto part = std::from_chars(whole.ptr + 1, whole.ptr + 3, hundredths);
  if (part.ec != std::errc{}) return ~std::uint64_t{0};
  return inTicks(std::chrono::seconds(seconds) + std::chrono::milliseconds(10 * hundredths));
}

// Threads can be started faster than they are looked at.
constexpr int mostRounds = 20;

// Calls back with each thread once, and with those born meanwhile, until a look finds no new one, or only
// such as have nothing to hand on; false when it did not come to that end. The main thread comes first, or
// last with `Order::mainLast`.
enum class Order { mainFirst, mainLast };
enum class Visit {
  goOn,
  stop,
  nothing // this one has nothing that a thread which it starts would have from it
};
template <typename Callback>
bool forEachThread(const Kernel& kernel, Pid pid, Order order, const ThreadsSeen& known, Callback call) {
  std::vector<Pid> seen;
  std::optional<Pid> births = known.birthMark ? known.birthMark : kernel.birthMark();
  if (known.birthMark && known.hasOneThread) {
    if (call(pid) == Visit::stop || known.isTrusted || births == kernel.birthMark()) return true;
    seen.push_back(pid);
    births = kernel.birthMark();
  }
  for (int round = 0; round < mostRounds; ++round) {
    bool foundNew = false;
    std::vector<Pid> threads = kernel.threads(pid); // as the kernel lists them, the main thread first
    if (order == Order::mainLast) std::reverse(threads.begin(), threads.end());
    for (const Pid tid : threads) {
      if (std::find(seen.begin(), seen.end(), tid) != seen.end()) continue;
      seen.push_back(tid);
      const Visit visit = call(tid);
      if (visit == Visit::stop) return true;
      foundNew = foundNew || visit == Visit::goOn;
    }
    if (known.isTrusted || !foundNew) return true;
    const std::optional<Pid> before = std::exchange(births, kernel.birthMark());
    if (before && before == births) return true; // nobody was born anywhere: the list was complete
  }
  return false;
}

} // namespace

ThreadLevers::ThreadLevers(Kernel& kernel, BandLedger& ledger)
    : m_kernel(kernel), m_narrowed(ledger), m_mayRaise(kernel.hasNiceCapability()),
      m_beganTicks(ticksSinceBoot(kernel)) {
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
  const bool isNew = !before || before->isLeaving;
  auto departing = m_departing.extract(pid);
  bool refused = false;
  bool marked = false;
  bool slowedByClass = false;
  forEachThread(m_kernel, pid, Order::mainFirst, seen, [&](Pid tid) {
    const bool isInDoubt = departing && departing.mapped().doubts.contains(tid);
    const Entered entered = enterThread(tid, plan, isNew, isInDoubt);
    refused = refused || entered.outcome == Outcome::refused;
    marked = marked || entered.outcome == Outcome::done;
    slowedByClass = slowedByClass || entered.slowedByClass;
    return refused ? Visit::stop : Visit::goOn;
  });
  if (plan.classIsTheEffect && !slowedByClass) refused = true;
  if (refused && isNew) {
    if (departing) {
      departing.mapped().isSlowedAgain = true;
      m_departing.insert(std::move(departing));
    }
    leave(pid, before && before->sessionLowered);
  }
  return marked && !refused;
}

void ThreadLevers::complete(Pid pid, const Plan& plan) {
  forEachThread(m_kernel, pid, Order::mainFirst, {}, [&](Pid tid) {
    if (!threadMark(tid)) enterThread(tid, plan, /*isNew=*/true, /*isInDoubt=*/false);
    return Visit::goOn;
  });
}

ThreadLevers::Entered ThreadLevers::enterThread(Pid tid, const Plan& plan, bool isNew, bool isInDoubt) {
  const Answer<int> priority = m_kernel.ioPriority(tid);
  if (!priority) return {priority.isGone ? Outcome::gone : Outcome::refused};
  const Answer<Scheduling> scheduling = m_kernel.scheduling(tid);
  if (!scheduling) return {scheduling.isGone ? Outcome::gone : Outcome::refused};
  if (scheduling->isRealTime()) return {Outcome::untouchable};

  const std::optional<ThreadMark> earlier = ThreadMark::decode(*priority);
  const std::optional<ThreadMark> remembered = earlier ? earlier : ThreadMark::remembering(*priority);
  if (!remembered || isRealTimeIo(*remembered)) return {Outcome::refused};

  ThreadMark mark = *remembered;
  // Of one that left the mark tells what it handed to a child which may still be on its way. Otherwise what
  // it has now is its own.
  if (mark.isLeaving && !isInDoubt) {
    if (scheduling->policy != SCHED_IDLE) mark.schedulingClass = SchedulingClass::unchanged;
    mark.affinityNarrowed = mark.affinityNarrowed && isOurNarrowing(tid);
  }
  mark.isLeaving = false;
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
  // It was slowed before, and has put an I/O priority of its own over the mark that told of it.
  const bool isStillNarrow = isNew && !earlier && *priority != 0 && isStray(tid);
  mark.affinityNarrowed = mark.affinityNarrowed || narrow || isStillNarrow;

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
  // Nearly every thread: the look at the processors can be spared.
  if (*now == m_efficiency.online && !m_narrowed.contains(*now, m_efficiency.online)) return false;
  refresh();
  return m_narrowed.contains(*now, m_efficiency.online);
}

// Of a thread with a mark only: any other one may simply stand in such a group.
bool ThreadLevers::isBehindGroup(Pid tid) const {
  const std::optional<ProcessorSet> now = m_kernel.affinity(tid);
  return now && m_narrowed.containsBehindGroup(m_kernel, tid, *now);
}

bool ThreadLevers::leave(Pid pid, bool keepSession, const ThreadsSeen& seen) {
  const auto earlier = m_departing.extract(pid);
  Departure departure;
  if (earlier) departure = std::move(earlier.mapped());
  departure.keepSession = keepSession;
  const bool isSlowedAgain = std::exchange(departure.isSlowedAgain, false);
  bool refused = false;
  bool found = false;
  // The main thread comes last: as long as it is marked, the process is found again after a crash.
  const bool isWhole = forEachThread(m_kernel, pid, Order::mainLast, seen, [&](Pid tid) {
    found = true;
    const std::optional<bool> isOut = leaveThread(tid, departure, isSlowedAgain);
    refused = refused || isOut == false;
    return isOut ? Visit::goOn : Visit::nothing;
  });
  std::erase_if(departure.doubts, [this](const auto& doubt) {
    const std::optional<ThreadActivity> now = m_kernel.activity(doubt.first);
    return !now || now->startTicks != doubt.second.then.startTicks;
  });
  if (isWhole && departure.doubts.empty()) return found && !refused;
  if (const std::optional<ThreadActivity> main = m_kernel.activity(pid)) {
    departure.startTicks = main->startTicks;
    m_departing.emplace(pid, std::move(departure));
  }
  return found && !refused;
}

std::vector<Pid> ThreadLevers::departing() const {
  std::vector<Pid> pids;
  pids.reserve(m_departing.size());
  for (const auto& [pid, departure] : m_departing) pids.push_back(pid);
  return pids;
}

void ThreadLevers::leaveAgain(Pid pid) {
  const auto departure = m_departing.find(pid);
  if (departure == m_departing.end()) return;
  const std::optional<ThreadActivity> main = m_kernel.activity(pid);
  if (main && main->startTicks == departure->second.startTicks) {
    leave(pid, departure->second.keepSession);
  } else {
    m_departing.erase(departure);
  }
}

void ThreadLevers::sessionRaised(Pid pid) {
  // Its number may be another one's by now, and that one slowed.
  const std::optional<ThreadMark> own = anyMark(pid);
  if (own && own->isLeaving) leave(pid, false);
}

void ThreadLevers::releaseUnmarked(Pid pid, bool isCertain) {
  forEachThread(m_kernel, pid, Order::mainLast, {}, [&](Pid tid) {
    return threadMark(tid) || releaseThread(tid, isCertain) ? Visit::goOn : Visit::nothing;
  });
}

bool ThreadLevers::isStray(Pid tid) {
  const std::optional<ThreadActivity> thread = m_kernel.activity(tid);
  return thread && isStray(tid, thread->startTicks);
}

bool ThreadLevers::isStray(Pid pid, std::uint64_t startTicks) {
  return startTicks > m_beganTicks && m_kernel.ioPriority(pid).value_or(0) != 0 && isOurNarrowing(pid);
}

bool ThreadLevers::releaseThread(Pid tid, bool isCertain) {
  const Answer<Scheduling> scheduling = m_kernel.scheduling(tid);
  if (!scheduling || scheduling->isRealTime()) return false;
  const bool isNarrow = isOurNarrowing(tid);
  const bool isSlow = m_mayRaise && scheduling->policy == SCHED_IDLE &&
                      (isCertain || isNarrow || m_kernel.ioPriority(tid).value_or(0) != 0);
  if (isSlow) m_kernel.setScheduling(tid, {SCHED_OTHER, scheduling->resetsOnFork});
  if (isNarrow) m_kernel.setAffinity(tid, ProcessorSet::everything());
  return isSlow || isNarrow;
}

std::optional<bool> ThreadLevers::leaveThread(Pid tid, Departure& departure, bool isSlowedAgain) {
  const Answer<int> before = m_kernel.ioPriority(tid);
  const std::optional<ThreadMark> mark = before ? ThreadMark::decode(*before) : std::nullopt;
  if (!mark) {
    departure.doubts.erase(tid);
    if (releaseThread(tid, false)) return true;
    return std::nullopt;
  }
  // Once is enough: what it is after that is somebody else's choice.
  const bool isAgain = isKnown(tid, departure.doubts);
  GivenBack given = GivenBack::something;
  if (!isAgain || isSlowedAgain) given = giveBack(tid, *mark);
  if (given == GivenBack::gone || given == GivenBack::refused) return given == GivenBack::gone;
  ThreadMark rest = *mark;
  rest.isLeaving = true;
  const bool hasNothing = !isAgain && given == GivenBack::nothing && mark->isLeaving && wasBornClean(tid);
  const bool isInDoubt = !hasNothing && mayBeForking(tid, departure.doubts);
  if (!isInDoubt) {
    rest.schedulingClass = SchedulingClass::unchanged;
    rest.affinityNarrowed = false;
    rest.sessionLowered = mark->sessionLowered && departure.keepSession;
  }
  const int own = isRealTimeIo(*mark) ? 0 : mark->originalIoPriority();
  const int after = isInDoubt || rest.sessionLowered ? rest.encode() : own;
  return after == *before || m_kernel.setIoPriority(tid, after) != Change::refused;
}

ThreadLevers::GivenBack ThreadLevers::giveBack(Pid tid, const ThreadMark& mark) {
  GivenBack given = GivenBack::nothing;
  // What is no longer as this program left it was changed by somebody else, and is theirs.
  if (mark.schedulingClass != SchedulingClass::unchanged) {
    const Answer<Scheduling> scheduling = m_kernel.scheduling(tid);
    if (!scheduling) return GivenBack::gone;
    const int policy = mark.schedulingClass == SchedulingClass::wasBatch ? SCHED_BATCH : SCHED_OTHER;
    if (scheduling->policy == SCHED_IDLE) {
      const Change change = m_kernel.setScheduling(tid, {policy, scheduling->resetsOnFork});
      if (change == Change::gone) return GivenBack::gone;
      if (change == Change::refused) return GivenBack::refused;
      given = GivenBack::something;
    }
  }
  if (mark.affinityNarrowed && (isOurNarrowing(tid) || isBehindGroup(tid))) {
    m_kernel.setAffinity(tid, ProcessorSet::everything());
    given = GivenBack::something;
  }
  return given;
}

// A thread that was born since this program is the only copy, and has the class and the processors that it
// had before, has had them from its birth: nobody else puts them back, and this program would know. So it
// hands nothing on but the mark. A program that forks and ends, and forks and ends, is caught in this way.
bool ThreadLevers::wasBornClean(Pid tid) const {
  const std::optional<ThreadActivity> now = m_kernel.activity(tid);
  return now && now->startTicks > m_beganTicks;
}

// Whether this very thread was put back already.
bool ThreadLevers::isKnown(Pid tid, std::map<Pid, Doubt>& doubts) const {
  const auto doubt = doubts.find(tid);
  if (doubt == doubts.end()) return false;
  const std::optional<ThreadActivity> now = m_kernel.activity(tid);
  if (now && now->startTicks == doubt->second.then.startTicks) return true;
  doubts.erase(doubt);
  return false;
}

bool ThreadLevers::mayBeForking(Pid tid, std::map<Pid, Doubt>& doubts) {
  const std::optional<ThreadActivity> now = m_kernel.activity(tid);
  if (!now || now->isResting) {
    doubts.erase(tid);
    return false;
  }
  const auto time = m_kernel.now();
  const auto [entry, isFirst] = doubts.try_emplace(tid, Doubt{*now, time, now->cpuTicks});
  if (isFirst) return true;
  Doubt& doubt = entry->second;
  if (now->isRunning || now->cpuTicks != doubt.cpuTicks) {
    doubt.since = time;
    doubt.cpuTicks = now->cpuTicks;
  }
  const auto pages = static_cast<double>(std::max(now->residentPages, doubt.then.residentPages));
  const auto fork = longestFork + std::chrono::microseconds(static_cast<std::int64_t>(pages * longestPage));
  constexpr std::uint64_t rounding = 2; // of both figures
  const bool hasForked = now->cpuTicks >= doubt.then.cpuTicks + inTicks(fork) + rounding;
  if (!hasForked && time - doubt.since < longestSleep) return true;
  doubts.erase(entry);
  return false;
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
  return found && !found->isLeaving;
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
