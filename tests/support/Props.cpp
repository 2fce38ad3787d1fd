// SPDX-License-Identifier: MIT
#include "tests/support/Props.h"

namespace vantle::desktop {

std::string testWindow() { return PROP_TEST_WINDOW; }
std::string flooder() { return PROP_FLOODER; }
std::string memoryStaller() { return PROP_MEMORY_STALLER; }
std::string tonePlayer() { return PROP_TONE_PLAYER; }
std::string inhibitor() { return PROP_INHIBITOR; }
std::string virtualPointer() { return PROP_VIRTUAL_POINTER; }

} // namespace vantle::desktop
