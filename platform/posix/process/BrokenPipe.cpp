// SPDX-License-Identifier: MIT
#include "platform/posix/process/BrokenPipe.h"

#include "base/Invariant.h"

#include <csignal>

namespace vantle {

void outliveReaders() {
  // To ignore the signal would be inherited; a handler ends with the program's image.
  struct sigaction action {};
  action.sa_handler = [](int) {};
  action.sa_flags = SA_RESTART;
  const bool isHandled = ::sigaction(SIGPIPE, &action, nullptr) == 0;
  invariant(isHandled, "SIGPIPE can be handled");
}

} // namespace vantle
