// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"

#include <map>
#include <string>
#include <vector>

namespace vantle::soak {

// What the kernel has of one thread, of all that can be slowed.
struct ThreadSettings {
  int policy = 0;
  int nice = 0;
  int io = 0;           // I/O class and data, as they stand
  std::string affinity; // as its status file says it
  bool operator==(const ThreadSettings&) const = default;
};

struct ProcessSettings {
  Pid pid = 0;
  Pid parent = 0;
  unsigned long long start = 0; // in the kernel's ticks: tells a number that is used again apart
  char state = 'X';
  std::string name;
  std::string role; // the variable that its first ancestor on the stage was given, empty for none
  int sessionNice = 0;
  std::string groups; // its control groups
  std::map<Pid, ThreadSettings> threads;
};

// Every process of a test desktop, or, where processes have a namespace of their own, of all of it; this one
// and what is dead aside.
using Machine = std::vector<ProcessSettings>;
Machine lookAtMachine(const std::string& desktopMarker);

ThreadSettings settingsOfThisThread();
std::string controlGroupsOfThisProcess();
bool isNamespaceOfItsOwn();

std::string text(const ThreadSettings& settings);

} // namespace vantle::soak
