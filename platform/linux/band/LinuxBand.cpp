// SPDX-License-Identifier: MIT
#include "platform/linux/band/LinuxBand.h"

#include "platform/linux/band/EnteringPass.h"
#include "platform/linux/band/LeverFacts.h"
#include "platform/linux/band/UnitPass.h"
#include "platform/linux/band/UserManager.h"
#include "platform/linux/kernel/ProcKernel.h"
#include "platform/linux/process/ProcessRecords.h"

#include <algorithm>
#include <utility>

namespace vantle {

namespace {

// Each look finds only what was born during the one before.
constexpr int mostLooks = 4;

std::unique_ptr<ServiceManager> managerOrNone(EventLoop& loop, std::unique_ptr<ServiceManager> manager) {
  return manager ? std::move(manager) : std::make_unique<UserManager>(loop, "");
}

} // namespace

LinuxBand::LinuxBand(EventLoop& loop, FileStore& files, BandParts parts)
    : m_shared(parts.kernel ? std::move(parts.kernel) : std::make_shared<ProcKernel>()), m_kernel(*m_shared),
      m_busLimit(parts.busLimit), m_ledger(files, std::move(parts.ledgers), m_kernel.bootId()),
      m_threads(m_kernel, m_ledger), m_controlGroups(controlGroupMount(m_kernel)),
      m_sessions(loop, m_ledger, m_kernel),
      m_departures(loop, m_kernel, m_threads, m_sessions, [this](Pid pid) { return isOfAnotherCopy(pid); }),
      m_units(loop, m_ledger, m_kernel, managerOrNone(loop, std::move(parts.manager)), m_controlGroups) {}

LinuxBand::~LinuxBand() = default;

std::vector<std::pair<std::string, std::string>> LinuxBand::levers() const {
  return leverFacts(m_kernel, m_units.isUsable());
}

ProcessView LinuxBand::lookAt(Pid app) const {
  const std::optional<Pid> births = m_kernel.birthMark();
  std::vector<ProcessRecord> records;
  for (const ProcessStat& process : m_kernel.scan()) {
    if (process.isAlive()) records.push_back(recordOf(process));
  }
  ProcessView view(std::move(records), births);
  if (m_front != 0) view.assign(m_front, m_front);
  if (app >= firstAppPid) view.assignTree(app, {});
  return view;
}

bool LinuxBand::enterBackgroundBand(Pid pid) {
  const ProcessView view = lookAt(pid);
  const BandApp app{pid, {pid}};
  return enter({.view = view, .boostApp = m_front, .apps = {&app, 1}, .slowed = {}})
      .front()
      .front()
      .entered();
}

bool LinuxBand::carriesOwnMark(Pid pid) const { return m_threads.isIn(pid) == true && !isOfAnotherCopy(pid); }

// The self-test is one: it slows other programs that it has started, and takes them back by itself. Whatever
// it leaves behind is nobody's child any more.
bool LinuxBand::isOfAnotherCopy(Pid pid) const {
  const std::optional<ProcessStat> process = m_kernel.stat(pid);
  if (!process || process->parent == m_kernel.self()) return false;
  const auto programOf = [this](Pid one) { return m_kernel.link("/proc/" + std::to_string(one) + "/exe"); };
  const auto own = m_kernel.link("/proc/self/exe");
  return own && programOf(process->parent) == own && programOf(pid) != own;
}

std::vector<std::vector<BandAnswer>> LinuxBand::enter(const BandPass& pass) {
  if (pass.apps.empty()) return {};
  m_threads.refresh();
  return EnteringPass({m_kernel, m_threads, m_sessions, m_departures, m_units, m_controlGroups, m_busLimit},
                      pass)
      .run();
}

// What leaves together. The weight of a session or a unit is one for all that stand in it, so whoever is to
// stay slowed there has to be told when one that leaves takes it back.
class LinuxBand::LeavingTogether final : public Leaving {
 public:
  LeavingTogether(LinuxBand& band, const ProcessView& view) : m_band(band), m_view(view) {
    if (view.birthMark()) m_birthMark = static_cast<Pid>(*view.birthMark());
  }

  bool leave(Pid pid) override {
    const ProcessRecord* process = m_view.find(pid);
    if (process == nullptr) return m_band.leaveBackgroundBand(pid); // born since the look
    m_left.insert(pid);
    const std::optional<ThreadMark> mark = m_band.markOf(*process);
    if (!mark) {
      m_band.m_threads.releaseUnmarked(pid);
      if (m_band.m_sessions.owes(pid)) raiseSession(*process);
      return true;
    }
    if (m_band.m_units.hasLowered()) noteUnit(pid);

    // The session's weight goes back before the mark that remembers it.
    auto session = SessionWeights::Outcome::done;
    if (mark->sessionLowered) session = raiseSession(*process);
    const bool out = m_band.m_departures.leave(pid, session != SessionWeights::Outcome::done,
                                               {m_birthMark, process->threads == 1});
    return out && session != SessionWeights::Outcome::impossible;
  }

  // Somebody who chooses an I/O class puts it over the mark.
  void releaseInherited(Pid pid) override {
    if (m_view.find(pid) != nullptr) m_band.m_threads.releaseUnmarked(pid);
  }

  std::vector<Pid> finish() override {
    std::vector<Pid> raised;
    for (const auto& [session, outcome] : m_sessions) {
      for (const std::size_t place : m_view.session(session)) noteRaised(m_view.all()[place].pid, raised);
    }
    for (const auto& [path, leavers] : m_units) leaveUnit(path, leavers, raised);
    return raised;
  }

 private:
  SessionWeights::Outcome raiseSession(const ProcessRecord& process) {
    const auto known = m_sessions.find(process.session);
    if (known != m_sessions.end() && known->second == SessionWeights::Outcome::done) return known->second;
    auto outcome = m_band.m_sessions.raise({process.pid});
    if (outcome == SessionWeights::Outcome::impossible) outcome = m_band.m_sessions.raise(othersOf(process));
    m_sessions[process.session] = outcome;
    return outcome;
  }

  std::vector<Pid> othersOf(const ProcessRecord& process) const {
    std::vector<Pid> pids;
    for (const std::size_t place : m_view.session(process.session)) pids.push_back(m_view.all()[place].pid);
    return pids;
  }

  void noteUnit(Pid pid) {
    if (const auto unit = m_band.m_units.loweredUnitOf(m_band.m_kernel.unifiedPath(pid))) {
      m_units[unit->path].push_back(pid);
    }
  }

  void noteRaised(Pid pid, std::vector<Pid>& raised) const {
    if (!m_left.contains(pid) && m_band.carriesOwnMark(pid)) raised.push_back(pid);
  }

  // Those that leave are moved out of a unit in which others are to stay slowed; only when that is impossible
  // the unit gets its weight back.
  void leaveUnit(const std::string& path, const std::vector<Pid>& leavers, std::vector<Pid>& raised) {
    std::vector<Pid> others;
    bool allStaySlowed = true;
    for (const Pid pid : m_band.m_units.processesIn(path).value_or(std::vector<Pid>{})) {
      if (m_left.contains(pid)) continue;
      const ProcessRecord* process = m_view.find(pid);
      if (process == nullptr && !m_band.m_kernel.stat(pid)) continue; // gone
      others.push_back(pid);
      allStaySlowed = allStaySlowed && m_band.carriesOwnMark(pid);
    }
    if (!others.empty() && allStaySlowed && moveOut(path, leavers, others)) return;
    m_band.m_units.raise(path);
    for (const Pid pid : others) noteRaised(pid, raised);
  }

  bool moveOut(const std::string& path, const std::vector<Pid>& leavers, const std::vector<Pid>& others) {
    std::unordered_map<Pid, std::vector<Pid>> byApp;
    for (const Pid pid : leavers) byApp[m_view.appOf(pid)].push_back(pid);
    // An app moves as a whole.
    if (std::any_of(others.begin(), others.end(),
                    [&](Pid pid) { return byApp.contains(m_view.appOf(pid)); })) {
      return false;
    }
    const auto deadline = m_band.m_kernel.now() + m_band.m_busLimit / 2;
    return std::all_of(byApp.begin(), byApp.end(), [&](const auto& entry) {
      const std::optional<ProcessStat> root = m_band.m_kernel.stat(entry.first);
      if (!root || UnitPass::scopeOf(m_band.m_units, *root).path == path) return false; // there already
      return m_band.giveUnit(m_view, entry.first, entry.second, deadline);
    });
  }

  LinuxBand& m_band;
  const ProcessView& m_view;
  std::optional<Pid> m_birthMark; // of the look
  std::set<Pid> m_left;
  std::unordered_map<Pid, SessionWeights::Outcome> m_sessions; // whose weight was taken back
  std::unordered_map<std::string, std::vector<Pid>> m_units;   // lowered ones, with those that leave them
};

std::unique_ptr<BackgroundBand::Leaving> LinuxBand::leaving(const ProcessView& view) {
  return std::make_unique<LeavingTogether>(*this, view);
}

// By itself, whoever shares its place.
bool LinuxBand::leaveBackgroundBand(Pid pid) {
  const std::optional<ProcessStat> process = m_kernel.stat(pid);
  if (!process || !process->isAlive() || process->isKernelThread()) return false;
  const std::optional<ThreadMark> mark = markOf(recordOf(*process));
  if (!m_kernel.isOwn(pid) && !isRootsDoing(mark)) {
    if (mark) m_departures.refused(pid, process->startTicks);
    return false;
  }
  if (!mark) {
    // Whoever was slowed and chooses an I/O class puts it over the mark.
    m_threads.releaseUnmarked(pid, /*isCertain=*/false);
    return true;
  }
  if (m_units.hasLowered()) m_units.raise(m_kernel.unifiedPath(pid));
  auto session = SessionWeights::Outcome::done;
  if (mark->sessionLowered) session = m_sessions.raise({pid});
  if (session == SessionWeights::Outcome::impossible) {
    std::vector<Pid> members;
    for (const ProcessStat& other : m_kernel.scan()) {
      if (other.session == process->session) members.push_back(other.pid);
    }
    session = m_sessions.raise(members);
  }
  const bool out = m_departures.leave(pid, session != SessionWeights::Outcome::done);
  return out && session != SessionWeights::Outcome::impossible;
}

// A service that root has started from a slowed app has become another user's. Nobody but root changes a
// class that he can give back, so the mark of another person's own copy says nothing of one.
bool LinuxBand::isRootsDoing(const std::optional<ThreadMark>& mark) const {
  return m_kernel.user() == 0 && mark && mark->schedulingClass != ThreadMark::SchedulingClass::unchanged;
}

std::optional<ThreadMark> LinuxBand::markOf(const ProcessRecord& process) const {
  const std::optional<ThreadMark> mark = m_threads.mark(process.pid);
  return mark || process.threads <= 1 ? mark : m_threads.anyMark(process.pid);
}

void LinuxBand::makeRoomFor(Pid boostApp, const std::function<const ProcessView&()>& look) {
  // Weights are compared between neighbours only: an app in front that stands elsewhere would share its
  // processor with all of them together, however low each of them is.
  if (!m_units.isUsable() || m_kernel.unifiedPath(boostApp).starts_with(m_units.appSlice() + "/")) return;
  const ProcessView& view = look();
  std::vector<Pid> processes;
  for (const ProcessRecord& process : view.all()) {
    if (view.appOf(process.pid) == boostApp) processes.push_back(process.pid);
  }
  giveUnit(view, boostApp, processes, m_kernel.now() + m_busLimit / 2);
}

void LinuxBand::placeAsApp(Pid pid) {
  if (!m_units.isUsable()) return;
  giveUnit(lookAt(pid), pid, {pid}, m_kernel.now() + m_busLimit);
}

bool LinuxBand::giveUnit(const ProcessView& view, Pid app, const std::vector<Pid>& processes,
                         UnitWeights::Deadline deadline) {
  auto adoption = UnitPass::adoptionOf(m_units, m_kernel, view, app, processes);
  if (!adoption) return false;
  std::vector<UnitWeights::Adoption> adoptions;
  adoptions.push_back(std::move(*adoption));
  m_units.adopt(adoptions, deadline);
  return adoptions.front().succeeded;
}

void LinuxBand::reclaim(const ProcessView* recent) {
  // Only a program that was killed leaves a process marked in part.
  const bool inPart = !std::exchange(m_hasReclaimed, true);
  ProcessView own;
  for (int count = 0; count < mostLooks; ++count) {
    if (recent == nullptr) own = lookAt(0);
    const ProcessView& view = recent == nullptr ? own : *std::exchange(recent, nullptr);
    for (const ProcessRecord& process : view.all()) {
      if (process.isKernelThread) continue;
      const bool isMarked = (inPart ? markOf(process) : m_threads.mark(process.pid)).has_value();
      if (!isMarked && !m_threads.isStray(process.pid, process.startTicks)) continue;
      if (!isOfAnotherCopy(process.pid)) leaveBackgroundBand(process.pid);
    }
    // What was born meanwhile may be a child of one whose turn was still to come.
    if (!view.birthMark() || view.isCurrent(m_kernel.birthMark())) break;
  }
  m_sessions.raiseAll();
  m_units.raiseAll();
}

// A manager's unit is asked for at once, and has no queue.
void LinuxBand::hasten(std::span<const Pid> pids) {
  for (const Pid pid : pids) m_sessions.hasten(pid);
}

bool LinuxBand::settle(std::chrono::milliseconds limit) {
  const auto end = m_kernel.now() + limit;
  const auto left = [&] {
    return std::chrono::duration_cast<std::chrono::milliseconds>(end - m_kernel.now());
  };
  // Units before all else: an order may still wait for its connection, and who computes in a unit that is
  // lowered gets hardly any of the processor time that shows that he is not in the middle of a fork. A
  // manager that hangs leaves the others half of the time.
  m_units.settle(limit / 2);
  bool isSettled = m_sessions.settle(left());
  while (isSettled && m_departures.isBusy()) {
    isSettled = left() > Departures::firstPause;
    if (!isSettled) break;
    m_kernel.sleep(Departures::firstPause);
    m_departures.proceed();
    isSettled = m_sessions.settle(left());
  }
  return m_units.settle(left()) && isSettled;
}

std::size_t LinuxBand::owed() const {
  const std::size_t known = m_sessions.owed() + m_units.owed() + m_threads.departing().size();
  return known == 0 && m_departures.isBusy() ? 1 : known; // the last look is still to come
}

} // namespace vantle
