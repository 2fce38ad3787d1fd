// SPDX-License-Identifier: MIT
#include "tests/simulation/linux/LinuxDesktop.h"

namespace vantle {

LinuxDesktop::LinuxDesktop(SimulatedMachine& someMachine, LinuxOptions options)
    : machine(someMachine), loop(machine.clock), kernel(machine, std::move(options)), table(machine, kernel),
      manager(machine, kernel, loop) {}

LinuxBand& LinuxDesktop::startBand() {
  band.reset();
  // The desktop outlives the band, so nobody has to count.
  const std::shared_ptr<Kernel> shared(std::shared_ptr<void>(), &kernel);
  band = std::make_unique<LinuxBand>(
      loop, machine.files,
      BandParts{.kernel = shared,
                .manager = hasManager ? manager.connect() : nullptr,
                .ledgers = {machine.files.applicationSupport() + "/Vantle/band.json",
                            "/run/user/vantle/band.json"}});
  return *band;
}

bool LinuxDesktop::settle(std::chrono::milliseconds limit) {
  manager.work();
  manager.finishMoves();
  const bool isSettled = !band || band->settle(limit);
  return loop.runUntilQuiet(limit) && isSettled;
}

} // namespace vantle
