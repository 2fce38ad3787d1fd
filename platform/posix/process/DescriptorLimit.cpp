// SPDX-License-Identifier: MIT
#include "platform/posix/process/DescriptorLimit.h"

#include <pthread.h>
#include <sys/resource.h>

namespace vantle {

namespace {

// What runs right after a fork can reach nothing but globals.
rlimit limitAtStart{};

void giveBackLimit() { ::setrlimit(RLIMIT_NOFILE, &limitAtStart); }

} // namespace

void raiseDescriptorLimit() {
  rlimit limit{};
  if (::getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur >= limit.rlim_max) return;
  limitAtStart = limit;
  // Without the handler the children would get the higher one.
  if (::pthread_atfork(nullptr, nullptr, giveBackLimit) != 0) return;
  limit.rlim_cur = limit.rlim_max;
  ::setrlimit(RLIMIT_NOFILE, &limit);
}

} // namespace vantle
