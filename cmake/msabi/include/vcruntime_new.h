#pragma once
#include <vcruntime.h>

extern "C++" {
namespace std {
enum class align_val_t : size_t {};
struct nothrow_t {
    explicit nothrow_t() = default;
};
extern const nothrow_t nothrow;
}  // namespace std

void* __cdecl operator new(size_t);
void* __cdecl operator new(size_t, const std::nothrow_t&) noexcept;
void* __cdecl operator new(size_t, std::align_val_t);
void* __cdecl operator new(size_t, std::align_val_t, const std::nothrow_t&) noexcept;
void* __cdecl operator new[](size_t);
void* __cdecl operator new[](size_t, const std::nothrow_t&) noexcept;
void* __cdecl operator new[](size_t, std::align_val_t);
void __cdecl operator delete(void*) noexcept;
void __cdecl operator delete(void*, size_t) noexcept;
void __cdecl operator delete(void*, const std::nothrow_t&) noexcept;
void __cdecl operator delete(void*, std::align_val_t) noexcept;
void __cdecl operator delete(void*, size_t, std::align_val_t) noexcept;
void __cdecl operator delete[](void*) noexcept;
void __cdecl operator delete[](void*, size_t) noexcept;
void __cdecl operator delete[](void*, const std::nothrow_t&) noexcept;
void __cdecl operator delete[](void*, std::align_val_t) noexcept;
void __cdecl operator delete[](void*, size_t, std::align_val_t) noexcept;

#ifndef __PLACEMENT_NEW_INLINE
#    define __PLACEMENT_NEW_INLINE
inline void* __cdecl operator new(size_t, void* place) noexcept { return place; }
inline void __cdecl operator delete(void*, void*) noexcept {}
#endif
#ifndef __PLACEMENT_VEC_NEW_INLINE
#    define __PLACEMENT_VEC_NEW_INLINE
inline void* __cdecl operator new[](size_t, void* place) noexcept { return place; }
inline void __cdecl operator delete[](void*, void*) noexcept {}
#endif
}
