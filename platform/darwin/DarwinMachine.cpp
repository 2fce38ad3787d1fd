// SPDX-License-Identifier: MIT
#include "platform/darwin/DarwinMachine.h"

#include "platform/darwin/band/DarwinBand.h"
#include "platform/darwin/pressure/DispatchMemoryPressure.h"
#include "platform/darwin/process/DarwinClock.h"
#include "platform/darwin/process/DarwinHost.h"
#include "platform/darwin/process/LibprocProcessTable.h"
#include "platform/darwin/process/SystemValue.h"
#include "platform/posix/process/SessionLauncher.h"
#include "platform/shared/Absent.h"
#include "platform/shared/IcuText.h"

namespace vantle {

struct DarwinMachine::Parts {
  DarwinHost host;
  LibprocProcessTable processes;
  DarwinBand band;
  DispatchMemoryPressure pressure;
  DarwinClock clock;
  SessionLauncher launcher;
  IcuText text;

  AbsentWorkspace workspace;
  AbsentAudioActivity audio;
  AbsentPowerAssertions power;
  AbsentNotifications notifications;
  AbsentDefaults defaults;
  AbsentFiles files;
  AbsentLoginItem loginItem;
  AbsentCatalog catalog;
  AbsentHooks hooks;
  AbsentRegisteredGames games;
};

DarwinMachine::DarwinMachine(std::unique_ptr<Parts> parts) : m_parts(std::move(parts)) {}
DarwinMachine::~DarwinMachine() = default;

std::unique_ptr<DarwinMachine> DarwinMachine::forSelfTest() {
  return std::unique_ptr<DarwinMachine>(new DarwinMachine(std::make_unique<Parts>()));
}

Machine DarwinMachine::machine() {
  Parts& parts = *m_parts;
  return {parts.host,     parts.processes,     parts.band,     parts.workspace, parts.audio, parts.power,
          parts.pressure, parts.notifications, parts.defaults, parts.files,     parts.clock, parts.launcher,
          parts.text,     parts.loginItem,     parts.catalog,  parts.hooks,     parts.games};
}

std::vector<std::pair<std::string, std::string>> DarwinMachine::facts() const {
  return {{"System", "macOS " + systemText("kern.osproductversion").value_or("unknown")},
          {"Kernel", systemText("kern.osrelease").value_or("unknown")}};
}

std::unique_ptr<OwnedMachine> selfTestMachine() { return DarwinMachine::forSelfTest(); }

} // namespace vantle
