// SPDX-License-Identifier: MIT
#include "platform/posix/process/Pipe.h"

#include <fcntl.h>
#include <unistd.h>

namespace vantle {

bool openPipe(std::array<int, 2>& ends, PipeReading reading) {
  const int flags = reading == PipeReading::returns ? O_CLOEXEC | O_NONBLOCK : O_CLOEXEC;
  return ::pipe2(ends.data(), flags) == 0;
}

} // namespace vantle
