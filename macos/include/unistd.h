#pragma once

#include <sys/types.h>

#define STDIN_FILENO 0
#define STDOUT_FILENO 1
#define STDERR_FILENO 2
#define F_OK 0
#define X_OK 1
#define W_OK 2
#define R_OK 4
#define _SC_PAGESIZE 29
#define _SC_OPEN_MAX 5
#define _SC_NPROCESSORS_ONLN 58

__BEGIN_DECLS
int access(char const*, int);
int chdir(char const*);
int close(int);
int dup(int);
int dup2(int, int);
int execv(char const*, char* const*);
int execve(char const*, char* const*, char* const*);
int execvp(char const*, char* const*);
void _exit(int) __attribute__((__noreturn__));
pid_t fork(void);
int ftruncate(int, off_t);
char* getcwd(char*, size_t);
gid_t getgid(void);
int getpeereid(int, uid_t*, gid_t*);
pid_t getpid(void);
pid_t getppid(void);
uid_t geteuid(void);
uid_t getuid(void);
int isatty(int);
off_t lseek(int, off_t, int);
int pipe(int*);
ssize_t pread(int, void*, size_t, off_t);
ssize_t pwrite(int, void const*, size_t, off_t);
ssize_t read(int, void*, size_t);
ssize_t readlink(char const*, char*, size_t);
int rmdir(char const*);
pid_t setsid(void);
unsigned int sleep(unsigned int);
long sysconf(int);
int unlink(char const*);
int usleep(useconds_t);
ssize_t write(int, void const*, size_t);
__END_DECLS
