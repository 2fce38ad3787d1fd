// SPDX-License-Identifier: MIT
#pragma once

#include "base/Registration.h"

#include <memory>

namespace vantle {

// As long as the registration lives the system does not let this program nap, as it lets one whose windows
// nobody sees: what a napping one is told, and its timers, come late. Not only during a Boost, as one begins
// with such a word; and in between nothing wakes the program, so a nap would save nothing. The machine itself
// may sleep.
std::unique_ptr<Registration> stayAwakeToEvents();

} // namespace vantle
