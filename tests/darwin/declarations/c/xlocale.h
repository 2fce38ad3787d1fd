// SPDX-License-Identifier: MIT
// xlocale(3): what libc++ calls with a locale of its own.
#pragma once
#include <ctype.h>
#include <locale.h>
#include <time.h>
#include <vantle_types.h>
#include <wchar.h>
#include <wctype.h>

#define LC_COLLATE_MASK (1 << 0)
#define LC_CTYPE_MASK (1 << 1)
#define LC_MESSAGES_MASK (1 << 2)
#define LC_MONETARY_MASK (1 << 3)
#define LC_NUMERIC_MASK (1 << 4)
#define LC_TIME_MASK (1 << 5)
#define LC_ALL_MASK 0x3f

VANTLE_C_BEGIN
int ___mb_cur_max_l(locale_t locale);
int asprintf_l(char** result, locale_t locale, const char* format, ...);
wint_t btowc_l(int c, locale_t locale);
int freelocale(locale_t locale);
int isalnum_l(int c, locale_t locale);
int isalpha_l(int c, locale_t locale);
int isblank_l(int c, locale_t locale);
int iscntrl_l(int c, locale_t locale);
int isdigit_l(int c, locale_t locale);
int isgraph_l(int c, locale_t locale);
int islower_l(int c, locale_t locale);
int isprint_l(int c, locale_t locale);
int ispunct_l(int c, locale_t locale);
int isspace_l(int c, locale_t locale);
int isupper_l(int c, locale_t locale);
int isxdigit_l(int c, locale_t locale);
int iswalnum_l(wint_t c, locale_t locale);
int iswalpha_l(wint_t c, locale_t locale);
int iswblank_l(wint_t c, locale_t locale);
int iswcntrl_l(wint_t c, locale_t locale);
int iswdigit_l(wint_t c, locale_t locale);
int iswgraph_l(wint_t c, locale_t locale);
int iswlower_l(wint_t c, locale_t locale);
int iswprint_l(wint_t c, locale_t locale);
int iswpunct_l(wint_t c, locale_t locale);
int iswspace_l(wint_t c, locale_t locale);
int iswupper_l(wint_t c, locale_t locale);
int iswxdigit_l(wint_t c, locale_t locale);
int iswctype_l(wint_t c, wctype_t type, locale_t locale);
struct lconv* localeconv_l(locale_t locale);
size_t mbrlen_l(const char* text, size_t size, mbstate_t* state, locale_t locale);
size_t mbrtowc_l(wchar_t* wide, const char* text, size_t size, mbstate_t* state, locale_t locale);
size_t mbsnrtowcs_l(wchar_t* wide, const char** text, size_t bytes, size_t size, mbstate_t* state,
                    locale_t locale);
size_t mbsrtowcs_l(wchar_t* wide, const char** text, size_t size, mbstate_t* state, locale_t locale);
int mbtowc_l(wchar_t* wide, const char* text, size_t size, locale_t locale);
locale_t newlocale(int mask, const char* name, locale_t base);
int snprintf_l(char* text, size_t size, locale_t locale, const char* format, ...);
int sscanf_l(const char* text, locale_t locale, const char* format, ...);
int strcoll_l(const char* one, const char* other, locale_t locale);
size_t strftime_l(char* text, size_t size, const char* format, const struct tm* date, locale_t locale);
double strtod_l(const char* text, char** end, locale_t locale);
float strtof_l(const char* text, char** end, locale_t locale);
long strtol_l(const char* text, char** end, int base, locale_t locale);
long double strtold_l(const char* text, char** end, locale_t locale);
long long strtoll_l(const char* text, char** end, int base, locale_t locale);
unsigned long long strtoull_l(const char* text, char** end, int base, locale_t locale);
size_t strxfrm_l(char* to, const char* from, size_t size, locale_t locale);
int tolower_l(int c, locale_t locale);
int toupper_l(int c, locale_t locale);
wint_t towlower_l(wint_t c, locale_t locale);
wint_t towupper_l(wint_t c, locale_t locale);
locale_t uselocale(locale_t locale);
int vasprintf_l(char** result, locale_t locale, const char* format, va_list arguments);
int vsnprintf_l(char* text, size_t size, locale_t locale, const char* format, va_list arguments);
int vsscanf_l(const char* text, locale_t locale, const char* format, va_list arguments);
size_t wcrtomb_l(char* text, wchar_t wide, mbstate_t* state, locale_t locale);
int wcscoll_l(const wchar_t* one, const wchar_t* other, locale_t locale);
size_t wcsnrtombs_l(char* text, const wchar_t** wide, size_t count, size_t size, mbstate_t* state,
                    locale_t locale);
size_t wcsxfrm_l(wchar_t* to, const wchar_t* from, size_t size, locale_t locale);
int wctob_l(wint_t c, locale_t locale);
VANTLE_C_END

#define MB_CUR_MAX_L(locale) ((size_t)___mb_cur_max_l(locale))
