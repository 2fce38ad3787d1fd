// SPDX-License-Identifier: MIT
#include "app/SelfTestMode.h"

#include "engine/SelfTest.h"
#include "platform/OwnedMachine.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

namespace vantle {

int runSelfTestMode() {
  const std::unique_ptr<OwnedMachine> owned = selfTestMachine();
  Machine machine = owned->machine();
  bool isTold = true;
  const auto print = [&isTold](const std::string& line) {
    isTold = std::puts(line.c_str()) >= 0 && std::fflush(stdout) == 0 && isTold;
  };
  const int status = SelfTest(machine, print, owned->desktop()).run();
  if (isTold) return status;
  std::fputs("vantle: the report could not be written.\n", stderr);
  return EXIT_FAILURE;
}

} // namespace vantle
