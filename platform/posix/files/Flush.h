// SPDX-License-Identifier: MIT
#pragma once

namespace vantle {

// Returns when what was written to the file is on the disk itself; false when that cannot be said. Answered
// by each system for itself, as each calls it differently.
bool flushFile(int descriptor);

} // namespace vantle
