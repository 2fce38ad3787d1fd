// SPDX-License-Identifier: MIT
#pragma once

#include "engine/Engine.h"
#include "platform/linux/process/BootClock.h"
#include "platform/linux/process/ProcfsProcessTable.h"
#include "platform/simulated/SimulatedMachine.h"
#include "tests/unit/linux/band/BandFixture.h"

#include <memory>
#include <span>
#include <string>

namespace vantle::test {

// The whole program but for the desktop: that one is in memory, and its apps are real processes.
struct ProgramOnBand {
  explicit ProgramOnBand(const std::string& folder)
      : files(folder, PosixFileStore::Sync::none),
        epoch(BootEpoch::load(files, {folder + "/boot.json"}, kernel->bootId())), processes(epoch, kernel),
        clock(epoch), band(loop, files, {.kernel = kernel, .ledgers = {folder + "/band.json"}}),
        settings(desktop.defaults), engine(ports(), settings) {}

  Machine ports() {
    desktop.host.self = ::getpid();
    return {desktop.host,
            processes,
            band,
            desktop.workspace,
            desktop.audio,
            desktop.power,
            desktop.pressure,
            desktop.notifications,
            desktop.defaults,
            files,
            clock,
            desktop.launcher,
            desktop.text,
            desktop.loginItem,
            desktop.catalog,
            desktop.hooks,
            desktop.games};
  }
  SimulatedAppRef add(Pid pid, bool isGame) {
    AppSpec spec{.name = std::to_string(pid)};
    if (isGame) spec.bundlePath = "/games/steamapps/game";
    auto app = std::make_shared<SimulatedApp>(desktop.workspace, desktop.calls, pid, spec);
    desktop.workspace.add(app);
    return app;
  }
  // A Boost from its beginning to its end.
  bool playGame(Pid game, std::span<const Pid> apps) {
    for (const Pid app : apps) add(app, false);
    desktop.workspace.setFrontmost(add(game, true));
    desktop.workspace.deliverAll();
    const bool slowed = engine.managedNames.get().size() == apps.size() && band.settle(guard);
    desktop.workspace.markTerminated(game);
    desktop.workspace.deliverAll();
    return slowed && !engine.activeGame.get() && band.settle(guard);
  }

  SimulatedMachine desktop;
  PollEventLoop loop;
  PosixFileStore files;
  std::shared_ptr<ProcKernel> kernel = std::make_shared<ProcKernel>();
  BootEpoch epoch;
  ProcfsProcessTable processes;
  BootClock clock;
  LinuxBand band;
  AppSettings settings;
  Engine engine;
};

} // namespace vantle::test
