// SPDX-License-Identifier: MIT
#include "platform/posix/files/Flush.h"

#include <unistd.h>

namespace vantle {

// Its size comes along; its times would cost a second write.
bool flushFile(int descriptor) { return ::fdatasync(descriptor) == 0; }

} // namespace vantle
