// SPDX-License-Identifier: MIT
// getrlimit(2) and setpriority(2); what only this system has is in taskpolicy(8) as well.
#pragma once
#include <stdint.h>
#include <sys/types.h>

#define PRIO_DARWIN_PROCESS 4 // a whole process, named by its pid
#define PRIO_DARWIN_BG 0x1000 // into the background band; 0 takes it out again

#define RLIMIT_NOFILE 8
typedef uint64_t rlim_t;
struct rlimit {
  rlim_t rlim_cur;
  rlim_t rlim_max;
};

#ifdef __cplusplus
extern "C" {
#endif
int getrlimit(int resource, struct rlimit* limit);
int setpriority(int which, id_t who, int priority);
int setrlimit(int resource, const struct rlimit* limit);
#ifdef __cplusplus
}
#endif
