// SPDX-License-Identifier: MIT
// What is called of the system's allocator, from its manual.
#pragma once
#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct _malloc_zone_t malloc_zone_t;
size_t malloc_zone_pressure_relief(malloc_zone_t* zone, size_t goal); // all zones, and all that they can

#ifdef __cplusplus
}
#endif
