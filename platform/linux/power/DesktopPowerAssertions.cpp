// SPDX-License-Identifier: MIT
#include "platform/linux/power/DesktopPowerAssertions.h"

#include "platform/linux/power/NamedInhibitors.h"
#include "platform/linux/power/SessionInhibitors.h"

#include <chrono>
#include <map>
#include <utility>

namespace vantle {

namespace {

constexpr std::chrono::milliseconds longestWait{200};

using Held = std::map<Pid, InhibitorKinds>;

void hold(Held& held, const std::set<Pid>& processes, const InhibitorKinds& kinds) {
  for (const Pid pid : processes) {
    held[pid].sleep |= kinds.sleep;
    held[pid].idle |= kinds.idle;
  }
}

std::vector<PowerAssertions::Assertion> assertionsOf(const Held& held) {
  std::vector<PowerAssertions::Assertion> assertions;
  for (const auto& [pid, kinds] : held) {
    if (kinds.sleep) assertions.push_back({pid, "PreventSystemSleep"});
    if (kinds.idle) {
      assertions.push_back({pid, "PreventUserIdleSystemSleep"});
      assertions.push_back({pid, "PreventUserIdleDisplaySleep"});
    }
  }
  return assertions;
}

} // namespace

DesktopPowerAssertions::DesktopPowerAssertions(BusConnection& systemBus, BusConnection& sessionBus,
                                               HolderSources search)
    : m_systemBus(systemBus), m_sessionBus(sessionBus), m_search(std::move(search)), m_login(systemBus),
      m_portal(sessionBus), m_session(namedInhibitorSources(sessionBus)) {
  m_session.push_back(std::make_unique<SessionInhibitors>(sessionBus));
}

template <class Visitor> void DesktopPowerAssertions::forEachSource(Visitor visit) {
  visit(m_login);
  visit(m_portal);
  for (const auto& source : m_session) visit(*source);
}

std::vector<PowerAssertions::Assertion> DesktopPowerAssertions::assertions() {
  m_daemons.ask();
  awaitTogether({&m_daemons}, m_daemons.deadline());
  m_hasLogindAnswered = m_login.hasAnswered();
  m_daemons.giveUp();
  return resolved();
}

void DesktopPowerAssertions::Daemons::ask() {
  if (m_isAsked) return;
  m_isAsked = true;
  m_deadline = std::chrono::steady_clock::now() + longestWait;
  advance(); // answers that came too late for the last decision: their daemons can be asked again
  m_owner.forEachSource([](InhibitorSource& source) { source.ask(); });
}

bool DesktopPowerAssertions::Daemons::isAsking() const {
  if (!m_isAsked || !canBeAnswered()) return false;
  bool isAnswered = true;
  m_owner.forEachSource(
      [&](const InhibitorSource& source) { isAnswered = isAnswered && source.isAnswered(); });
  return !isAnswered;
}

void DesktopPowerAssertions::Daemons::giveUp() {
  m_isAsked = false;
  m_owner.forEachSource([](InhibitorSource& source) { source.giveUp(); });
}

std::set<Pid> DesktopPowerAssertions::standIns() const {
  std::set<Pid> pids;
  for (const auto& source : m_session) {
    if (source->findings().daemon) pids.insert(*source->findings().daemon);
  }
  return pids;
}

std::vector<PowerAssertions::Assertion> DesktopPowerAssertions::resolved() const {
  HolderSearch search(m_search);
  Held held;
  bool isSomebodyMissing = false;
  const auto resolve = [&](const Inhibitor& inhibitor) {
    const std::set<Pid> found = search.find(inhibitor);
    isSomebodyMissing = isSomebodyMissing || found.empty();
    hold(held, found, inhibitor.kinds);
  };
  const std::set<Pid> others = standIns();
  for (const Inhibitor& inhibitor : m_login.findings().inhibitors) {
    if (!others.contains(inhibitor.processes.front())) resolve(inhibitor);
  }
  for (const auto& source : m_session) {
    for (const Inhibitor& inhibitor : source->findings().inhibitors) resolve(inhibitor);
  }
  // Apps without an id for which the portal asked have no name in these lists.
  if (isSomebodyMissing) {
    for (const Inhibitor& request : m_portal.findings().inhibitors) resolve(request);
  }
  return assertionsOf(held);
}

} // namespace vantle
