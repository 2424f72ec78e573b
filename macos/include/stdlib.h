#pragma once

#include <stddef.h>
#include <sys/types.h>

#define EXIT_SUCCESS 0
#define EXIT_FAILURE 1
#define RAND_MAX 0x7fffffff
extern int __mb_cur_max;
#define MB_CUR_MAX __mb_cur_max

typedef struct
{
    int quot;
    int rem;
} div_t;
typedef struct
{
    long quot;
    long rem;
} ldiv_t;
typedef struct
{
    long long quot;
    long long rem;
} lldiv_t;

__BEGIN_DECLS
void abort(void) __attribute__((__noreturn__, __cold__));
void exit(int) __attribute__((__noreturn__));
void _Exit(int) __attribute__((__noreturn__));
void quick_exit(int) __attribute__((__noreturn__));
int at_quick_exit(void (*)(void));
int atexit(void (*)(void));

void* malloc(size_t) __attribute__((__warn_unused_result__));
void* calloc(size_t, size_t) __attribute__((__warn_unused_result__));
void* realloc(void*, size_t) __attribute__((__warn_unused_result__));
void* aligned_alloc(size_t, size_t) __attribute__((__warn_unused_result__));
int posix_memalign(void**, size_t, size_t);
void free(void*);

int abs(int);
long labs(long);
long long llabs(long long);
div_t div(int, int);
ldiv_t ldiv(long, long);
lldiv_t lldiv(long long, long long);

double atof(char const*);
int atoi(char const*);
long atol(char const*);
long long atoll(char const*);
double strtod(char const*, char**);
float strtof(char const*, char**);
long double strtold(char const*, char**);
long strtol(char const*, char**, int);
long long strtoll(char const*, char**, int);
unsigned long strtoul(char const*, char**, int);
unsigned long long strtoull(char const*, char**, int);

int mblen(char const*, size_t);
int mbtowc(wchar_t*, char const*, size_t);
int wctomb(char*, wchar_t);
size_t mbstowcs(wchar_t*, char const*, size_t);
size_t wcstombs(char*, wchar_t const*, size_t);

void* bsearch(void const*, void const*, size_t, size_t, int (*)(void const*, void const*));
void qsort(void*, size_t, size_t, int (*)(void const*, void const*));
int rand(void);
void srand(unsigned int);
uint32_t arc4random(void);
void arc4random_buf(void*, size_t);

char* getenv(char const*);
int setenv(char const*, char const*, int);
int unsetenv(char const*);
int system(char const*);

// This variant resolves into a buffer that it allocates when given none.
char* realpath(char const*, char*) __asm("_realpath$DARWIN_EXTSN");
__END_DECLS
