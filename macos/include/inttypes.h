#pragma once

#include <stddef.h>
#include <stdint.h>
#include <sys/cdefs.h>

// clang-format off
#define PRId8 "hhd"
#define PRIu8 "hhu"
#define PRIx8 "hhx"
#define PRId16 "hd"
#define PRIu16 "hu"
#define PRIx16 "hx"
#define PRId32 "d"
#define PRIu32 "u"
#define PRIx32 "x"
#define PRIX32 "X"
#define PRId64 "lld"
#define PRIu64 "llu"
#define PRIx64 "llx"
#define PRIX64 "llX"
#define PRIdMAX "jd"
#define PRIuMAX "ju"
#define PRIdPTR "ld"
#define PRIuPTR "lu"
#define PRIxPTR "lx"
#define SCNd32 "d"
#define SCNu32 "u"
#define SCNx32 "x"
#define SCNd64 "lld"
#define SCNu64 "llu"
#define SCNx64 "llx"
// clang-format on

typedef struct
{
    intmax_t quot;
    intmax_t rem;
} imaxdiv_t;

__BEGIN_DECLS
intmax_t imaxabs(intmax_t);
imaxdiv_t imaxdiv(intmax_t, intmax_t);
intmax_t strtoimax(char const*, char**, int);
uintmax_t strtoumax(char const*, char**, int);
intmax_t wcstoimax(wchar_t const*, wchar_t**, int);
uintmax_t wcstoumax(wchar_t const*, wchar_t**, int);
__END_DECLS
