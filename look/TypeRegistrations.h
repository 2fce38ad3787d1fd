// SPDX-License-Identifier: MIT
#pragma once

namespace vantle {

// Calls the function unless its types are known to the toolkit: registered again they would only take memory.
void registerTypesOnce(void (*registerTypes)());

// Makes the toolkit forget all types, its own as well: most of what a closed window leaves behind. No other
// engine may live than one that is being destroyed.
void forgetTypes();

} // namespace vantle
