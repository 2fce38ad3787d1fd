// SPDX-License-Identifier: MIT
#pragma once

namespace vantle {

// Returns unused heap pages to the system, where its allocator can.
void trimHeap();

} // namespace vantle
