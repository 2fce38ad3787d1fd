// SPDX-License-Identifier: MIT
#include "platform/posix/process/BrokenPipe.h"

#include "base/Invariant.h"

#include <csignal>
#include <unistd.h>

namespace vantle {

void outliveReaders() {
  // To ignore the signal would be inherited; a handler ends with the program's image.
  struct sigaction action {};
  action.sa_handler = [](int) {};
  action.sa_flags = SA_RESTART;
  const bool isHandled = ::sigaction(SIGPIPE, &action, nullptr) == 0;
  invariant(isHandled, "SIGPIPE can be handled");
}

// The signal that such a write raises is kept away from this thread, and taken out of what waits for it
// unless one waited there before. On Linux it is this thread's own. A Mac may raise it for the process, and
// give it to a thread that does not keep it away; then there is nothing to take out, and the handler above
// has had it.
bool writeQuietly(int descriptor, const void* bytes, std::size_t size) {
  sigset_t broken;
  sigemptyset(&broken);
  sigaddset(&broken, SIGPIPE);
  sigset_t before;
  sigset_t waiting;
  ::pthread_sigmask(SIG_BLOCK, &broken, &before);
  const bool didWait = ::sigpending(&waiting) == 0 && sigismember(&waiting, SIGPIPE) == 1;
  const ssize_t written = ::write(descriptor, bytes, size);
  // Nothing waits where the signal is ignored.
  const bool doesWait = ::sigpending(&waiting) == 0 && sigismember(&waiting, SIGPIPE) == 1;
  int taken = 0;
  if (written < 0 && doesWait && !didWait) ::sigwait(&broken, &taken);
  ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
  return written >= 0 && static_cast<std::size_t>(written) == size;
}

} // namespace vantle
