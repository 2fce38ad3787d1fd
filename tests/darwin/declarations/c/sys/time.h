// SPDX-License-Identifier: MIT
#pragma once
#include <vantle_types.h>

VANTLE_C_BEGIN
int gettimeofday(struct timeval* now, void* zone);
VANTLE_C_END
