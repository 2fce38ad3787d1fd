// SPDX-License-Identifier: MIT
#pragma once
#include <vantle_types.h>

#define PRId64 "lld"
#define PRIu64 "llu"
#define PRIx64 "llx"

typedef struct {
  intmax_t quot;
  intmax_t rem;
} imaxdiv_t;

VANTLE_C_BEGIN
imaxdiv_t imaxdiv(intmax_t dividend, intmax_t divisor);
intmax_t imaxabs(intmax_t number);
intmax_t strtoimax(const char* text, char** end, int base);
intmax_t wcstoimax(const wchar_t* text, wchar_t** end, int base);
uintmax_t strtoumax(const char* text, char** end, int base);
uintmax_t wcstoumax(const wchar_t* text, wchar_t** end, int base);
VANTLE_C_END
