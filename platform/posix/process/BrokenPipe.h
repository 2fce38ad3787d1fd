// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

namespace vantle {

// From here on, writing where nobody reads any more fails with EPIPE, and ends this process no longer.
// Programs that it starts are ended as ever.
void outliveReaders();

// Writes so, in whatever way this process otherwise handles the signal. True when all of it was written.
bool writeQuietly(int descriptor, const void* bytes, std::size_t size);

} // namespace vantle
