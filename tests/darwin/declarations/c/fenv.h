// SPDX-License-Identifier: MIT
#pragma once
#include <vantle_types.h>

typedef unsigned short fexcept_t;
typedef struct {
  unsigned long long opaque[2];
} fenv_t;

VANTLE_C_BEGIN
int feclearexcept(int exceptions);
int fegetenv(fenv_t* environment);
int fegetexceptflag(fexcept_t* flags, int exceptions);
int fegetround(void);
int feholdexcept(fenv_t* environment);
int feraiseexcept(int exceptions);
int fesetenv(const fenv_t* environment);
int fesetexceptflag(const fexcept_t* flags, int exceptions);
int fesetround(int rounding);
int fetestexcept(int exceptions);
int feupdateenv(const fenv_t* environment);
VANTLE_C_END
