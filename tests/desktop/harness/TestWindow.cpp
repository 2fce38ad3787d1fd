// SPDX-License-Identifier: MIT
#include "tests/desktop/harness/VirtualDesktop.h"

namespace vantle::desktop {

std::string testWindow() { return TEST_WINDOW; }

} // namespace vantle::desktop
