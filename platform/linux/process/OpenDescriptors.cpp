// SPDX-License-Identifier: MIT
#include "platform/posix/process/OpenDescriptors.h"

#include <unistd.h>

namespace vantle {

namespace {

constexpr unsigned last = ~0U;

} // namespace

void closeAllFrom(int first) { ::close_range(static_cast<unsigned>(first), last, 0); }

void closeAllAtExecFrom(int first) { ::close_range(static_cast<unsigned>(first), last, CLOSE_RANGE_CLOEXEC); }

} // namespace vantle
