// SPDX-License-Identifier: MIT
#pragma once

namespace vantle {

// Of all descriptors of this process with this number or a higher one, whatever is open. Answered by each
// system for itself; safe between fork and exec.
void closeAllFrom(int first);
void closeAllAtExecFrom(int first); // when the process becomes another program

} // namespace vantle
