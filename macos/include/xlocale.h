#pragma once

#include <locale.h>
#include <stdarg.h>
#include <stdlib.h>
#include <time.h>
#include <wchar.h>

typedef struct _xlocale* locale_t;

#define LC_COLLATE_MASK (1 << 0)
#define LC_CTYPE_MASK (1 << 1)
#define LC_MESSAGES_MASK (1 << 2)
#define LC_MONETARY_MASK (1 << 3)
#define LC_NUMERIC_MASK (1 << 4)
#define LC_TIME_MASK (1 << 5)
#define LC_ALL_MASK 0x3f
#define LC_GLOBAL_LOCALE ((locale_t)-1)

__BEGIN_DECLS
locale_t duplocale(locale_t);
int freelocale(locale_t);
locale_t newlocale(int, char const*, locale_t);
locale_t uselocale(locale_t);
struct lconv* localeconv_l(locale_t);
extern int ___mb_cur_max_l(locale_t);
#define MB_CUR_MAX_L(x) (___mb_cur_max_l(x))

int isdigit_l(int, locale_t);
int islower_l(int, locale_t);
int isupper_l(int, locale_t);
int isxdigit_l(int, locale_t);
int tolower_l(int, locale_t);
int toupper_l(int, locale_t);
int iswalpha_l(wint_t, locale_t);
int iswblank_l(wint_t, locale_t);
int iswcntrl_l(wint_t, locale_t);
int iswdigit_l(wint_t, locale_t);
int iswlower_l(wint_t, locale_t);
int iswprint_l(wint_t, locale_t);
int iswpunct_l(wint_t, locale_t);
int iswspace_l(wint_t, locale_t);
int iswupper_l(wint_t, locale_t);
int iswxdigit_l(wint_t, locale_t);
wint_t towlower_l(wint_t, locale_t);
wint_t towupper_l(wint_t, locale_t);

int strcoll_l(char const*, char const*, locale_t);
size_t strxfrm_l(char*, char const*, size_t, locale_t);
size_t strftime_l(char*, size_t, char const*, struct tm const*, locale_t);
int wcscoll_l(wchar_t const*, wchar_t const*, locale_t);
size_t wcsxfrm_l(wchar_t*, wchar_t const*, size_t, locale_t);
double strtod_l(char const*, char**, locale_t);
float strtof_l(char const*, char**, locale_t);
long double strtold_l(char const*, char**, locale_t);
long strtol_l(char const*, char**, int, locale_t);
long long strtoll_l(char const*, char**, int, locale_t);
unsigned long strtoul_l(char const*, char**, int, locale_t);
unsigned long long strtoull_l(char const*, char**, int, locale_t);
wint_t btowc_l(int, locale_t);
int wctob_l(wint_t, locale_t);
size_t mbrlen_l(char const*, size_t, mbstate_t*, locale_t);
size_t mbrtowc_l(wchar_t*, char const*, size_t, mbstate_t*, locale_t);
size_t wcrtomb_l(char*, wchar_t, mbstate_t*, locale_t);
size_t mbsnrtowcs_l(wchar_t*, char const**, size_t, size_t, mbstate_t*, locale_t);
size_t mbsrtowcs_l(wchar_t*, char const**, size_t, mbstate_t*, locale_t);
size_t wcsnrtombs_l(char*, wchar_t const**, size_t, size_t, mbstate_t*, locale_t);
int mbtowc_l(wchar_t*, char const*, size_t, locale_t);
int snprintf_l(char*, size_t, locale_t, char const*, ...);
int sscanf_l(char const*, locale_t, char const*, ...);
int asprintf_l(char**, locale_t, char const*, ...);
int vsnprintf_l(char*, size_t, locale_t, char const*, va_list);
int vsscanf_l(char const*, locale_t, char const*, va_list);
int vasprintf_l(char**, locale_t, char const*, va_list);
__END_DECLS
