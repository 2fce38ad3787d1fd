// SPDX-License-Identifier: MIT
// The numbers of flock(2).
#pragma once
#include <fcntl.h>

#define LOCK_SH 1
#define LOCK_EX 2
#define LOCK_NB 4
#define LOCK_UN 8

VANTLE_C_BEGIN
int flock(int descriptor, int operation);
VANTLE_C_END
