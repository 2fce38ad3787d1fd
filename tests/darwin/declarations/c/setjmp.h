// SPDX-License-Identifier: MIT
#pragma once

typedef int jmp_buf[48];

#ifdef __cplusplus
extern "C" {
#endif
__attribute__((noreturn)) void longjmp(jmp_buf place, int value);
int setjmp(jmp_buf place);
#ifdef __cplusplus
}
#endif
