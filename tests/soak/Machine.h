// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/Kernel.h"

#include <map>
#include <string>
#include <vector>

namespace vantle::soak {

using ThreadSettings = test::ThreadState;

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

} // namespace vantle::soak
