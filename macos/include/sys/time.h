#pragma once

#include <sys/types.h>
#include <time.h>

struct timeval
{
    time_t tv_sec;
    suseconds_t tv_usec;
};

__BEGIN_DECLS
int gettimeofday(struct timeval*, void*);
__END_DECLS
