#include <gnu_begin.h>
#include_next <stdlib.h>
#include <gnu_end.h>
#if defined(__cplusplus) && !defined(XO_MSABI_STDLIB)
#    define XO_MSABI_STDLIB
extern "C++" {
inline long abs(long x) noexcept { return x < 0 ? -x : x; }
inline long long abs(long long x) noexcept { return x < 0 ? -x : x; }
}
#endif
