// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/Machine.h"
#include "platform/shared/IcuText.h"
#include "platform/simulated/SimulatedBand.h"
#include "platform/simulated/SimulatedCalls.h"
#include "platform/simulated/SimulatedCatalog.h"
#include "platform/simulated/SimulatedClock.h"
#include "platform/simulated/SimulatedDefaults.h"
#include "platform/simulated/SimulatedFiles.h"
#include "platform/simulated/SimulatedHooks.h"
#include "platform/simulated/SimulatedLauncher.h"
#include "platform/simulated/SimulatedLoginItem.h"
#include "platform/simulated/SimulatedProbes.h"
#include "platform/simulated/SimulatedProcesses.h"
#include "platform/simulated/SimulatedWorkspace.h"

namespace vantle {

enum class Opening { inFront, inBackground };

// When the observers of the workspace hear of what happened.
enum class EventDelivery {
  atOnce,   // before the call that made it happen returns
  onDemand, // when `workspace.deliverNext` or `deliverAll` is called
};

class SimulatedHost final : public Host {
 public:
  Pid self = 0;
  int processors = 2;

  Pid selfPID() const override { return self; }
  int activeProcessorCount() const override { return processors; }
};

// A whole desktop in memory. It does nothing by itself, always the same way, and whatever it is told to:
//
//   SimulatedMachine machine;
//   AppSettings settings(machine.defaults);
//   Engine engine(machine.ports(), settings);
//   machine.launch({.name = "Mail", .bundleID = "org.example.mail"}, Opening::inBackground);
//   machine.launch({.name = "Asteroids", .bundlePath = "/games/steamapps/asteroids"}, Opening::inFront);
//   // engine.managedNames is now {"Mail"}
//
// It outlives any engine that runs on it, so that a new one can play the next start of the program. Its parts
// are open: what a person or another program does is done to them directly, what the engine asks goes through
// the ports and is seen by `calls`, which refuses, records and crashes on demand.
class SimulatedMachine {
 public:
  SimulatedMachine();
  SimulatedMachine(const SimulatedMachine&) = delete;
  SimulatedMachine& operator=(const SimulatedMachine&) = delete;

  SimulatedCalls calls;
  SimulatedClock clock{calls};
  SimulatedProcesses processes{calls, clock};
  SimulatedBand band{calls, processes};
  SimulatedWorkspace workspace{calls};
  SimulatedAudio audio{calls};
  SimulatedPower power{calls};
  SimulatedPressure pressure{calls};
  SimulatedNotifications notifications{calls};
  SimulatedDefaults defaults{calls};
  SimulatedFiles files{calls};
  SimulatedLauncher launcher{calls, processes};
  SimulatedHooks hooks;
  SimulatedGames games{calls};
  SimulatedHost host; // this program has a process of its own
  IcuText text;
  SimulatedLoginItem loginItem;
  SimulatedCatalog catalog;
  EventDelivery delivery = EventDelivery::atOnce;

  Machine ports() { return ports(band); }
  Machine ports(BackgroundBand& otherBand) { return ports(processes, otherBand); }
  // For the models of a particular system.
  Machine ports(ProcessTable& otherTable, BackgroundBand& otherBand);

  SimulatedAppRef launch(const AppSpec& spec, Opening opening);
  // The first window of a process that runs already: an app from now on.
  SimulatedAppRef showWindow(Pid pid, AppSpec spec, Opening opening);
  void activate(const SimulatedAppRef& app); // null: nobody is in front
  // Ends a process; an app whose main process it is has quit.
  void exit(Pid pid);
  void quit(const SimulatedAppRef& app) { exit(app->processIdentifier()); }
  // The end of this program in whatever way: events that nobody heard are lost. Call it before the next
  // start, which then has a pid of its own, below the given process.
  void restartProgram(Pid parent = 1);

 private:
  void deliver();
};

} // namespace vantle
