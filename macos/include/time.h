#pragma once

#include <stddef.h>
#include <sys/types.h>

#define CLOCKS_PER_SEC ((clock_t)1000000)
#define TIME_UTC 1

struct timespec
{
    time_t tv_sec;
    long tv_nsec;
};

struct tm
{
    int tm_sec;
    int tm_min;
    int tm_hour;
    int tm_mday;
    int tm_mon;
    int tm_year;
    int tm_wday;
    int tm_yday;
    int tm_isdst;
    long tm_gmtoff;
    char* tm_zone;
};

typedef enum {
    _CLOCK_REALTIME = 0,
    _CLOCK_MONOTONIC_RAW = 4,
    _CLOCK_MONOTONIC_RAW_APPROX = 5,
    _CLOCK_MONOTONIC = 6,
    _CLOCK_UPTIME_RAW = 8,
    _CLOCK_UPTIME_RAW_APPROX = 9,
    _CLOCK_PROCESS_CPUTIME_ID = 12,
    _CLOCK_THREAD_CPUTIME_ID = 16
} clockid_t;
#define CLOCK_REALTIME _CLOCK_REALTIME
#define CLOCK_MONOTONIC_RAW _CLOCK_MONOTONIC_RAW
#define CLOCK_MONOTONIC _CLOCK_MONOTONIC
#define CLOCK_UPTIME_RAW _CLOCK_UPTIME_RAW

__BEGIN_DECLS
clock_t clock(void);
time_t time(time_t*);
double difftime(time_t, time_t);
time_t mktime(struct tm*);
char* asctime(struct tm const*);
char* ctime(time_t const*);
struct tm* gmtime(time_t const*);
struct tm* gmtime_r(time_t const*, struct tm*);
struct tm* localtime(time_t const*);
struct tm* localtime_r(time_t const*, struct tm*);
size_t strftime(char*, size_t, char const*, struct tm const*);
int nanosleep(struct timespec const*, struct timespec*);
int clock_gettime(clockid_t, struct timespec*);
int clock_getres(clockid_t, struct timespec*);
int timespec_get(struct timespec*, int);
__END_DECLS
