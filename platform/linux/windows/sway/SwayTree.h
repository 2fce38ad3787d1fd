// SPDX-License-Identifier: MIT
#pragma once

#include "base/Json.h"
#include "platform/linux/windows/WindowReadings.h"

#include <optional>
#include <vector>

namespace vantle {

// See sway-ipc(7), "GET_TREE".
struct SwayTree {
  std::vector<ToldWindow> windows; // of every workspace
  // The window that has the focus, or gets it back from a panel or a lock; 0 where none would.
  WindowId front = 0;
};

// Absent for what is no window: a workspace, or a container that only holds others.
std::optional<ToldWindow> swayWindowOf(const Json& node);

// Absent for what is no tree at all.
std::optional<SwayTree> swayTreeOf(const Json& root);

} // namespace vantle
