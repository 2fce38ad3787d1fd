// SPDX-License-Identifier: MIT
#include "platform/simulated/SimulatedProcesses.h"

#include "base/Invariant.h"

#include <algorithm>
#include <utility>

namespace vantle {

namespace {

constexpr Pid firstProcess = 1;
constexpr int normalPriority = 20;
constexpr int bandPriority = 39;

ProcessRecord recordOf(const SimulatedProcess& process) {
  const ProcessIdentity identity = process.identity();
  ProcessRecord record;
  record.pid = process.pid;
  record.parent = process.parent;
  record.startSec = identity.startSec;
  record.startUsec = identity.startUsec;
  record.startTicks = process.startMicros;
  record.session = process.session;
  record.role = process.role;
  return record;
}

} // namespace

SimulatedProcesses::SimulatedProcesses(SimulatedCalls& calls, SimulatedClock& clock)
    : m_calls(calls), m_clock(clock) {
  SimulatedProcess init;
  init.pid = firstProcess;
  init.startMicros = clock.stamp();
  init.executable = "/sbin/init";
  m_processes.emplace(firstProcess, std::move(init));
}

std::optional<Pid> SimulatedProcesses::freePidOfThisTick() {
  const std::uint64_t now = m_clock.stamp();
  for (Pid tried = firstProcess; tried < m_highest; ++tried) {
    m_last = m_last < m_highest ? m_last + 1 : firstProcess + 1;
    const auto earlier = m_lastStart.find(m_last);
    const bool bornInThisTick = earlier != m_lastStart.end() && earlier->second == now;
    if (m_processes.contains(m_last) || bornInThisTick) continue;
    if (!namesSession(m_last) && (!isReserved || !isReserved(m_last))) return m_last;
  }
  return std::nullopt;
}

bool SimulatedProcesses::namesSession(Pid pid) const {
  return std::any_of(m_processes.begin(), m_processes.end(),
                     [pid](const auto& entry) { return entry.first != pid && entry.second.session == pid; });
}

Pid SimulatedProcesses::nextFreePid() {
  std::optional<Pid> pid = freePidOfThisTick();
  if (!pid) {
    m_clock.advance(std::chrono::microseconds(m_clock.resolution()));
    pid = freePidOfThisTick();
  }
  invariant(pid.has_value(), "the simulated machine has no pid left");
  return *pid;
}

Pid SimulatedProcesses::spawn(const ProcessSpec& spec) {
  const SimulatedProcess* parent = find(spec.parent);
  invariant(parent != nullptr && !parent->isZombie, "the parent of a simulated process does not live");
  const Pid pid = spec.pid ? *spec.pid : nextFreePid();
  invariant(!m_processes.contains(pid), "a simulated pid is taken");
  SimulatedProcess process;
  process.pid = pid;
  process.parent = spec.parent;
  process.startMicros = m_clock.stamp();
  process.executable = spec.executable;
  process.footprint = spec.footprint;
  process.isBusy = spec.isBusy;
  process.band = parent->band;
  ++m_births;
  process.session = spec.leadsSession ? pid : parent->session;
  process.role = spec.role;
  process.place = spec.place.empty() ? parent->place : spec.place;
  process.origin = spec.origin;
  if (!m_lastStart.insert_or_assign(pid, process.startMicros).second) ++m_reusedPids;
  const auto born = m_processes.emplace(pid, std::move(process)).first;
  if (onBirth) onBirth(born->second);
  return pid;
}

void SimulatedProcesses::orphanChildrenOf(Pid pid) {
  for (auto& [childPid, child] : m_processes) {
    if (child.parent == pid) child.parent = firstProcess;
  }
}

void SimulatedProcesses::exit(Pid pid) {
  const SimulatedProcess* process = find(pid);
  if (process == nullptr) return;
  if (onEnd && !process->isZombie) onEnd(pid);
  m_processes.erase(pid);
  orphanChildrenOf(pid);
}

void SimulatedProcesses::exitAsZombie(Pid pid) {
  SimulatedProcess* process = find(pid);
  if (process == nullptr) return;
  if (onEnd && !process->isZombie) onEnd(pid);
  process->isZombie = true;
  process->isBusy = false;
  orphanChildrenOf(pid);
}

void SimulatedProcesses::reap(Pid zombie) {
  const SimulatedProcess* process = find(zombie);
  if (process != nullptr && process->isZombie) m_processes.erase(zombie);
}

SimulatedProcess* SimulatedProcesses::find(Pid pid) {
  const auto found = m_processes.find(pid);
  return found == m_processes.end() ? nullptr : &found->second;
}

const SimulatedProcess* SimulatedProcesses::find(Pid pid) const {
  const auto found = m_processes.find(pid);
  return found == m_processes.end() ? nullptr : &found->second;
}

bool SimulatedProcesses::lives(const ProcessIdentity& identity) const {
  const SimulatedProcess* process = find(identity.pid);
  return process != nullptr && !process->isZombie && process->identity() == identity;
}

void SimulatedProcesses::passTime(std::chrono::microseconds duration) {
  const auto milliseconds = static_cast<std::uint64_t>(duration.count()) / 1000;
  for (auto& [pid, process] : m_processes) {
    if (!process.isBusy) continue;
    const bool isNormal = process.band == BandState::normal;
    process.cpuTime += milliseconds * (isNormal ? cpu.normalPerMillisecond : cpu.bandPerMillisecond);
  }
}

const SimulatedProcess* SimulatedProcesses::readable(Operation operation, Pid pid) const {
  return m_calls.read({.operation = operation, .pid = pid}) ? find(pid) : nullptr;
}

std::optional<ProcessRecord> SimulatedProcesses::record(Pid pid) const {
  const SimulatedProcess* process = readable(Operation::readRecord, pid);
  if (process == nullptr) return std::nullopt;
  return recordOf(*process);
}

std::optional<std::uint64_t> SimulatedProcesses::birthMark() const {
  return tellsOfBirths ? std::optional(m_births) : std::nullopt;
}

std::string SimulatedProcesses::place(Pid pid) const {
  const SimulatedProcess* process = find(pid);
  return process == nullptr ? std::string() : process->place;
}

std::string SimulatedProcesses::origin(Pid pid) const {
  const SimulatedProcess* process = find(pid);
  return process == nullptr ? std::string() : process->origin;
}

std::vector<ProcessRecord> SimulatedProcesses::scan() const {
  std::vector<ProcessRecord> records;
  if (!m_calls.read({.operation = Operation::scanProcesses})) return records;
  records.reserve(m_processes.size());
  for (const auto& [pid, process] : m_processes) records.push_back(recordOf(process));
  return records;
}

std::optional<std::string> SimulatedProcesses::executablePathBytes(Pid pid) const {
  const SimulatedProcess* process = readable(Operation::readExecutablePath, pid);
  if (process == nullptr || process->isZombie) return std::nullopt;
  return process->executable;
}

std::optional<std::uint64_t> SimulatedProcesses::footprint(Pid pid) const {
  const SimulatedProcess* process = readable(Operation::readFootprint, pid);
  if (process == nullptr) return std::nullopt;
  return process->isZombie ? 0 : process->footprint;
}

std::optional<std::uint64_t> SimulatedProcesses::cpuTime(Pid pid) const {
  const SimulatedProcess* process = readable(Operation::readCpuTime, pid);
  if (process == nullptr) return std::nullopt;
  return process->cpuTime;
}

std::optional<int> SimulatedProcesses::schedulerPriority(Pid pid) const {
  const SimulatedProcess* process = readable(Operation::readPriority, pid);
  if (process == nullptr) return std::nullopt;
  return process->band == BandState::normal ? normalPriority : bandPriority;
}

} // namespace vantle
