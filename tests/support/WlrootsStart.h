// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/PrivateSession.h"

#include <functional>
#include <string>
#include <vector>

namespace vantle::desktop {

// Starts a wlroots compositor that draws in software, without a screen, and waits until it is there. The
// command has to make it run a line of shell once it is: its displays have names that it chooses itself, and
// tells its children. The session gets those of these variables in its environment.
Program& startWlroots(PrivateSession& session,
                      const std::function<std::vector<std::string>(const std::string& line)>& command,
                      const std::vector<std::string>& variables, int screens = 1);

} // namespace vantle::desktop
