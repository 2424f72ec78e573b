#pragma once

#include <sys/cdefs.h>

typedef float float_t;
typedef double double_t;

#define HUGE_VAL __builtin_huge_val()
#define HUGE_VALF __builtin_huge_valf()
#define HUGE_VALL __builtin_huge_vall()
#define INFINITY HUGE_VALF
#define NAN __builtin_nanf("")
#define M_PI 3.14159265358979323846

#define FP_NAN 1
#define FP_INFINITE 2
#define FP_ZERO 3
#define FP_NORMAL 4
#define FP_SUBNORMAL 5
#define FP_ILOGB0 (-2147483647 - 1)
#define FP_ILOGBNAN (-2147483647 - 1)
#define MATH_ERRNO 1
#define MATH_ERREXCEPT 2
#define math_errhandling 2

#define fpclassify(x) __builtin_fpclassify(FP_NAN, FP_INFINITE, FP_NORMAL, FP_SUBNORMAL, FP_ZERO, x)
#define isfinite(x) __builtin_isfinite(x)
#define isinf(x) __builtin_isinf(x)
#define isnan(x) __builtin_isnan(x)
#define isnormal(x) __builtin_isnormal(x)
#define signbit(x) __builtin_signbit(x)
#define isgreater(x, y) __builtin_isgreater(x, y)
#define isgreaterequal(x, y) __builtin_isgreaterequal(x, y)
#define isless(x, y) __builtin_isless(x, y)
#define islessequal(x, y) __builtin_islessequal(x, y)
#define islessgreater(x, y) __builtin_islessgreater(x, y)
#define isunordered(x, y) __builtin_isunordered(x, y)

// clang-format off
#define __QUILLO_MATH1(name) double name(double); float name##f(float); long double name##l(long double);
#define __QUILLO_MATH2(name) double name(double, double); float name##f(float, float); \
    long double name##l(long double, long double);
__BEGIN_DECLS
__QUILLO_MATH1(acos) __QUILLO_MATH1(acosh) __QUILLO_MATH1(asin) __QUILLO_MATH1(asinh) __QUILLO_MATH1(atan)
__QUILLO_MATH1(atanh) __QUILLO_MATH1(cbrt) __QUILLO_MATH1(ceil) __QUILLO_MATH1(cos) __QUILLO_MATH1(cosh)
__QUILLO_MATH1(erf) __QUILLO_MATH1(erfc) __QUILLO_MATH1(exp) __QUILLO_MATH1(exp2) __QUILLO_MATH1(expm1)
__QUILLO_MATH1(fabs) __QUILLO_MATH1(floor) __QUILLO_MATH1(lgamma) __QUILLO_MATH1(log) __QUILLO_MATH1(log10)
__QUILLO_MATH1(log1p) __QUILLO_MATH1(log2) __QUILLO_MATH1(logb) __QUILLO_MATH1(nearbyint) __QUILLO_MATH1(rint)
__QUILLO_MATH1(round) __QUILLO_MATH1(sin) __QUILLO_MATH1(sinh) __QUILLO_MATH1(sqrt) __QUILLO_MATH1(tan)
__QUILLO_MATH1(tanh) __QUILLO_MATH1(tgamma) __QUILLO_MATH1(trunc)
__QUILLO_MATH2(atan2) __QUILLO_MATH2(copysign) __QUILLO_MATH2(fdim) __QUILLO_MATH2(fmax) __QUILLO_MATH2(fmin)
__QUILLO_MATH2(fmod) __QUILLO_MATH2(hypot) __QUILLO_MATH2(nextafter) __QUILLO_MATH2(pow) __QUILLO_MATH2(remainder)
double fma(double, double, double); float fmaf(float, float, float); long double fmal(long double, long double, long double);
double frexp(double, int*); float frexpf(float, int*); long double frexpl(long double, int*);
double ldexp(double, int); float ldexpf(float, int); long double ldexpl(long double, int);
double modf(double, double*); float modff(float, float*); long double modfl(long double, long double*);
double nan(char const*); float nanf(char const*); long double nanl(char const*);
double nexttoward(double, long double); float nexttowardf(float, long double); long double nexttowardl(long double, long double);
double remquo(double, double, int*); float remquof(float, float, int*); long double remquol(long double, long double, int*);
double scalbn(double, int); float scalbnf(float, int); long double scalbnl(long double, int);
double scalbln(double, long); float scalblnf(float, long); long double scalblnl(long double, long);
int ilogb(double); int ilogbf(float); int ilogbl(long double);
long lrint(double); long lrintf(float); long lrintl(long double);
long lround(double); long lroundf(float); long lroundl(long double);
long long llrint(double); long long llrintf(float); long long llrintl(long double);
long long llround(double); long long llroundf(float); long long llroundl(long double);
__END_DECLS
// clang-format on
