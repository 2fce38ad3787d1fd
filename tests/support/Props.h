// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace vantle::desktop {

// The paths of small programs for a stage (tests/support/programs).
std::string testWindow();     // an app whose window behaves as its arguments say
std::string flooder();        // floods a display or a bus
std::string memoryStaller();  // brings about real memory pressure
std::string tonePlayer();     // plays a tone, and says when it breaks off
std::string inhibitor();      // asks for the machine to be kept awake, and holds that
std::string virtualPointer(); // clicks on a Wayland desktop

} // namespace vantle::desktop
