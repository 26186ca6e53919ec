// What sources of the STL take from inside the C runtime.
#pragma once
#include <stdlib.h>
#define _malloc_crt malloc
#define _calloc_crt calloc
#define _realloc_crt realloc
#define _free_crt free
#define _CRT_BLOCK 2
#ifndef _malloc_dbg
#    define _malloc_dbg(size, kind, file, line) malloc(size)
#    define _free_dbg(block, kind) free(block)
#endif

extern "C" {
size_t __cdecl __strncnt(const char*, size_t);
wchar_t** __cdecl ___lc_locale_name_func();
}

extern "C++" {
template <class T>
class __crt_unique_heap_ptr {
public:
    __crt_unique_heap_ptr() = default;
    explicit __crt_unique_heap_ptr(T* block) : mBlock(block) {}
    __crt_unique_heap_ptr(__crt_unique_heap_ptr&& other) noexcept : mBlock(other.detach()) {}
    __crt_unique_heap_ptr& operator=(__crt_unique_heap_ptr&& other) noexcept {
        free(mBlock);
        mBlock = other.detach();
        return *this;
    }
    ~__crt_unique_heap_ptr() { free(mBlock); }

    explicit operator bool() const { return mBlock != nullptr; }
    T* get() const { return mBlock; }
    T& operator[](size_t i) const { return mBlock[i]; }
    T* detach() {
        T* const block = mBlock;
        mBlock = nullptr;
        return block;
    }

private:
    T* mBlock = nullptr;
};
template <class T>
using __crt_scoped_stack_ptr = __crt_unique_heap_ptr<T>;  // on the heap here
template <class T>
__crt_unique_heap_ptr<T> makeHeapPtr(size_t count) {
    return __crt_unique_heap_ptr<T>(static_cast<T*>(malloc(count * sizeof(T))));
}
}
#define _malloc_crt_t(T, count) makeHeapPtr<T>(count)
#define _malloca_crt_t(T, count) makeHeapPtr<T>(count)
