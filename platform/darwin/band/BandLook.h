// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/ProcessIdentity.h"

#include <optional>

namespace vantle {

constexpr Pid firstProcess = 1; // it takes in every orphan

// What one read of the kernel tells of a process: two reads could be of two processes.
struct BandLook {
  ProcessIdentity process;
  Pid parent = 0;    // the first process also when nobody tells
  bool isIn = false; // in the band, whoever put it or one above it there
};

std::optional<BandLook> lookAt(Pid pid); // absent also for another user's process
std::optional<Pid> parentOf(Pid pid);    // anybody's, as above

} // namespace vantle
