#pragma once

#include <sys/types.h>

#define WNOHANG 1
#define WEXITSTATUS(status) (((status) >> 8) & 0xff)
#define WTERMSIG(status) ((status)&0x7f)
#define WIFEXITED(status) (WTERMSIG(status) == 0)

__BEGIN_DECLS
pid_t wait(int*);
pid_t waitpid(pid_t, int*, int);
__END_DECLS
