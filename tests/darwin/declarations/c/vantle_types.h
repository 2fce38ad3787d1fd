// SPDX-License-Identifier: MIT
// The basic types of 64-bit Darwin, for the headers beside this one. What is in them is what the C standard
// and POSIX say, and numbers out of this system's manual pages; only the size of an opaque type counts here.
#pragma once

#include <stdarg.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
#define VANTLE_C_BEGIN extern "C" {
#define VANTLE_C_END }
#else
#define VANTLE_C_BEGIN
#define VANTLE_C_END
#endif

typedef int blksize_t;
typedef int dev_t;
typedef int pid_t;
typedef int suseconds_t;
typedef int wint_t;
typedef long time_t;
typedef long ssize_t;
typedef long long blkcnt_t;
typedef long long off_t;
typedef unsigned short mode_t;
typedef unsigned short nlink_t;
typedef unsigned int gid_t;
typedef unsigned int id_t;
typedef unsigned int uid_t;
typedef unsigned int sigset_t;
typedef unsigned int socklen_t;
typedef unsigned int useconds_t;
typedef unsigned long clock_t;
typedef unsigned long long ino_t;
typedef uint32_t __uint32_t;

typedef struct _xlocale* locale_t;
typedef struct {
  char opaque[128];
} mbstate_t;

struct timespec {
  time_t tv_sec;
  long tv_nsec;
};
struct timeval {
  time_t tv_sec;
  suseconds_t tv_usec;
};
