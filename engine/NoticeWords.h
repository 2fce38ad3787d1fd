// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace vantle {

// The texts of the notices about memory, with "%1" for the apps that they name. Whoever shows texts in the
// person's language hands them to the engine in it.
struct NoticeWords {
  std::string almostFull = "Memory almost full";
  std::string runningLow = "Memory is running low";
  std::string usingMost = "Using the most memory: %1. Quitting them will free up memory.";
  std::string quitting = "Quit %1 to free up memory.";
  bool operator==(const NoticeWords&) const = default;
};

} // namespace vantle
