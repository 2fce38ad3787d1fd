// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"

#include <string>
#include <vector>

namespace vantle {

// What keeps the machine awake: the sleep that is asked for (by a lid, a menu, a timer) or the idle one.
struct InhibitorKinds {
  bool sleep = false;
  bool idle = false;

  bool any() const { return sleep || idle; }
  friend bool operator==(const InhibitorKinds&, const InhibitorKinds&) = default;
};

// One request to keep it awake, as a daemon tells of it.
struct Inhibitor {
  InhibitorKinds kinds;
  std::vector<Pid> processes; // who may have asked, as a bus knows it, the surest first; may be a proxy
  std::string app;            // what who asked calls itself: an id, a program or a name; may be empty
};

} // namespace vantle
