// SPDX-License-Identifier: MIT
#include "look/HeapTrim.h"

#include <malloc.h>

namespace vantle {

void trimHeap() { malloc_trim(0); }

} // namespace vantle
