// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/BackgroundBand.h"
#include "platform/simulated/SimulatedCalls.h"
#include "platform/simulated/SimulatedProcesses.h"

#include <chrono>
#include <optional>
#include <set>
#include <span>

namespace vantle {

// The background band. What a process is in is part of its entry in the process table.
class SimulatedBand final : public BackgroundBand {
 public:
  SimulatedBand(SimulatedCalls& calls, SimulatedProcesses& processes)
      : m_calls(calls), m_processes(processes) {}

  using BackgroundBand::enterBackgroundBand; // the pass over several apps

  // Calls succeed and nothing happens: a machine on which backgrounding does not work.
  bool isEffective = true;
  // Whether `reclaim` finds what inherited the band from this program, as a platform with a mark of its own
  // on the processes can.
  bool knowsItsOwnTraces = false;

  // Somebody else's doing.
  void putInByOthers(Pid pid);
  void takeOutByOthers(Pid pid);

  bool isIn(Pid pid) const; // without a call
  std::optional<Pid> preparedFor() const { return m_preparedFor; }

  bool enterBackgroundBand(Pid pid) override;
  bool leaveBackgroundBand(Pid pid) override;
  std::optional<bool> isInBackgroundBand(Pid pid) const override;
  void prepareBoostApp(Pid root, std::span<const Pid> tree, const std::set<Pid>& everyApp) override;
  void releaseInherited(Pid root, const std::set<Pid>& everyApp) override;
  void reclaim() override;
  bool settle(std::chrono::milliseconds limit) override;

 private:
  bool change(Operation operation, Pid pid, BandState state);

  SimulatedCalls& m_calls;
  SimulatedProcesses& m_processes;
  std::optional<Pid> m_preparedFor;
};

} // namespace vantle
