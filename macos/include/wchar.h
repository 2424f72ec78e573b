#pragma once

#include <stdarg.h>
#include <stddef.h>
#include <stdio.h>
#include <sys/types.h>

// The tag is part of mangled names.
typedef union {
    char __mbstate8[128];
    long long _mbstateL;
} __mbstate_t;
typedef __mbstate_t mbstate_t;
typedef int wint_t;
typedef __uint32_t wctype_t;

#define WEOF ((wint_t)-1)
#ifndef WCHAR_MIN
#define WCHAR_MIN (-0x7fffffff - 1)
#define WCHAR_MAX 0x7fffffff
#endif

struct tm;

__BEGIN_DECLS
wint_t btowc(int);
int wctob(wint_t);
wint_t fgetwc(FILE*);
wchar_t* fgetws(wchar_t*, int, FILE*);
wint_t fputwc(wchar_t, FILE*);
int fputws(wchar_t const*, FILE*);
int fwide(FILE*, int);
wint_t getwc(FILE*);
wint_t getwchar(void);
wint_t putwc(wchar_t, FILE*);
wint_t putwchar(wchar_t);
wint_t ungetwc(wint_t, FILE*);
int wprintf(wchar_t const*, ...);
int fwprintf(FILE*, wchar_t const*, ...);
int swprintf(wchar_t*, size_t, wchar_t const*, ...);
int vwprintf(wchar_t const*, va_list);
int vfwprintf(FILE*, wchar_t const*, va_list);
int vswprintf(wchar_t*, size_t, wchar_t const*, va_list);
int wscanf(wchar_t const*, ...);
int fwscanf(FILE*, wchar_t const*, ...);
int swscanf(wchar_t const*, wchar_t const*, ...);
int vwscanf(wchar_t const*, va_list);
int vfwscanf(FILE*, wchar_t const*, va_list);
int vswscanf(wchar_t const*, wchar_t const*, va_list);
int mbsinit(mbstate_t const*);
size_t mbrlen(char const*, size_t, mbstate_t*);
size_t mbrtowc(wchar_t*, char const*, size_t, mbstate_t*);
size_t wcrtomb(char*, wchar_t, mbstate_t*);
size_t mbsrtowcs(wchar_t*, char const**, size_t, mbstate_t*);
size_t wcsrtombs(char*, wchar_t const**, size_t, mbstate_t*);
size_t mbsnrtowcs(wchar_t*, char const**, size_t, size_t, mbstate_t*);
size_t wcsnrtombs(char*, wchar_t const**, size_t, size_t, mbstate_t*);
wchar_t* wcscat(wchar_t*, wchar_t const*);
wchar_t* wcschr(wchar_t const*, wchar_t);
int wcscmp(wchar_t const*, wchar_t const*);
int wcscoll(wchar_t const*, wchar_t const*);
wchar_t* wcscpy(wchar_t*, wchar_t const*);
size_t wcscspn(wchar_t const*, wchar_t const*);
size_t wcsftime(wchar_t*, size_t, wchar_t const*, struct tm const*);
size_t wcslen(wchar_t const*);
wchar_t* wcsncat(wchar_t*, wchar_t const*, size_t);
int wcsncmp(wchar_t const*, wchar_t const*, size_t);
wchar_t* wcsncpy(wchar_t*, wchar_t const*, size_t);
wchar_t* wcspbrk(wchar_t const*, wchar_t const*);
wchar_t* wcsrchr(wchar_t const*, wchar_t);
size_t wcsspn(wchar_t const*, wchar_t const*);
wchar_t* wcsstr(wchar_t const*, wchar_t const*);
wchar_t* wcstok(wchar_t*, wchar_t const*, wchar_t**);
size_t wcsxfrm(wchar_t*, wchar_t const*, size_t);
double wcstod(wchar_t const*, wchar_t**);
float wcstof(wchar_t const*, wchar_t**);
long double wcstold(wchar_t const*, wchar_t**);
long wcstol(wchar_t const*, wchar_t**, int);
long long wcstoll(wchar_t const*, wchar_t**, int);
unsigned long wcstoul(wchar_t const*, wchar_t**, int);
unsigned long long wcstoull(wchar_t const*, wchar_t**, int);
wchar_t* wmemchr(wchar_t const*, wchar_t, size_t);
int wmemcmp(wchar_t const*, wchar_t const*, size_t);
wchar_t* wmemcpy(wchar_t*, wchar_t const*, size_t);
wchar_t* wmemmove(wchar_t*, wchar_t const*, size_t);
wchar_t* wmemset(wchar_t*, wchar_t, size_t);
__END_DECLS
