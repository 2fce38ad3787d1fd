// SPDX-License-Identifier: MIT
#pragma once

namespace vantle {

// Runs the self-test on this machine and prints its report; needs no desktop. The exit status.
int runSelfTestMode();

} // namespace vantle
