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
  return SelfTest(machine,
                  [](const std::string& line) {
                    std::puts(line.c_str());
                    std::fflush(stdout);
                  })
      .run();
}

} // namespace vantle
