// SPDX-License-Identifier: MIT
// What is called of CoreGraphics, from the documentation of Quartz window services.
#pragma once
#include <CoreFoundation/CoreFoundation.h>

#ifdef __cplusplus
extern "C" {
#endif
CFDictionaryRef CGSessionCopyCurrentDictionary(void); // null outside a session with windows
#ifdef __cplusplus
}
#endif
