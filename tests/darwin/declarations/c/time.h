// SPDX-License-Identifier: MIT
// The numbers of clock_gettime(3).
#pragma once
#include <vantle_types.h>

#define CLOCKS_PER_SEC ((clock_t)1000000)
#define TIME_UTC 1
#define CLOCK_REALTIME _CLOCK_REALTIME
#define CLOCK_MONOTONIC_RAW _CLOCK_MONOTONIC_RAW
#define CLOCK_MONOTONIC _CLOCK_MONOTONIC
#define CLOCK_UPTIME_RAW _CLOCK_UPTIME_RAW
typedef enum {
  _CLOCK_REALTIME = 0,
  _CLOCK_MONOTONIC_RAW = 4,
  _CLOCK_MONOTONIC = 6,
  _CLOCK_UPTIME_RAW = 8
} clockid_t;

struct tm {
  int tm_sec, tm_min, tm_hour, tm_mday, tm_mon, tm_year, tm_wday, tm_yday, tm_isdst;
  long tm_gmtoff;
  char* tm_zone;
};

VANTLE_C_BEGIN
char* asctime(const struct tm* date);
clock_t clock(void);
int clock_gettime(clockid_t clock, struct timespec* now);
char* ctime(const time_t* moment);
double difftime(time_t end, time_t begin);
struct tm* gmtime(const time_t* moment);
struct tm* gmtime_r(const time_t* moment, struct tm* date);
struct tm* localtime(const time_t* moment);
struct tm* localtime_r(const time_t* moment, struct tm* date);
time_t mktime(struct tm* date);
int nanosleep(const struct timespec* duration, struct timespec* left);
size_t strftime(char* text, size_t size, const char* format, const struct tm* date);
time_t time(time_t* moment);
time_t timegm(struct tm* date);
int timespec_get(struct timespec* now, int base);
VANTLE_C_END
