// SPDX-License-Identifier: MIT
#include "platform/linux/band/BandPass.h"

#include "platform/linux/programs/DesktopPrograms.h"

#include <algorithm>
#include <utility>

namespace vantle {

BandPass::BandPass(Parts parts, std::span<const BandGroup> groups, const std::vector<Pid>& boostApp,
                   const std::set<Pid>& everyApp)
    : m_parts(parts), m_groups(groups), m_boostTree(boostApp),
      m_boostApp(boostApp.empty() ? 0 : boostApp.back()), m_everyApp(everyApp), m_self(parts.kernel.self()),
      m_companions(groups.size()) {}

std::vector<std::vector<bool>> BandPass::run() {
  // Processes that are born during the pass from a parent whose turn was still to come are not slowed: as
  // long as anything was born anywhere, look again. Each look finds only what escaped the one before.
  constexpr int mostLooks = 4;
  for (int look = 0; look < mostLooks; ++look) {
    const std::optional<Pid> births = m_parts.kernel.birthMark();
    this->look();
    // First of all, because it decides where processes stand from then on.
    if (m_parts.units) {
      m_parts.units->run(m_groups, {m_scan, *m_owners, m_trees, m_everyApp,
                                    [this](const ProcessStat& process) { return mayTouch(process); }});
    }
    lookAtBoostApp();
    for (std::size_t at = 0; at < m_groups.size(); ++at) enterGroup(at);
    if (births && births == m_parts.kernel.birthMark()) break;
  }
  m_parts.sessions.apply();
  if (m_parts.units) m_parts.units->raiseUnused(m_enteredPaths);

  std::vector<std::vector<bool>> results;
  results.reserve(m_groups.size());
  for (const BandGroup& group : m_groups) {
    std::vector<bool>& entered = results.emplace_back();
    for (const Pid pid : group.candidates) {
      const auto found = m_entered.find(pid);
      entered.push_back(found != m_entered.end() && found->second);
    }
  }
  return results;
}

void BandPass::look() {
  m_scan = ProcessScan(m_parts.kernel.recentScan());
  m_owners.emplace(m_scan, m_everyApp);
  if (m_boostApp != 0) m_owners->claim(m_boostApp, m_boostTree);
  for (const BandGroup& group : m_groups) m_owners->claim(group.root, group.tree);
  m_trees.assign(m_groups.size(), {});
  std::unordered_map<Pid, std::size_t> places;
  for (std::size_t at = 0; at < m_groups.size(); ++at) places.emplace(m_groups[at].root, at);
  for (const ProcessStat& process : m_scan.all()) {
    const auto place = places.find(appOf(process));
    if (place != places.end()) m_trees[place->second].push_back(process.pid);
  }
  m_sessionPlans.clear();
  // What could not be slowed before may stand elsewhere by now.
  std::erase_if(m_entered, [](const auto& one) { return !one.second; });
}

void BandPass::lookAtBoostApp() {
  m_boostGroups.clear();
  if (m_boostApp == 0) return;
  for (const Pid pid : m_owners->processesOf(m_boostApp)) {
    m_boostGroups.push_back(m_parts.taskGroups.of(*m_scan.find(pid)));
  }
}

void BandPass::enterGroup(std::size_t at) {
  const BandGroup& group = m_groups[at];
  bool any = false;
  for (const Pid pid : group.candidates) {
    const ProcessStat* process = m_scan.find(pid);
    any = (process && enter(*process)) || any;
  }
  if (!any) return;
  // What the caller could not see: born since, or orphans.
  const std::unordered_set<Pid> known(group.tree.begin(), group.tree.end());
  for (const Pid pid : m_trees[at]) {
    if (known.contains(pid) || m_entered.contains(pid)) continue;
    const ProcessStat& process = *m_scan.find(pid);
    if (enter(process)) m_companions[at].push_back(process);
  }
}

bool BandPass::enter(const ProcessStat& process) {
  if (const auto known = m_entered.find(process.pid); known != m_entered.end()) return known->second;
  bool& entered = m_entered[process.pid];
  if (!mayTouch(process)) return false;
  const Lever lever = leverFor(process);
  if (lever == Lever::none) return false;
  ThreadLevers::Plan plan;
  plan.classIsTheEffect = lever == Lever::schedulingClass;
  plan.sessionLowered = lever == Lever::session;
  entered = m_parts.threads.enter(process.pid, plan);
  if (entered && lever == Lever::unit) m_enteredPaths.push_back(m_parts.kernel.unifiedPath(process.pid));
  // The mark comes first: from here on a crash leaves the session's weight to be found by it.
  if (entered && lever == Lever::session) {
    const SessionPlan& session = sessionPlan(process.session);
    if (m_lowered.insert(process.session).second)
      m_parts.sessions.lower(session.group, session.members, session.load);
  }
  return entered;
}

bool BandPass::mayTouch(const ProcessStat& process) {
  const auto known = m_mayTouch.find(process.pid);
  if (known != m_mayTouch.end()) return known->second;
  const bool may = process.pid > 1 && process.pid != m_self && !process.isKernelThread() &&
                   process.isAlive() && (m_boostApp == 0 || appOf(process) != m_boostApp) &&
                   !isSystemPart(process.shortName()) && m_parts.kernel.isOwn(process.pid);
  return m_mayTouch.emplace(process.pid, may).first->second;
}

BandPass::Lever BandPass::leverFor(const ProcessStat& process) {
  if (m_parts.units && m_parts.unitWeights.isLowered(m_parts.kernel.unifiedPath(process.pid))) {
    return Lever::unit;
  }
  const TaskGroup group = m_parts.taskGroups.of(process);
  if (group.kind == TaskGroup::Kind::session && sessionPlan(group.session).app == appOf(process)) {
    return Lever::session;
  }
  // A scheduling class says something only to those in the same group. Without an app in front to compare
  // with, that is everybody as long as there are no groups.
  const bool meetsBoostApp = m_boostGroups.empty() ? group.kind == TaskGroup::Kind::root
                                                   : std::find(m_boostGroups.begin(), m_boostGroups.end(),
                                                               group) != m_boostGroups.end();
  if (meetsBoostApp && group.kind != TaskGroup::Kind::unknown) return Lever::schedulingClass;
  return Lever::none;
}

const BandPass::SessionPlan& BandPass::sessionPlan(Pid session) {
  const auto known = m_sessionPlans.find(session);
  if (known != m_sessionPlans.end()) return known->second;
  SessionPlan plan;
  bool isShared = false;
  for (const std::size_t place : m_scan.session(session)) {
    const ProcessStat& process = m_scan.all()[place];
    if (!process.isAlive()) continue;
    const Pid app = appOf(process);
    isShared = app == 0 || (!plan.members.empty() && app != plan.app) || !mayTouch(process);
    if (isShared) break;
    plan.app = app;
    plan.members.push_back(process.pid);
    plan.load.running += process.state == 'R' ? 1 : 0;
    plan.load.cpuTicks += process.cpuTicks();
  }
  const std::optional<Autogroup> group = isShared ? std::nullopt : weightThatIsOurs(plan.members);
  if (group) plan.group = *group;
  if (!group) plan.app = 0;
  return m_sessionPlans.emplace(session, std::move(plan)).first->second;
}

// The session whose weight can be lowered, or was lowered by this program earlier.
std::optional<Autogroup> BandPass::weightThatIsOurs(const std::vector<Pid>& members) const {
  for (const Pid pid : members) {
    const std::optional<Autogroup> group = m_parts.kernel.writableAutogroup(pid);
    if (!group) continue;
    if (group->nice == SessionWeights::own) return group;
    const std::optional<ThreadMark> mark = m_parts.threads.mark(pid);
    if (group->nice == SessionWeights::lowered && mark && mark->sessionLowered) return group;
  }
  return std::nullopt;
}

} // namespace vantle
