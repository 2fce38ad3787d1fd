// SPDX-License-Identifier: MIT
#pragma once

namespace vantle {

// Whether this process belongs to a session with windows. One that came in over the network does not.
bool hasWindowServer();

} // namespace vantle
