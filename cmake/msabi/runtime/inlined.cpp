// What the C runtime's own headers have inline and Debian's only declare.
#include <stdarg.h>
#include <stddef.h>

extern "C" {
int __cdecl __stdio_common_vsprintf(unsigned long long options, char*, size_t, const char*, void* locale, va_list);
int __cdecl snprintf(char* to, size_t size, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int length = __stdio_common_vsprintf(/*as in C99*/ 2, to, size, format, nullptr, arguments);
    va_end(arguments);
    return length < 0 ? -1 : length;
}

void* __cdecl memcpy(void*, const void*, size_t);
void* __cdecl memmove(void*, const void*, size_t);
wchar_t* __cdecl wmemcpy(wchar_t* to, const wchar_t* from, size_t n) {
    return static_cast<wchar_t*>(memcpy(to, from, n * sizeof *to));
}
wchar_t* __cdecl wmemmove(wchar_t* to, const wchar_t* from, size_t n) {
    return static_cast<wchar_t*>(memmove(to, from, n * sizeof *to));
}
wchar_t* __cdecl wmemset(wchar_t* to, wchar_t c, size_t n) {
    for (size_t i = 0; i != n; ++i) to[i] = c;
    return to;
}
wchar_t* __cdecl wmemchr(const wchar_t* text, wchar_t c, size_t n) {
    for (; n; --n, ++text) {
        if (*text == c) return const_cast<wchar_t*>(text);
    }
    return nullptr;
}
int __cdecl wmemcmp(const wchar_t* a, const wchar_t* b, size_t n) {
    for (; n; --n, ++a, ++b) {
        if (*a != *b) return *a < *b ? -1 : 1;
    }
    return 0;
}

// long double is double in this ABI; the asm names keep the compiler from making each function call itself.
#define XO_LONG(name)                                      \
    double __cdecl name(double);                           \
    double __cdecl long_##name(double) __asm__(#name "l"); \
    double __cdecl long_##name(double x) { return name(x); }
XO_LONG(ceil)
XO_LONG(cos)
XO_LONG(cosh)
XO_LONG(exp)
XO_LONG(floor)
XO_LONG(log)
XO_LONG(sin)
XO_LONG(sinh)
XO_LONG(sqrt)
XO_LONG(tan)
#define XO_LONG_PAIR(name, Second)                                 \
    double __cdecl name(double, Second);                           \
    double __cdecl long_##name(double, Second) __asm__(#name "l"); \
    double __cdecl long_##name(double x, Second second) { return name(x, second); }
XO_LONG_PAIR(frexp, int*)
XO_LONG_PAIR(ldexp, int)
XO_LONG_PAIR(pow, double)
}
