// SPDX-License-Identifier: MIT
// posix_spawn(2).
#pragma once
#include <sys/types.h>

typedef void* posix_spawn_file_actions_t;
typedef void* posix_spawnattr_t;

#ifdef __cplusplus
extern "C" {
#endif
int posix_spawn(pid_t* pid, const char* path, const posix_spawn_file_actions_t* actions,
                const posix_spawnattr_t* attributes, char* const* arguments, char* const* environment);
#ifdef __cplusplus
}
#endif
