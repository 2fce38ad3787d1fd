// SPDX-License-Identifier: MIT
#pragma once
#include <vantle_types.h>

#define EXIT_SUCCESS 0
#define EXIT_FAILURE 1
#define RAND_MAX 0x7fffffff
#define MB_CUR_MAX ((size_t)___mb_cur_max())

typedef struct {
  int quot;
  int rem;
} div_t;
typedef struct {
  long quot;
  long rem;
} ldiv_t;
typedef struct {
  long long quot;
  long long rem;
} lldiv_t;

VANTLE_C_BEGIN
int ___mb_cur_max(void);
__attribute__((noreturn)) void _Exit(int status);
__attribute__((noreturn)) void abort(void);
int abs(int number);
void* aligned_alloc(size_t alignment, size_t size);
int at_quick_exit(void (*deed)(void));
int atexit(void (*deed)(void));
double atof(const char* text);
int atoi(const char* text);
long atol(const char* text);
long long atoll(const char* text);
void* bsearch(const void* key, const void* base, size_t count, size_t size,
              int (*compare)(const void*, const void*));
void* calloc(size_t count, size_t size);
div_t div(int dividend, int divisor);
__attribute__((noreturn)) void exit(int status);
void free(void* memory);
char* getenv(const char* name);
long labs(long number);
ldiv_t ldiv(long dividend, long divisor);
long long llabs(long long number);
lldiv_t lldiv(long long dividend, long long divisor);
void* malloc(size_t size);
int mblen(const char* text, size_t size);
size_t mbstowcs(wchar_t* wide, const char* text, size_t size);
int mbtowc(wchar_t* wide, const char* text, size_t size);
int posix_memalign(void** memory, size_t alignment, size_t size);
void qsort(void* base, size_t count, size_t size, int (*compare)(const void*, const void*));
__attribute__((noreturn)) void quick_exit(int status);
int rand(void);
void* realloc(void* memory, size_t size);
char* realpath(const char* path, char* resolved);
int setenv(const char* name, const char* value, int overwrite);
void srand(unsigned seed);
double strtod(const char* text, char** end);
float strtof(const char* text, char** end);
long strtol(const char* text, char** end, int base);
long double strtold(const char* text, char** end);
long long strtoll(const char* text, char** end, int base);
unsigned long strtoul(const char* text, char** end, int base);
unsigned long long strtoull(const char* text, char** end, int base);
int system(const char* command);
int unsetenv(const char* name);
size_t wcstombs(char* text, const wchar_t* wide, size_t size);
int wctomb(char* text, wchar_t wide);
VANTLE_C_END
