// SPDX-License-Identifier: MIT
#import "desktop/darwin/heap/ZoneHeap.h"

#include <malloc/malloc.h>

namespace vantle {

void ZoneHeap::trim() { ::malloc_zone_pressure_relief(nullptr, 0); } // all zones, all that they can

} // namespace vantle
