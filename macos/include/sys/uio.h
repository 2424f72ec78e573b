#pragma once

#include <sys/types.h>

struct iovec
{
    void* iov_base;
    size_t iov_len;
};

__BEGIN_DECLS
ssize_t readv(int, struct iovec const*, int);
ssize_t writev(int, struct iovec const*, int);
__END_DECLS
