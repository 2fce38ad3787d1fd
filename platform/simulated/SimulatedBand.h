// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/BackgroundBand.h"
#include "platform/simulated/SimulatedCalls.h"
#include "platform/simulated/SimulatedProcesses.h"

#include <chrono>
#include <functional>
#include <optional>

namespace vantle {

// The background band. What a process is in is part of its entry in the process table.
class SimulatedBand final : public BackgroundBand {
 public:
  SimulatedBand(SimulatedCalls& calls, SimulatedProcesses& processes)
      : m_calls(calls), m_processes(processes) {}

  // Calls succeed and nothing happens: a machine on which backgrounding does not work.
  bool isEffective = true;
  // Whether it can tell whom this program put into the band, and who inherited it from them, as a platform
  // with a mark of its own on the processes can.
  bool knowsItsOwnTraces = false;

  // Somebody else's doing.
  void putInByOthers(Pid pid);
  void takeOutByOthers(Pid pid);

  bool isIn(Pid pid) const; // without a call
  std::optional<Pid> preparedFor() const { return m_preparedFor; }

  bool enterBackgroundBand(Pid pid) override;
  bool leaveBackgroundBand(Pid pid) override;
  std::optional<bool> isInBackgroundBand(Pid pid) const override;
  bool carriesOwnMark(Pid pid) const override;
  void makeRoomFor(Pid boostApp, const std::function<const ProcessView&()>& look) override;
  void reclaim(const ProcessView* recent) override;
  bool settle(std::chrono::milliseconds limit) override;

 private:
  bool change(Operation operation, Pid pid, BandState state);

  SimulatedCalls& m_calls;
  SimulatedProcesses& m_processes;
  std::optional<Pid> m_preparedFor;
};

} // namespace vantle
