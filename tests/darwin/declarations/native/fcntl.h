// SPDX-License-Identifier: MIT
// For tests on another system: its own header, and what a Mac's fcntl(2) knows besides.
#pragma once
#include_next <fcntl.h>

#define F_GETPATH 50
#define F_FULLFSYNC 51
