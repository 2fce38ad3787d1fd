// SPDX-License-Identifier: MIT
#include "platform/simulated/SimulatedBand.h"

namespace vantle {

void SimulatedBand::putInByOthers(Pid pid) {
  if (SimulatedProcess* process = m_processes.find(pid)) process->band = BandState::byOthers;
}

void SimulatedBand::takeOutByOthers(Pid pid) {
  if (SimulatedProcess* process = m_processes.find(pid)) process->band = BandState::normal;
}

bool SimulatedBand::isIn(Pid pid) const {
  const SimulatedProcess* process = m_processes.find(pid);
  return process != nullptr && process->band != BandState::normal;
}

bool SimulatedBand::change(Operation operation, Pid pid, BandState state) {
  bool changed = false;
  m_calls.change({.operation = operation, .pid = pid}, [&] {
    SimulatedProcess* process = m_processes.find(pid);
    if (process == nullptr || process->isZombie) return;
    changed = true;
    if (isEffective) process->band = state;
  });
  return changed;
}

bool SimulatedBand::enterBackgroundBand(Pid pid) {
  return change(Operation::enterBand, pid, BandState::byVantle);
}

bool SimulatedBand::leaveBackgroundBand(Pid pid) {
  return change(Operation::leaveBand, pid, BandState::normal);
}

std::optional<bool> SimulatedBand::isInBackgroundBand(Pid pid) const {
  const SimulatedProcess* process = m_processes.find(pid);
  if (!m_calls.read({.operation = Operation::isInBand, .pid = pid}) || process == nullptr) {
    return std::nullopt;
  }
  return process->band != BandState::normal;
}

void SimulatedBand::prepareBoostApp(Pid root, std::span<const Pid> /*tree*/,
                                    const std::set<Pid>& /*everyApp*/) {
  m_calls.change({.operation = Operation::prepareBoostApp, .pid = root}, [&] { m_preparedFor = root; });
}

void SimulatedBand::releaseInherited(Pid root, const std::set<Pid>& everyApp) {
  if (!knowsItsOwnTraces) return;
  for (const auto& [pid, known] : m_processes.all()) {
    if (known.band != BandState::byVantle) continue;
    const SimulatedProcess* owner = &known;
    while (owner != nullptr && !everyApp.contains(owner->pid)) owner = m_processes.find(owner->parent);
    if (owner != nullptr && owner->pid == root) m_processes.find(pid)->band = BandState::normal;
  }
}

void SimulatedBand::reclaim() {
  m_calls.change({.operation = Operation::reclaimBand}, [this] {
    m_preparedFor.reset();
    if (!knowsItsOwnTraces) return;
    for (const auto& [pid, known] : m_processes.all()) {
      if (known.band == BandState::byVantle) m_processes.find(pid)->band = BandState::normal;
    }
  });
}

bool SimulatedBand::settle(std::chrono::milliseconds /*limit*/) {
  return m_calls.read({.operation = Operation::settleBand});
}

} // namespace vantle
