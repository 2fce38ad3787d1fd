// SPDX-License-Identifier: MIT
#include_next <limits.h>
#ifndef PATH_MAX
#define PATH_MAX 1024
#define NAME_MAX 255
#define SSIZE_MAX LONG_MAX
#endif
