// SPDX-License-Identifier: MIT
#pragma once

#include <array>

namespace vantle {

enum class PipeReading { waits, returns }; // while nothing is there; the same for writing while it is full

// The reading and the writing end of a new pipe, which no program inherits. False when there is none to be
// had. Answered by each system for itself: not everywhere can a pipe be made so in one step, and where it
// can, no other thread's child gets hold of it in between.
bool openPipe(std::array<int, 2>& ends, PipeReading reading);

} // namespace vantle
