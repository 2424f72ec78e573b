#pragma once

#include <pthread.h>
#include <sys/types.h>

typedef int sig_atomic_t;
typedef __uint32_t sigset_t;

#define SIGHUP 1
#define SIGINT 2
#define SIGQUIT 3
#define SIGILL 4
#define SIGTRAP 5
#define SIGABRT 6
#define SIGFPE 8
#define SIGKILL 9
#define SIGBUS 10
#define SIGSEGV 11
#define SIGSYS 12
#define SIGPIPE 13
#define SIGTERM 15
#define SIGCHLD 20

#define SIG_BLOCK 1
#define SIG_UNBLOCK 2
#define SIG_SETMASK 3

#define SIG_DFL ((void (*)(int))0)
#define SIG_IGN ((void (*)(int))1)
#define SIG_ERR ((void (*)(int)) - 1)

#define sigemptyset(set) (*(set) = 0, 0)
#define sigfillset(set) (*(set) = ~(sigset_t)0, 0)
#define sigdelset(set, number) (*(set) &= ~((sigset_t)1 << ((number)-1)), 0)
#define sigismember(set, number) ((*(set) & (sigset_t)1 << ((number)-1)) != 0)
#define sigaddset(set, number) (*(set) |= (sigset_t)1 << ((number)-1), 0)

__BEGIN_DECLS
int kill(pid_t, int);
int raise(int);
void (*signal(int, void (*)(int)))(int);
int sigpending(sigset_t*);
int sigwait(sigset_t const*, int*);
__END_DECLS
