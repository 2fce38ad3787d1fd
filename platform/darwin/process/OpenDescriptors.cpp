// SPDX-License-Identifier: MIT
#include "platform/posix/process/OpenDescriptors.h"

#include <fcntl.h>
#include <unistd.h>

namespace vantle {

// No call closes a range here. The table is never larger than what one process may have open at all.
void closeAllFrom(int first) {
  const int end = ::getdtablesize();
  for (int number = first; number < end; ++number) ::close(number);
}

void closeAllAtExecFrom(int first) {
  const int end = ::getdtablesize();
  for (int number = first; number < end; ++number) ::fcntl(number, F_SETFD, FD_CLOEXEC);
}

} // namespace vantle
