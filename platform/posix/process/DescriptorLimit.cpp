// SPDX-License-Identifier: MIT
#include "platform/posix/process/DescriptorLimit.h"

#include <algorithm>
#include <pthread.h>
#include <sys/resource.h>

namespace vantle {

namespace {

// What runs right after a fork can reach nothing but globals.
rlimit limitAtStart{};

void giveBackLimit() { ::setrlimit(RLIMIT_NOFILE, &limitAtStart); }

// On a Mac the higher limit is none at all, and yet as much cannot be had: its getrlimit(2) says to ask for
// no more than this (OPEN_MAX there).
constexpr rlim_t hadEverywhere = 10'240;

} // namespace

void raiseDescriptorLimit() {
  rlimit limit{};
  if (::getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur >= limit.rlim_max) return;
  limitAtStart = limit;
  // Without the handler the children would get the higher one.
  if (::pthread_atfork(nullptr, nullptr, giveBackLimit) != 0) return;
  limit.rlim_cur = limit.rlim_max;
  if (::setrlimit(RLIMIT_NOFILE, &limit) == 0 || limitAtStart.rlim_cur >= hadEverywhere) return;
  limit.rlim_cur = std::min(limit.rlim_max, hadEverywhere);
  ::setrlimit(RLIMIT_NOFILE, &limit);
}

} // namespace vantle
