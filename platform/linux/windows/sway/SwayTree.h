// SPDX-License-Identifier: MIT
#pragma once

#include "base/Json.h"
#include "platform/linux/windows/DesktopWindows.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace vantle {

// A window as sway tells of it (sway-ipc(7), "GET_TREE"): facts without a process, and the process it names.
struct SwayWindow {
  WindowFacts facts;
  std::int64_t toldPid = 0; // whatever number it says, 0 for none
};

struct SwayTree {
  std::vector<SwayWindow> windows; // of every workspace
  // The window that has the focus, or gets it back from a panel or a lock; 0 where none would.
  WindowId front = 0;
};

// Absent for what is no window: a workspace, or a container that only holds others.
std::optional<SwayWindow> swayWindowOf(const Json& node);

// Absent for what is no tree at all.
std::optional<SwayTree> swayTreeOf(const Json& root);

} // namespace vantle
