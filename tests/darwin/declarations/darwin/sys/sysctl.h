// SPDX-License-Identifier: MIT
// sysctl(3).
#pragma once
#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif
int sysctlbyname(const char* name, void* value, size_t* size, void* newValue, size_t newSize);
#ifdef __cplusplus
}
#endif
