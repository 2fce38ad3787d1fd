// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace vantle {

// Whether the lock on a folder, which somebody has, is held by another program than this one: others have
// reasons to lock a folder, too. One whose holder cannot be seen counts as a copy of this program. Answered
// by each system for itself.
bool isLockedByStranger(const std::string& folder);

} // namespace vantle
