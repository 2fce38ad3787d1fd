// SPDX-License-Identifier: MIT
#pragma once
#include <vantle_types.h>

typedef float float_t;
typedef double double_t;

#define NAN __builtin_nanf("")
#define INFINITY __builtin_inff()
#define HUGE_VAL __builtin_huge_val()
#define HUGE_VALF __builtin_huge_valf()
#define HUGE_VALL __builtin_huge_vall()
#define FP_NAN 1
#define FP_INFINITE 2
#define FP_ZERO 3
#define FP_NORMAL 4
#define FP_SUBNORMAL 5
#define FP_ILOGB0 (-2147483647 - 1)
#define FP_ILOGBNAN (-2147483647 - 1)
#define MATH_ERRNO 1
#define MATH_ERREXCEPT 2
#define math_errhandling MATH_ERREXCEPT

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

// Each of these is there for every floating-point type.
#define VANTLE_OF_ONE(name)                                                                                  \
  double name(double x);                                                                                     \
  float name##f(float x);                                                                                    \
  long double name##l(long double x)
#define VANTLE_OF_TWO(name)                                                                                  \
  double name(double x, double y);                                                                           \
  float name##f(float x, float y);                                                                           \
  long double name##l(long double x, long double y)
#define VANTLE_OTHERS(suffix, Real)                                                                          \
  Real fma##suffix(Real x, Real y, Real z);                                                                  \
  Real frexp##suffix(Real x, int* exponent);                                                                 \
  Real ldexp##suffix(Real x, int exponent);                                                                  \
  Real modf##suffix(Real x, Real* whole);                                                                    \
  Real nan##suffix(const char* tag);                                                                         \
  Real nexttoward##suffix(Real x, long double y);                                                            \
  Real remquo##suffix(Real x, Real y, int* quotient);                                                        \
  Real scalbln##suffix(Real x, long exponent);                                                               \
  Real scalbn##suffix(Real x, int exponent);                                                                 \
  int ilogb##suffix(Real x);                                                                                 \
  long lrint##suffix(Real x);                                                                                \
  long lround##suffix(Real x);                                                                               \
  long long llrint##suffix(Real x);                                                                          \
  long long llround##suffix(Real x)

VANTLE_C_BEGIN
VANTLE_OF_ONE(acos);
VANTLE_OF_ONE(asin);
VANTLE_OF_ONE(atan);
VANTLE_OF_ONE(ceil);
VANTLE_OF_ONE(cos);
VANTLE_OF_ONE(cosh);
VANTLE_OF_ONE(exp);
VANTLE_OF_ONE(fabs);
VANTLE_OF_ONE(floor);
VANTLE_OF_ONE(log);
VANTLE_OF_ONE(log10);
VANTLE_OF_ONE(sin);
VANTLE_OF_ONE(sinh);
VANTLE_OF_ONE(sqrt);
VANTLE_OF_ONE(tan);
VANTLE_OF_ONE(tanh);
VANTLE_OF_ONE(acosh);
VANTLE_OF_ONE(asinh);
VANTLE_OF_ONE(atanh);
VANTLE_OF_ONE(cbrt);
VANTLE_OF_ONE(erf);
VANTLE_OF_ONE(erfc);
VANTLE_OF_ONE(exp2);
VANTLE_OF_ONE(expm1);
VANTLE_OF_ONE(lgamma);
VANTLE_OF_ONE(log1p);
VANTLE_OF_ONE(log2);
VANTLE_OF_ONE(logb);
VANTLE_OF_ONE(nearbyint);
VANTLE_OF_ONE(rint);
VANTLE_OF_ONE(round);
VANTLE_OF_ONE(tgamma);
VANTLE_OF_ONE(trunc);
VANTLE_OF_TWO(atan2);
VANTLE_OF_TWO(fmod);
VANTLE_OF_TWO(pow);
VANTLE_OF_TWO(copysign);
VANTLE_OF_TWO(fdim);
VANTLE_OF_TWO(fmax);
VANTLE_OF_TWO(fmin);
VANTLE_OF_TWO(hypot);
VANTLE_OF_TWO(nextafter);
VANTLE_OF_TWO(remainder);
VANTLE_OTHERS(, double);
VANTLE_OTHERS(f, float);
VANTLE_OTHERS(l, long double);
VANTLE_C_END
#undef VANTLE_OF_ONE
#undef VANTLE_OF_TWO
#undef VANTLE_OTHERS
