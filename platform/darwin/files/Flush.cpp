// SPDX-License-Identifier: MIT
#include "platform/posix/files/Flush.h"

#include <fcntl.h>
#include <unistd.h>

namespace vantle {

// fsync() leaves it in the drive's own memory (fsync(2)). Not every file system can do more than that.
bool flushFile(int descriptor) { return ::fcntl(descriptor, F_FULLFSYNC) == 0 || ::fsync(descriptor) == 0; }

} // namespace vantle
