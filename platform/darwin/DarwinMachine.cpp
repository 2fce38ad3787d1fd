// SPDX-License-Identifier: MIT
#include "platform/darwin/DarwinMachine.h"

#include "platform/darwin/band/DarwinBand.h"
#include "platform/darwin/pressure/DispatchMemoryPressure.h"
#include "platform/darwin/process/SystemValue.h"

namespace vantle {

Machine DarwinMachine::machine() {
  Parts& parts = *m_parts;
  return {parts.host,   parts.processes, *parts.band,          *parts.workspace, *parts.audio,
          *parts.power, *parts.pressure, *parts.notifications, *parts.defaults,  *parts.files,
          parts.clock,  parts.launcher,  parts.text,           *parts.loginItem, *parts.catalog,
          parts.hooks,  parts.games};
}

std::vector<std::pair<std::string, std::string>> DarwinMachine::facts() const {
  return {{"System", "macOS " + systemText("kern.osproductversion").value_or("unknown")},
          {"Kernel", systemText("kern.osrelease").value_or("unknown")}};
}

// In C alone, so that it runs without any of the frameworks.
std::unique_ptr<OwnedMachine> selfTestMachine() {
  auto parts = std::make_unique<DarwinMachine::Parts>();
  parts->band = std::make_unique<DarwinBand>();
  parts->pressure = std::make_unique<DispatchMemoryPressure>();
  return std::make_unique<DarwinMachine>(std::move(parts));
}

} // namespace vantle
