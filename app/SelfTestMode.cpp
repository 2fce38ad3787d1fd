// SPDX-License-Identifier: MIT
#include "app/SelfTestMode.h"

#include "engine/SelfTest.h"

#include <cstdio>
#include <memory>
#include <string>

namespace vantle {

int runSelfTestMode(Platform& platform) {
  const std::unique_ptr<OwnedMachine> owned = platform.selfTestMachine();
  Machine machine = owned->machine();
  const auto print = [](const std::string& line) {
    std::puts(line.c_str());
    std::fflush(stdout);
  };
  return SelfTest(machine, print, owned->desktop()).run();
}

} // namespace vantle
