// SPDX-License-Identifier: MIT
#pragma once

#include "platform/darwin/band/DarwinBand.h"
#include "platform/darwin/pressure/DispatchMemoryPressure.h"
#include "platform/darwin/process/DarwinClock.h"
#include "platform/darwin/process/LibprocProcessTable.h"
#include "tests/simulation/RandomRun.h"
#include "tests/simulation/darwin/SimulatedKernel.h"

#include <dispatch/dispatch.h>
#include <optional>
#include <string>
#include <utility>

namespace vantle {

// What macOS's room has of a machine so far; the rest is the desktop's.
struct DarwinParts {
  LibprocProcessTable processes;
  DarwinBand band;
  DispatchMemoryPressure pressure;
  DarwinClock clock;

  Machine on(SimulatedMachine& desktop) {
    const Machine rest = desktop.ports();
    return {rest.host, processes,          band,          rest.workspace, rest.audio, rest.power,
            pressure,  rest.notifications, rest.defaults, rest.files,     clock,      rest.launcher,
            rest.text, rest.loginItem,     rest.catalog,  rest.hooks,     rest.games};
  }
};

// A machine of that kind: apps have neither sessions nor places, and nothing tells what a process came with
// or who put it into the band.
inline void arrangeAsMac(SimulatedMachine& desktop) {
  desktop.band.knowsItsOwnTraces = false;
  desktop.processes.tellsOfBirths = false;
  const auto plain = [&desktop](const SimulatedProcess& born) {
    SimulatedProcess& process = *desktop.processes.find(born.pid);
    process.session = 0;
    process.place.clear();
    process.origin.clear();
    process.role = ProcessRole::program;
  };
  desktop.processes.onBirth = plain;
  const std::map<Pid, SimulatedProcess> all = desktop.processes.all();
  for (const auto& [pid, process] : all) plain(process);
}

// An evening of the engine on that.
class DarwinRun : public RandomRun {
 public:
  DarwinRun(std::uint64_t seed, RunOptions options) : RandomRun(seed, std::move(options)) {}

  ~DarwinRun() override {
    m_engine.reset(); // it has a source of the kernel's
  }
  DarwinRun(const DarwinRun&) = delete;
  DarwinRun& operator=(const DarwinRun&) = delete;

  // Ends the program in order. Says what the system would have ended it for, or what it has left there.
  std::optional<std::string> end() {
    m_engine.reset();
    programEnded();
    if (!m_kernel.fault && m_kernel.sources() > 0) return "a source was not released";
    return m_kernel.fault;
  }

 protected:
  void arrangeMachine() override {
    m_forksMeanwhile = false; // who was born between two calls is found by the birth mark only
    arrangeAsMac(m_machine);
  }
  Machine ports() override { return m_parts.on(m_machine); }
  void tellOfPressure(bool isCritical) override {
    m_kernel.raisePressure(isCritical ? DISPATCH_MEMORYPRESSURE_CRITICAL : DISPATCH_MEMORYPRESSURE_WARN);
  }

  SimulatedKernel m_kernel{m_machine};

 private:
  DarwinParts m_parts;
};

} // namespace vantle
