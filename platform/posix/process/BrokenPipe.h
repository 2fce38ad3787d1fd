// SPDX-License-Identifier: MIT
#pragma once

namespace vantle {

// From here on, writing where nobody reads any more fails with EPIPE, and ends this process no longer.
// Programs that it starts are ended as ever.
void outliveReaders();

} // namespace vantle
