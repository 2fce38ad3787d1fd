// SPDX-License-Identifier: MIT
#pragma once

namespace vantle {

// Makes the symbols, the views and the types of this room known; any number of times. A static library's
// resources are not there by themselves.
void loadLookResources();
void registerLookTypes();

} // namespace vantle
