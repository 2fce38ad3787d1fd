// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Platform.h"

namespace vantle {

// Runs the self-test on this machine and prints its report; needs no desktop. The exit status.
int runSelfTestMode(Platform& platform);

} // namespace vantle
