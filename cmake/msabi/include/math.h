// UCRT's classification of numbers, where Debian's header has macros for GCC.
#include <gnu_begin.h>
#include_next <math.h>
#include <gnu_end.h>
#undef fpclassify
#undef isfinite
#undef isgreater
#undef isgreaterequal
#undef isinf
#undef isless
#undef islessequal
#undef islessgreater
#undef isnan
#undef isnormal
#undef isunordered
#undef signbit
#undef FP_INFINITE
#undef FP_NAN
#undef FP_NORMAL
#undef FP_SUBNORMAL
#undef FP_ZERO
#define _DENORM (-2)
#define _FINITE (-1)
#define _INFCODE 1
#define _NANCODE 2
#define FP_INFINITE _INFCODE
#define FP_NAN _NANCODE
#define FP_NORMAL _FINITE
#define FP_SUBNORMAL _DENORM
#define FP_ZERO 0
#if defined(__cplusplus) && !defined(XO_MSABI_MATH)
#    define XO_MSABI_MATH
extern "C" {
short __cdecl _dclass(double);
short __cdecl _fdclass(float);
short __cdecl _ldclass(long double);
short __cdecl _dtest(double*);
short __cdecl _fdtest(float*);
short __cdecl _ldtest(long double*);
int __cdecl _dsign(double);
int __cdecl _fdsign(float);
int __cdecl _ldsign(long double);
int __cdecl _dpcomp(double, double);
int __cdecl _fdpcomp(float, float);
int __cdecl _ldpcomp(long double, long double);
}
extern "C++" {
inline bool signbit(float x) noexcept { return __builtin_signbit(x); }
inline bool signbit(double x) noexcept { return __builtin_signbit(x); }
inline bool signbit(long double x) noexcept { return __builtin_signbit(x); }
inline int fpclassify(float x) noexcept { return _fdclass(x); }
inline int fpclassify(double x) noexcept { return _dclass(x); }
inline int fpclassify(long double x) noexcept { return _ldclass(x); }
}
#endif
