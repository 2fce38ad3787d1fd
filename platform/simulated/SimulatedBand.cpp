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

bool SimulatedBand::carriesOwnMark(Pid pid) const {
  const SimulatedProcess* process = m_processes.find(pid);
  return knowsItsOwnTraces && process != nullptr && process->band == BandState::byVantle;
}

void SimulatedBand::makeRoomFor(Pid boostApp, const std::function<const ProcessView&()>& /*look*/) {
  m_calls.change({.operation = Operation::makeRoom, .pid = boostApp}, [&] { m_preparedFor = boostApp; });
}

void SimulatedBand::reclaim(const ProcessView* /*recent*/) {
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
