// SPDX-License-Identifier: MIT
// The numbers and the status of wait(2).
#pragma once
#include <vantle_types.h>

#define WNOHANG 1
#define WUNTRACED 2
#define WIFEXITED(status) (((status)&0177) == 0)
#define WEXITSTATUS(status) (((status) >> 8) & 0xff)

VANTLE_C_BEGIN
pid_t waitpid(pid_t pid, int* status, int options);
VANTLE_C_END
