// SPDX-License-Identifier: MIT
#pragma once
#include <string.h>

VANTLE_C_BEGIN
int strcasecmp(const char* one, const char* other);
int strncasecmp(const char* one, const char* other, size_t size);
VANTLE_C_END
