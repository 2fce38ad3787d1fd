// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/ProcessIdentity.h"
#include "engine/ports/ProcessTable.h"
#include "platform/simulated/SimulatedCalls.h"
#include "platform/simulated/SimulatedClock.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vantle {

// Who put a process into the band. A child inherits it from its parent.
enum class BandState { normal, byVantle, byOthers };

struct ProcessSpec {
  Pid parent = 1;
  std::string executable = "/usr/bin/program";
  std::uint64_t footprint = 0; // bytes
  bool isBusy = false;         // uses all the CPU it gets
  bool leadsSession = false;   // has a session of its own; otherwise its parent's
  ProcessRole role = ProcessRole::program;
  std::string place{};      // that the desktop made for its app; its parent's when empty
  std::string origin{};     // what it came with
  std::optional<Pid> pid{}; // a particular free one; otherwise the next free one
};

struct SimulatedProcess {
  Pid pid = 0;
  Pid parent = 0;
  std::uint64_t startMicros = 0;
  std::string executable;
  std::uint64_t footprint = 0;
  std::uint64_t cpuTime = 0;
  BandState band = BandState::normal;
  Pid session = 0;
  ProcessRole role = ProcessRole::program;
  std::string place;
  std::string origin;
  bool isBusy = false;
  bool isZombie = false; // ended, but its parent has not taken note: still listed, cannot be changed

  ProcessIdentity identity() const { return {pid, startMicros / 1'000'000, startMicros % 1'000'000}; }
};

// How much CPU time each busy process gets for a millisecond that passes.
struct CpuModel {
  std::uint64_t normalPerMillisecond = 1000;
  std::uint64_t bandPerMillisecond = 50;
};

// The kernel's table of processes. Pids are handed out upwards and again from the start after the highest,
// as a kernel does it; a pid is never reused within one tick of the start times:
// when only such are left, the tick passes.
class SimulatedProcesses final : public ProcessTable {
 public:
  SimulatedProcesses(SimulatedCalls& calls, SimulatedClock& clock);

  Pid spawn(const ProcessSpec& spec);
  // Ends a process: what it started goes to process 1, its pid is free again.
  void exit(Pid pid);
  void exitAsZombie(Pid pid); // its pid stays taken until it is reaped
  void reap(Pid zombie);

  SimulatedProcess* find(Pid pid);
  const SimulatedProcess* find(Pid pid) const;
  const std::map<Pid, SimulatedProcess>& all() const { return m_processes; }
  bool lives(const ProcessIdentity& identity) const; // a zombie does not

  bool namesSession(Pid pid) const; // of others: such a number is never given out

  void setHighestPid(Pid highest) { m_highest = highest; } // small values make reuse happen soon
  std::size_t reusedPids() const { return m_reusedPids; }  // processes whose pid another one had before
  bool tellsOfBirths = false;                              // whether there is a birth mark
  // For a model of more than the table: sees each process that was born, and each that stops running (before
  // it is gone), and may keep numbers from being given out.
  std::function<void(const SimulatedProcess&)> onBirth;
  std::function<void(Pid)> onEnd;
  std::function<bool(Pid)> isReserved;
  CpuModel cpu;
  void passTime(std::chrono::microseconds duration); // the busy processes use their share of it

  std::optional<ProcessRecord> record(Pid pid) const override;
  std::optional<std::uint64_t> birthMark() const override;
  std::string place(Pid pid) const override;
  std::string origin(Pid pid) const override;
  std::vector<ProcessRecord> scan() const override;
  std::optional<std::string> executablePathBytes(Pid pid) const override;
  std::optional<std::uint64_t> footprint(Pid pid) const override;
  std::optional<std::uint64_t> cpuTime(Pid pid) const override;
  std::optional<int> schedulerPriority(Pid pid) const override;

 private:
  std::optional<Pid> freePidOfThisTick();
  Pid nextFreePid();
  void orphanChildrenOf(Pid pid);
  const SimulatedProcess* readable(Operation operation, Pid pid) const;

  SimulatedCalls& m_calls;
  SimulatedClock& m_clock;
  std::map<Pid, SimulatedProcess> m_processes;
  std::map<Pid, std::uint64_t> m_lastStart; // of the last process that had the pid
  Pid m_highest = 32768;
  Pid m_last = 1;
  std::size_t m_reusedPids = 0;
  std::uint64_t m_births = 0;
};

} // namespace vantle
