// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace vantle {

// What runs inside KWin, from 5.27 to 6.

// Tells the feed of every window and of the one in front, from now on (see FedWindows). The listener is a
// unique name on the bus: a well-known one would start its program again whenever nobody has it.
std::string kwinFeedScript(const std::string& listener);

// Asks windows to close, once. By KWin's own names for them.
std::string kwinCloseScript(const std::vector<std::string>& named);

} // namespace vantle
