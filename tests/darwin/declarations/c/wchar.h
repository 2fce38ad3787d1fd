// SPDX-License-Identifier: MIT
#pragma once
#include <stdio.h>
#include <time.h>
#include <vantle_types.h>

#define WEOF ((wint_t)-1)

VANTLE_C_BEGIN
wint_t btowc(int c);
wint_t fgetwc(FILE* file);
wchar_t* fgetws(wchar_t* text, int size, FILE* file);
wint_t fputwc(wchar_t c, FILE* file);
int fputws(const wchar_t* text, FILE* file);
int fwide(FILE* file, int mode);
int fwprintf(FILE* file, const wchar_t* format, ...);
int fwscanf(FILE* file, const wchar_t* format, ...);
wint_t getwc(FILE* file);
wint_t getwchar(void);
size_t mbrlen(const char* text, size_t size, mbstate_t* state);
size_t mbrtowc(wchar_t* wide, const char* text, size_t size, mbstate_t* state);
int mbsinit(const mbstate_t* state);
size_t mbsnrtowcs(wchar_t* wide, const char** text, size_t bytes, size_t size, mbstate_t* state);
size_t mbsrtowcs(wchar_t* wide, const char** text, size_t size, mbstate_t* state);
wint_t putwc(wchar_t c, FILE* file);
wint_t putwchar(wchar_t c);
int swprintf(wchar_t* text, size_t size, const wchar_t* format, ...);
int swscanf(const wchar_t* text, const wchar_t* format, ...);
wint_t ungetwc(wint_t c, FILE* file);
int vfwprintf(FILE* file, const wchar_t* format, va_list arguments);
int vfwscanf(FILE* file, const wchar_t* format, va_list arguments);
int vswprintf(wchar_t* text, size_t size, const wchar_t* format, va_list arguments);
int vswscanf(const wchar_t* text, const wchar_t* format, va_list arguments);
int vwprintf(const wchar_t* format, va_list arguments);
int vwscanf(const wchar_t* format, va_list arguments);
size_t wcrtomb(char* text, wchar_t wide, mbstate_t* state);
wchar_t* wcscat(wchar_t* to, const wchar_t* from);
wchar_t* wcschr(const wchar_t* text, wchar_t c);
int wcscmp(const wchar_t* one, const wchar_t* other);
int wcscoll(const wchar_t* one, const wchar_t* other);
wchar_t* wcscpy(wchar_t* to, const wchar_t* from);
size_t wcscspn(const wchar_t* text, const wchar_t* characters);
size_t wcsftime(wchar_t* text, size_t size, const wchar_t* format, const struct tm* date);
size_t wcslen(const wchar_t* text);
wchar_t* wcsncat(wchar_t* to, const wchar_t* from, size_t size);
int wcsncmp(const wchar_t* one, const wchar_t* other, size_t size);
wchar_t* wcsncpy(wchar_t* to, const wchar_t* from, size_t size);
size_t wcsnrtombs(char* text, const wchar_t** wide, size_t count, size_t size, mbstate_t* state);
wchar_t* wcspbrk(const wchar_t* text, const wchar_t* characters);
wchar_t* wcsrchr(const wchar_t* text, wchar_t c);
size_t wcsrtombs(char* text, const wchar_t** wide, size_t size, mbstate_t* state);
size_t wcsspn(const wchar_t* text, const wchar_t* characters);
wchar_t* wcsstr(const wchar_t* text, const wchar_t* wanted);
double wcstod(const wchar_t* text, wchar_t** end);
float wcstof(const wchar_t* text, wchar_t** end);
wchar_t* wcstok(wchar_t* text, const wchar_t* separators, wchar_t** state);
long wcstol(const wchar_t* text, wchar_t** end, int base);
long double wcstold(const wchar_t* text, wchar_t** end);
long long wcstoll(const wchar_t* text, wchar_t** end, int base);
unsigned long wcstoul(const wchar_t* text, wchar_t** end, int base);
unsigned long long wcstoull(const wchar_t* text, wchar_t** end, int base);
size_t wcsxfrm(wchar_t* to, const wchar_t* from, size_t size);
int wctob(wint_t c);
wchar_t* wmemchr(const wchar_t* text, wchar_t c, size_t size);
int wmemcmp(const wchar_t* one, const wchar_t* other, size_t size);
wchar_t* wmemcpy(wchar_t* to, const wchar_t* from, size_t size);
wchar_t* wmemmove(wchar_t* to, const wchar_t* from, size_t size);
wchar_t* wmemset(wchar_t* text, wchar_t c, size_t size);
int wprintf(const wchar_t* format, ...);
int wscanf(const wchar_t* format, ...);
VANTLE_C_END
