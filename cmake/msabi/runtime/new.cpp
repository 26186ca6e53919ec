// operator new and delete, one in each object: XO_PART selects it. So a program may replace any of them.
#include <stdlib.h>
#include <vcruntime_exception.h>
#include <vcruntime_new.h>

extern "C" {
int __cdecl _callnewh(size_t);
void* __cdecl _aligned_malloc(size_t, size_t);
void __cdecl _aligned_free(void*);
}
using Align = std::align_val_t;
using NoThrow = std::nothrow_t;

#if XO_PART <= 1
template <class Allocate>
static void* allocate(size_t size, Allocate tryOnce) {
    while (true) {
        if (void* const block = tryOnce(size ? size : 1)) return block;
        if (!_callnewh(size)) throw std::bad_alloc();
    }
}
#endif

#if XO_PART == 0
void* operator new(size_t n) {
    return allocate(n, [](size_t size) { return malloc(size); });
}
#elif XO_PART == 1
void* operator new(size_t n, Align a) {
    return allocate(n, [a](size_t size) { return _aligned_malloc(size, static_cast<size_t>(a)); });
}
#elif XO_PART == 2
void* operator new(size_t n, const NoThrow&) noexcept {
    try {
        return operator new(n);
    } catch (...) {
        return nullptr;
    }
}
#elif XO_PART == 3
void* operator new(size_t n, Align a, const NoThrow&) noexcept {
    try {
        return operator new(n, a);
    } catch (...) {
        return nullptr;
    }
}
#elif XO_PART == 4
void* operator new[](size_t n) { return operator new(n); }
#elif XO_PART == 5
void* operator new[](size_t n, const NoThrow& tag) noexcept { return operator new(n, tag); }
#elif XO_PART == 6
void* operator new[](size_t n, Align a) { return operator new(n, a); }
#elif XO_PART == 7
void operator delete(void* p) noexcept { free(p); }
#elif XO_PART == 8
void operator delete(void* p, size_t) noexcept { operator delete(p); }
#elif XO_PART == 9
void operator delete(void* p, const NoThrow&) noexcept { operator delete(p); }
#elif XO_PART == 10
void operator delete(void* p, Align) noexcept { _aligned_free(p); }
#elif XO_PART == 11
void operator delete(void* p, size_t, Align a) noexcept { operator delete(p, a); }
#elif XO_PART == 12
void operator delete[](void* p) noexcept { operator delete(p); }
#elif XO_PART == 13
void operator delete[](void* p, size_t) noexcept { operator delete[](p); }
#elif XO_PART == 14
void operator delete[](void* p, const NoThrow&) noexcept { operator delete[](p); }
#elif XO_PART == 15
void operator delete[](void* p, Align a) noexcept { operator delete(p, a); }
#elif XO_PART == 16
void operator delete[](void* p, size_t, Align a) noexcept { operator delete[](p, a); }
#elif XO_PART == 17
extern const std::nothrow_t std::nothrow{};
#endif
