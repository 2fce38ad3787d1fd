// SPDX-License-Identifier: MIT
#include "platform/posix/process/Pipe.h"

#include <fcntl.h>
#include <unistd.h>

namespace vantle {

namespace {

bool keepToItself(int end, PipeReading reading) {
  return ::fcntl(end, F_SETFD, FD_CLOEXEC) == 0 &&
         (reading == PipeReading::waits || ::fcntl(end, F_SETFL, O_NONBLOCK) == 0);
}

} // namespace

// A program that another thread starts between the calls has the pipe as well; those that this program starts
// close what they do not know (closeAllAtExecFrom).
bool openPipe(std::array<int, 2>& ends, PipeReading reading) {
  if (::pipe(ends.data()) != 0) return false;
  if (keepToItself(ends[0], reading) && keepToItself(ends[1], reading)) return true;
  ::close(ends[0]);
  ::close(ends[1]);
  return false;
}

} // namespace vantle
