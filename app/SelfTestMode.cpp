// SPDX-License-Identifier: MIT
#include "app/SelfTestMode.h"

#include "engine/SelfTest.h"
#include "platform/linux/LinuxMachine.h"
#include "platform/linux/files/XdgFolders.h"

#include <cstdio>
#include <memory>
#include <string>

namespace vantle {

int runSelfTestMode() {
  const std::unique_ptr<LinuxMachine> linuxMachine = LinuxMachine::forSelfTest(XdgFolders::fromEnvironment());
  Machine machine = linuxMachine->machine();
  return SelfTest(machine,
                  [](const std::string& line) {
                    std::puts(line.c_str());
                    std::fflush(stdout);
                  })
      .run();
}

} // namespace vantle
