// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace vantle {

// A process id as the kernel hands it out: signed, 32 bits. 0 and 1 never name an app's process.
using Pid = std::int32_t;
constexpr Pid firstAppPid = 2; // 0 is the kernel, 1 the first process

} // namespace vantle
