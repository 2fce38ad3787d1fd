// SPDX-License-Identifier: MIT
#pragma once
#include <vantle_types.h>

VANTLE_C_BEGIN
int sched_yield(void);
VANTLE_C_END
