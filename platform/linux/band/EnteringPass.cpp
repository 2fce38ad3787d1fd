// SPDX-License-Identifier: MIT
#include "platform/linux/band/EnteringPass.h"

#include <algorithm>
#include <utility>

namespace vantle {

EnteringPass::EnteringPass(Parts parts, const BandPass& pass)
    : m_parts(parts), m_pass(pass), m_slowed(pass.slowed), m_taskGroups(parts.kernel, parts.controlGroups) {
  for (const BandApp& app : pass.apps) m_slowed.insert(app.root);
}

std::vector<std::vector<BandAnswer>> EnteringPass::run() {
  // First of all, because it decides where processes stand from then on.
  if (m_parts.units.isUsable()) {
    const std::string front =
        m_pass.boostApp == 0 ? std::string() : m_parts.kernel.unifiedPath(m_pass.boostApp);
    // Without an app in front a path stands for a neighbour of all apps.
    m_units.emplace(m_parts.units, m_parts.kernel, front.empty() ? m_parts.units.appSlice() + "/-" : front,
                    m_parts.kernel.now() + m_parts.busLimit);
    m_units->run(m_pass, [this](const ProcessRecord& process) { return mayTouch(process); });
  }
  m_isStale = !m_pass.view.isCurrent(m_parts.kernel.birthMark());
  findBoostGroups();

  std::vector<std::vector<BandAnswer>> answers;
  answers.reserve(m_pass.apps.size());
  for (const BandApp& app : m_pass.apps) {
    std::vector<BandAnswer>& ofApp = answers.emplace_back();
    for (const Pid pid : app.candidates) ofApp.push_back(answerFor(pid));
    // An app that shares a place with something that must not be slowed would be slowed in part only.
    const bool isShared = std::any_of(
        ofApp.begin(), ofApp.end(), [](const BandAnswer& one) { return one.refusal == BandRefusal::shared; });
    for (std::size_t index = 0; index < ofApp.size(); ++index) {
      BandAnswer& answer = ofApp[index];
      if (isShared) answer = {BandRefusal::shared};
      if (answer.entered()) answer = enter(app.candidates[index], answer.lever);
    }
  }
  if (!m_isStale && !m_pass.view.isCurrent(m_parts.kernel.birthMark())) {
    for (const auto& [pid, plan] : m_entered) m_parts.threads.complete(pid, plan);
  }
  giveUpShared(answers);
  if (m_parts.threads.isDeparting()) m_parts.departures.expectBirths({}); // who was refused half-way
  m_parts.sessions.apply();
  if (m_units) m_units->raiseUnused(m_enteredPaths);
  return answers;
}

// The weight of a session counted on all apps of this pass, and one of them may have been refused.
void EnteringPass::giveUpShared(std::vector<std::vector<BandAnswer>>& answers) {
  std::set<Pid> outside;
  for (bool isNew = true; isNew;) {
    isNew = false;
    for (std::size_t at = 0; at < answers.size(); ++at) {
      const Pid root = m_pass.apps[at].root;
      const bool isIn =
          m_pass.slowed.contains(root) || std::any_of(answers[at].begin(), answers[at].end(),
                                                      [](const BandAnswer& one) { return one.entered(); });
      if (!isIn && outside.insert(root).second) isNew = giveUpSessionsOf(root, answers) || isNew;
    }
  }
}

bool EnteringPass::giveUpSessionsOf(Pid refused, std::vector<std::vector<BandAnswer>>& answers) {
  bool any = false;
  for (std::size_t at = 0; at < answers.size(); ++at) {
    for (std::size_t index = 0; index < answers[at].size(); ++index) {
      BandAnswer& answer = answers[at][index];
      if (!answer.entered() || answer.lever != BandLever::session) continue;
      const Pid pid = m_pass.apps[at].candidates[index];
      const SessionPlan& plan = sessionPlan(m_pass.view.find(pid)->session);
      if (std::none_of(plan.members.begin(), plan.members.end(),
                       [&](Pid member) { return m_pass.view.appOf(member) == refused; })) {
        continue;
      }
      const auto outcome = m_parts.sessions.raise(plan.members);
      m_parts.departures.leave(pid, outcome == SessionWeights::Outcome::queued);
      answer = {BandRefusal::shared};
      any = true;
    }
  }
  return any;
}

void EnteringPass::findBoostGroups() {
  if (m_pass.boostApp == 0) return;
  for (const ProcessRecord& process : m_pass.view.all()) {
    if (m_pass.view.appOf(process.pid) != m_pass.boostApp) continue;
    TaskGroup group = m_taskGroups.of(process.pid, process.session);
    if (std::find(m_boostGroups.begin(), m_boostGroups.end(), group) == m_boostGroups.end())
      m_boostGroups.push_back(std::move(group));
  }
}

BandAnswer EnteringPass::answerFor(Pid pid) {
  const ProcessRecord* process = m_pass.view.find(pid);
  if (process == nullptr) return {BandRefusal::gone};
  if (m_isStale) {
    // Its number may be another one's by now.
    const std::optional<ProcessStat> now = m_parts.kernel.stat(pid);
    if (!now || !now->isAlive() || now->startTicks != process->startTicks) return {BandRefusal::gone};
  }
  if (!mayTouch(*process)) return {BandRefusal::notAllowed};
  return leverFor(*process);
}

BandAnswer EnteringPass::enter(Pid pid, BandLever lever) {
  const ProcessRecord* process = m_pass.view.find(pid);
  ThreadLevers::Plan plan;
  plan.classIsTheEffect = lever == BandLever::schedulingClass;
  plan.sessionLowered = lever == BandLever::session;
  ThreadsSeen seen;
  if (!m_isStale) seen = {static_cast<Pid>(*m_pass.view.birthMark()), process->threads == 1, true};
  if (!m_parts.threads.enter(pid, plan, seen)) return {BandRefusal::noWayBack};
  m_entered.emplace_back(pid, plan);
  if (lever == BandLever::unit) m_enteredPaths.push_back(m_units->pathOf(pid));
  // The mark comes first: from here on a crash leaves the session's weight to be found by it.
  if (lever == BandLever::session && m_lowered.insert(process->session).second) {
    const SessionPlan& session = sessionPlan(process->session);
    m_parts.sessions.lower(session.group, session.members, session.load);
  }
  return {{}, lever};
}

bool EnteringPass::mayTouch(const ProcessRecord& process) {
  const auto known = m_mayTouch.find(process.pid);
  if (known != m_mayTouch.end()) return known->second;
  const Pid app = m_pass.view.appOf(process.pid);
  const bool may = process.pid > 1 && process.pid != m_parts.kernel.self() && !process.isKernelThread &&
                   process.role != ProcessRole::system && (m_pass.boostApp == 0 || app != m_pass.boostApp) &&
                   isOwn(process);
  return m_mayTouch.emplace(process.pid, may).first->second;
}

bool EnteringPass::isOwn(const ProcessRecord& process) {
  // An ordinary user's own file says all; root's may be that of a process which hides its memory.
  if (process.user != 0 && process.user == m_parts.kernel.user()) return true;
  const auto parent = m_mayTouch.find(process.parent);
  const bool isOwnParents = parent != m_mayTouch.end() && parent->second;
  return isOwnParents ? m_parts.kernel.isOwnChild(process.pid) : m_parts.kernel.isOwn(process.pid);
}

BandAnswer EnteringPass::leverFor(const ProcessRecord& process) {
  if (m_units && m_parts.units.isLowered(m_units->pathOf(process.pid))) return {{}, BandLever::unit};
  const TaskGroup group = m_taskGroups.of(process.pid, process.session);
  std::optional<BandRefusal> refusal;
  if (group.kind == TaskGroup::Kind::session) {
    refusal = sessionPlan(group.session).refusal;
    if (!refusal) return {{}, BandLever::session};
  }
  // A scheduling class says something only to those in the same group. Without an app in front to compare
  // with, that is everybody as long as there are no groups.
  const bool meetsBoostApp = m_boostGroups.empty() ? group.kind == TaskGroup::Kind::root
                                                   : std::find(m_boostGroups.begin(), m_boostGroups.end(),
                                                               group) != m_boostGroups.end();
  if (meetsBoostApp && group.kind != TaskGroup::Kind::unknown) return {{}, BandLever::schedulingClass};
  return {refusal.value_or(BandRefusal::noLever)};
}

const EnteringPass::SessionPlan& EnteringPass::sessionPlan(Pid session) {
  const auto known = m_sessionPlans.find(session);
  if (known != m_sessionPlans.end()) return known->second;
  SessionPlan plan;
  for (const std::size_t place : m_pass.view.session(session)) {
    const ProcessRecord& process = m_pass.view.all()[place];
    const Pid app = m_pass.view.appOf(process.pid);
    // It has one weight for all that stand in it.
    if (app == 0 || !isSlowed(app) || !mayTouch(process)) {
      plan.refusal = BandRefusal::shared;
      break;
    }
    plan.members.push_back(process.pid);
    plan.load.running += process.isRunning ? 1 : 0;
    plan.load.cpuTicks += process.cpuTicks;
  }
  if (!plan.refusal) {
    const std::optional<Autogroup> group = weightThatIsOurs(plan.members);
    if (group) {
      plan.group = *group;
    } else {
      plan.refusal = BandRefusal::noWayBack;
    }
  }
  return m_sessionPlans.emplace(session, std::move(plan)).first->second;
}

// The session whose weight can be lowered, or was lowered by this program earlier.
std::optional<Autogroup> EnteringPass::weightThatIsOurs(const std::vector<Pid>& members) const {
  for (const Pid pid : members) {
    const std::optional<Autogroup> group = m_parts.kernel.writableAutogroup(pid);
    if (!group) continue;
    if (group->nice == SessionWeights::own) return group;
    if (group->nice != SessionWeights::lowered) continue;
    const std::optional<ThreadMark> mark = m_parts.threads.mark(pid);
    if ((mark && mark->sessionLowered) || m_parts.sessions.owes(pid)) return group;
  }
  return std::nullopt;
}

} // namespace vantle
