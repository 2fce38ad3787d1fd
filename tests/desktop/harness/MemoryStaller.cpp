// SPDX-License-Identifier: MIT
#include "tests/desktop/harness/MemoryStaller.h"

namespace vantle::desktop {

std::string memoryStaller() { return MEMORY_STALLER; }

} // namespace vantle::desktop
