// SPDX-License-Identifier: MIT
// What is called of IOKit's power management, from its documentation.
#pragma once
#include <CoreFoundation/CoreFoundation.h>

typedef int IOReturn;

#ifdef __cplusplus
extern "C" {
#endif
// Pids, as numbers, with arrays of dictionaries. Whoever called releases it.
IOReturn IOPMCopyAssertionsByProcess(CFDictionaryRef* assertions);
#ifdef __cplusplus
}
#endif
