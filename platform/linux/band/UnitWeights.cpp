// SPDX-License-Identifier: MIT
#include "platform/linux/band/UnitWeights.h"

#include "platform/linux/process/ControlGroupFile.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <system_error>
#include <utility>

namespace vantle {

namespace {

using SteadyClock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds firstRetry{1000};
constexpr milliseconds lastRetry{60'000};
constexpr milliseconds reclaimLimit{200}; // what the main loop may be held up for
constexpr milliseconds settleStep{50};
constexpr milliseconds longestAnswer{1000};
constexpr int mostSteps = 4;
constexpr int mostAttachRounds = 8; // two were enough for a shell that forks without end

bool appendPids(std::string_view lines, std::vector<Pid>& pids) {
  const char* at = lines.data();
  const char* const end = at + lines.size();
  while (at != end) {
    Pid pid = 0;
    const auto [stop, error] = std::from_chars(at, end, pid);
    if (error != std::errc{}) return false;
    if (pid > 0) pids.push_back(pid); // 0: a process that is not visible from here
    at = stop == end ? stop : stop + 1;
  }
  return true;
}

} // namespace

UnitWeights::UnitWeights(EventLoop& loop, BandLedger& ledger, Kernel& kernel,
                         std::unique_ptr<ServiceManager> manager, std::string controlGroups)
    : m_loop(loop), m_kernel(kernel), m_controlGroups(std::move(controlGroups)),
      m_managerPath(userManagerPath(kernel.user())), m_appSlice(appSlicePath(kernel.user())),
      m_ledger(ledger), m_retryDelay(firstRetry), m_manager(std::move(manager)) {}

bool UnitWeights::isUsable() const {
  if (!m_manager->isReachable() || m_manager->isLate() || m_controlGroups.empty()) return false;
  const auto controllers = m_kernel.read(m_controlGroups + m_managerPath + "/cgroup.controllers");
  return controllers && hasWord(*controllers, "cpu");
}

bool UnitWeights::isIdle(const UnitPlace& place) const {
  const auto idle = m_kernel.read(m_controlGroups + place.path + "/cpu.idle");
  return idle && idle->starts_with('1');
}

bool UnitWeights::isLowered(std::string_view processPath) const {
  return std::any_of(m_ledger.units().begin(), m_ledger.units().end(), [&](const auto& entry) {
    return m_inForce.contains(entry.place.name) && entry.place.holds(processPath);
  });
}

std::optional<UnitPlace> UnitWeights::loweredUnitOf(std::string_view processPath) const {
  for (const BandLedger::Unit& entry : m_ledger.units()) {
    if (entry.place.holds(processPath)) return entry.place;
  }
  return std::nullopt;
}

std::vector<UnitPlace> UnitWeights::lower(const std::vector<UnitPlace>& places, Deadline deadline) {
  // What is on its way back arrives first: orders are served one after the other.
  if (!m_raising.empty() && !m_manager->finish(deadline)) return {};

  auto weights = std::make_shared<std::map<std::string, std::optional<std::uint64_t>>>();
  std::vector<BandLedger::Unit> wanted;
  for (const UnitPlace& place : places) {
    if (m_raising.contains(place.name)) continue;
    if (m_inForce.contains(place.name) && isIdle(place)) continue;
    wanted.push_back({place, 0});
    m_manager->getWeight(place.name, [weights, name = place.name](std::optional<std::uint64_t> weight) {
      (*weights)[name] = weight;
    });
  }
  m_manager->finish(deadline);
  // A unit that is idle already was put there by somebody else, who will take it out again.
  const auto isUnknown = [this, &weights](BandLedger::Unit& entry) {
    entry.weight = (*weights)[entry.place.name].value_or(ServiceManager::idleWeight);
    const BandLedger::Unit* earlier = m_ledger.find(entry.place.name);
    if (!earlier) return entry.weight == ServiceManager::idleWeight;
    if (!(*weights)[entry.place.name]) return true;
    if (entry.weight == ServiceManager::idleWeight) {
      entry.weight = earlier->weight; // an order of this program's that was not undone
    } else if (entry.weight != earlier->weight) {
      m_ledger.remove(entry.place.name); // somebody else's choice by now
    }
    return false;
  };
  wanted.erase(std::remove_if(wanted.begin(), wanted.end(), isUnknown), wanted.end());
  if (wanted.empty() || m_kernel.now() >= deadline || !m_ledger.add(wanted)) return {};

  for (const BandLedger::Unit& entry : wanted) {
    m_manager->setWeight(entry.place.name, ServiceManager::idleWeight, [](bool) {});
  }
  waitUntilIdle(wanted, deadline);
  std::vector<UnitPlace> lowered;
  for (const BandLedger::Unit& entry : wanted) {
    if (isIdle(entry.place)) {
      m_inForce.insert(entry.place.name);
      lowered.push_back(entry.place);
    } else {
      raiseUnit(entry.place.name); // also when it only came too late
    }
  }
  return lowered;
}

void UnitWeights::waitUntilIdle(const std::vector<BandLedger::Unit>& entries, Deadline deadline) {
  // The first weighted unit makes the manager switch the controller on along the whole path, in more than one
  // step of its own.
  for (int step = 0; step < mostSteps && m_kernel.now() < deadline; ++step) {
    m_manager->barrier([](bool) {});
    m_manager->finish(deadline);
    if (std::all_of(entries.begin(), entries.end(),
                    [this](const auto& entry) { return isIdle(entry.place); })) {
      return;
    }
  }
}

void UnitWeights::raise(std::string_view processPath) {
  std::vector<std::string> units;
  for (const BandLedger::Unit& entry : m_ledger.units()) {
    if (entry.place.holds(processPath)) units.push_back(entry.place.name);
  }
  for (const std::string& unit : units) raiseUnit(unit);
}

void UnitWeights::raiseUnit(const std::string& unit) {
  m_inForce.erase(unit);
  const BandLedger::Unit* entry = m_ledger.find(unit);
  if (!entry || !m_raising.insert(unit).second) return;
  const std::uint64_t weight = entry->weight;
  if (isIdle(entry->place)) return giveBack(unit, weight);
  if (!entry->place.isService() && !entry->place.name.ends_with(".slice") &&
      !m_kernel.exists(m_controlGroups + entry->place.path)) {
    return forget(unit); // a scope ends with its processes, and its weight with it
  }
  m_manager->getWeight(unit, [this, unit, weight](std::optional<std::uint64_t> now) {
    if (!now) return failed(unit);
    if (*now != ServiceManager::idleWeight) return forget(unit); // somebody else's choice by now
    giveBack(unit, weight);
  });
}

void UnitWeights::giveBack(const std::string& unit, std::uint64_t weight) {
  const auto order = std::make_shared<Return>(Return{unit});
  m_returns.push_back(order);
  m_manager->setWeight(unit, weight, [this, order](bool done) {
    order->isServed = done;
    confirmReturns();
  });
}

// The manager acts on an order after it has answered, so a later question is asked: once for all orders that
// went out before it.
void UnitWeights::confirmReturns() {
  if (m_confirming > 0 || m_returns.empty()) return;
  m_confirming = m_returns.size();
  m_manager->barrier([this](bool) {
    const auto end = m_returns.begin() + static_cast<std::ptrdiff_t>(std::exchange(m_confirming, 0));
    const std::vector<std::shared_ptr<Return>> confirmed(m_returns.begin(), end);
    m_returns.erase(m_returns.begin(), end);
    for (const auto& order : confirmed) {
      const BandLedger::Unit* entry = m_ledger.find(order->unit);
      const bool isBack = order->isServed && (!entry || !isIdle(entry->place));
      isBack ? forget(order->unit) : failed(order->unit);
    }
    confirmReturns();
  });
}

// The last one on its way back has the ledger written, once for all of them.
void UnitWeights::returned(const std::string& unit) {
  m_raising.erase(unit);
  if (m_raising.empty()) m_ledger.save();
}

void UnitWeights::forget(const std::string& unit) {
  m_ledger.remove(unit);
  returned(unit);
  if (!hasDebts()) {
    m_retry.reset();
    m_retryDelay = firstRetry;
  }
}

void UnitWeights::failed(const std::string& unit) {
  returned(unit);
  if (m_retry || !m_manager->isReachable()) return;
  m_retry = m_loop.after(m_retryDelay, [this] {
    m_retry.reset();
    raiseDebts();
  });
  m_retryDelay = std::min(m_retryDelay * 2, lastRetry);
}

void UnitWeights::raiseDebts() {
  std::vector<std::string> debts;
  for (const BandLedger::Unit& entry : m_ledger.units()) {
    if (!m_inForce.contains(entry.place.name)) debts.push_back(entry.place.name);
  }
  for (const std::string& unit : debts) raiseUnit(unit);
}

std::size_t UnitWeights::countDebts() const {
  return static_cast<std::size_t>(
      std::count_if(m_ledger.units().begin(), m_ledger.units().end(),
                    [this](const auto& entry) { return !m_inForce.contains(entry.place.name); }));
}

std::size_t UnitWeights::owed() const { return m_manager->isReachable() ? countDebts() : 0; }

void UnitWeights::raiseAll() {
  m_inForce.clear();
  raiseDebts();
  m_manager->finish(m_kernel.now() + reclaimLimit);
}

bool UnitWeights::settle(milliseconds limit) {
  const Deadline end = m_kernel.now() + limit;
  for (;;) {
    // One answer that never comes must not use up the time in which the units could be asked for again.
    m_manager->finish(std::min(end, m_kernel.now() + longestAnswer));
    if (!hasDebts()) return true;
    if (m_kernel.now() >= end || !m_manager->isReachable()) return false;
    m_kernel.sleep(std::min<SteadyClock::duration>(settleStep, end - m_kernel.now()));
    raiseDebts();
  }
}

void UnitWeights::adopt(std::vector<Adoption>& adoptions, Deadline deadline) {
  auto started = std::make_shared<std::set<std::string>>();
  for (const Adoption& adoption : adoptions) {
    if (adoption.isStarted) started->insert(adoption.scope);
  }
  // Twice: one process that ended meanwhile makes the manager refuse the whole list.
  for (int attempt = 0; attempt < 2; ++attempt) {
    const std::vector<ProcessStat> now = m_kernel.scan();
    for (const Adoption& adoption : adoptions) {
      // It may be there because an order of a program before this one was served late.
      if (m_kernel.exists(m_controlGroups + m_appSlice + "/" + adoption.scope)) {
        started->insert(adoption.scope);
      }
      if (started->contains(adoption.scope)) continue;
      const std::vector<Pid> pids = adoption.outside(now);
      if (pids.empty()) continue;
      m_manager->startScope(adoption.scope, pids, [started, scope = adoption.scope](bool done) {
        if (done) started->insert(scope);
      });
    }
    m_manager->finish(deadline);
  }

  // Moving goes on after the answer, and processes that were born meanwhile are still where their parents
  // were: each round moves what is left.
  for (int round = 0; round < mostAttachRounds && m_kernel.now() < deadline; ++round) {
    m_manager->barrier([](bool) {});
    m_manager->finish(deadline);
    bool isComplete = true;
    const std::vector<ProcessStat> now = m_kernel.scan();
    for (Adoption& adoption : adoptions) {
      if (!started->contains(adoption.scope) || adoption.succeeded) continue;
      const std::vector<Pid> outside = adoption.outside(now);
      adoption.succeeded = outside.empty();
      isComplete = isComplete && adoption.succeeded;
      if (round == 0) continue; // the first move may still be under way
      for (const Pid pid : outside) m_manager->attach(adoption.scope, pid, [](bool) {});
    }
    if (isComplete) return;
    m_manager->finish(deadline);
  }
}

std::optional<std::vector<Pid>> UnitWeights::processesIn(const std::string& path) const {
  const std::string folder = m_controlGroups + path;
  const auto own = m_kernel.read(folder + "/cgroup.procs");
  std::vector<Pid> pids;
  if (!own || !appendPids(*own, pids)) return std::nullopt;
  const std::optional<std::vector<std::string>> below = m_kernel.folders(folder);
  if (!below) return std::nullopt;
  for (const std::string& name : *below) {
    const auto inner = processesIn(std::string(path).append("/").append(name));
    if (!inner) return std::nullopt;
    pids.insert(pids.end(), inner->begin(), inner->end());
  }
  return pids;
}

} // namespace vantle
