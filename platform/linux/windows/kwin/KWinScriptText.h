// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace vantle {

// What runs inside KWin, from 5.27 to 6.

// Tells the feed of every window and of the one in front, from now on (see FedWindows). The listener is a
// unique name on the bus: a well-known one would start its program again whenever nobody has it.
std::string kwinFeedScript(const std::string& listener);

// What KWin is asked to do with windows, by its own names for them.
struct KWinOrders {
  std::vector<std::string> close;
  std::string front; // to bring there; empty for none
};

// Carries them out, once.
std::string kwinOrderScript(const KWinOrders& orders);

} // namespace vantle
