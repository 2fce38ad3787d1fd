// SPDX-License-Identifier: MIT
#pragma once
#include <vantle_types.h>

typedef int wctrans_t;
typedef unsigned int wctype_t;

VANTLE_C_BEGIN
int iswalnum(wint_t c);
int iswalpha(wint_t c);
int iswblank(wint_t c);
int iswcntrl(wint_t c);
int iswdigit(wint_t c);
int iswgraph(wint_t c);
int iswlower(wint_t c);
int iswprint(wint_t c);
int iswpunct(wint_t c);
int iswspace(wint_t c);
int iswupper(wint_t c);
int iswxdigit(wint_t c);
int iswctype(wint_t c, wctype_t type);
wint_t towctrans(wint_t c, wctrans_t change);
wint_t towlower(wint_t c);
wint_t towupper(wint_t c);
wctrans_t wctrans(const char* name);
wctype_t wctype(const char* name);
VANTLE_C_END
