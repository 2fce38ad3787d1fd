// SPDX-License-Identifier: MIT
#include "platform/simulated/SimulatedMachine.h"

#include <chrono>
#include <memory>
#include <utility>

namespace vantle {

namespace {

constexpr const char* ownExecutable = "/usr/bin/vantle";

} // namespace

SimulatedMachine::SimulatedMachine() {
  host.self = processes.spawn({.executable = ownExecutable});
  clock.onAdvance = [this](std::chrono::microseconds duration) { processes.passTime(duration); };
  workspace.onFrontRequest = [this](Pid pid) {
    const std::vector<SimulatedAppRef> apps = workspace.apps();
    for (const SimulatedAppRef& app : apps) {
      if (app->processIdentifier() == pid) activate(app);
    }
  };
  workspace.onQuitRequest = [this](SimulatedApp& app) {
    if (app.spec.quitReaction == QuitReaction::quits) exit(app.processIdentifier());
  };
}

Machine SimulatedMachine::ports(ProcessTable& otherTable, BackgroundBand& otherBand) {
  return {host,  otherTable, otherBand, workspace, audio,     power,   pressure, notifications, defaults,
          files, clock,      launcher,  text,      loginItem, catalog, hooks,    games};
}

SimulatedAppRef SimulatedMachine::launch(const AppSpec& spec, Opening opening) {
  const Pid pid = processes.spawn({.parent = spec.parent,
                                   .executable = spec.program,
                                   .footprint = spec.footprint,
                                   .leadsSession = spec.leadsSession,
                                   .place = spec.place,
                                   .origin = spec.origin,
                                   .pid = spec.pid});
  return showWindow(pid, spec, opening);
}

SimulatedAppRef SimulatedMachine::showWindow(Pid pid, AppSpec spec, Opening opening) {
  auto app = std::make_shared<SimulatedApp>(workspace, calls, pid, std::move(spec));
  workspace.add(app);
  if (opening == Opening::inFront) workspace.setFrontmost(app);
  deliver();
  return app;
}

void SimulatedMachine::activate(const SimulatedAppRef& app) {
  workspace.setFrontmost(app);
  deliver();
}

void SimulatedMachine::exit(Pid pid) {
  processes.exit(pid);
  workspace.markTerminated(pid);
  deliver();
}

void SimulatedMachine::restartProgram(Pid parent) {
  calls.cancelCrash();
  workspace.dropEvents();
  processes.exit(host.self);
  host.self = processes.spawn({.parent = parent, .executable = ownExecutable});
}

void SimulatedMachine::deliver() {
  if (delivery == EventDelivery::atOnce) workspace.deliverAll();
}

} // namespace vantle
