// SPDX-License-Identifier: MIT
#pragma once
#include <vantle_types.h>

#define POLLIN 0x0001
#define POLLPRI 0x0002
#define POLLOUT 0x0004
#define POLLERR 0x0008
#define POLLHUP 0x0010
#define POLLNVAL 0x0020

typedef unsigned int nfds_t;
struct pollfd {
  int fd;
  short events;
  short revents;
};

VANTLE_C_BEGIN
int poll(struct pollfd* descriptors, nfds_t count, int milliseconds);
VANTLE_C_END
