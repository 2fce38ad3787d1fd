// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/band/LinuxBand.h"
#include "tests/simulation/linux/LinuxTable.h"
#include "tests/simulation/linux/SimulatedLinux.h"
#include "tests/simulation/linux/SimulatedLoop.h"
#include "tests/simulation/linux/SimulatedServiceManager.h"

#include <chrono>
#include <memory>

namespace vantle {

// A simulated machine that runs Linux, and the real band on it. It outlives any run of the program:
//
//   SimulatedMachine machine;
//   LinuxDesktop desktop(machine, {.placement = LinuxPlacement::ownUnits});
//   Engine engine(machine.ports(desktop.table, desktop.startBand()), settings);
struct LinuxDesktop {
  explicit LinuxDesktop(SimulatedMachine& someMachine, LinuxOptions options = {});

  // The band of the next run of the program; the one before is gone, and with it whatever it waited for. May
  // be hit by a crash.
  LinuxBand& startBand();
  void endBand() { band.reset(); } // what a killed program does

  // Lets the manager serve what it was sent, and waits for the answers and the queue, all on simulated time.
  // True when nothing is left to wait for.
  bool settle(std::chrono::milliseconds limit = std::chrono::minutes(10));

  SimulatedMachine& machine;
  SimulatedLoop loop;
  SimulatedLinux kernel;
  LinuxTable table;
  SimulatedServiceManager manager;
  bool hasManager = true;
  std::unique_ptr<LinuxBand> band;
};

} // namespace vantle
