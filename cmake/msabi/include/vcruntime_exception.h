// The layout of std::exception is that of vcruntime140.dll, which copies its text and frees it.
#pragma once
#include <eh.h>
#include <malloc.h>
#include <vcruntime.h>

struct __std_exception_data {
    const char* _What;
    bool _DoFree;
};
extern "C" {
void __cdecl __std_exception_copy(const __std_exception_data* from, __std_exception_data* to);
void __cdecl __std_exception_destroy(__std_exception_data*);
}

namespace std {
class exception {
public:
    exception() noexcept : _Data() {}
    explicit exception(const char* what) noexcept : _Data() { copy({what, true}); }
    exception(const char* literal, int) noexcept : _Data{literal, false} {}
    exception(const exception& other) noexcept : _Data() { copy(other._Data); }
    exception& operator=(const exception& other) noexcept {
        if (this != &other) {
            __std_exception_destroy(&_Data);
            copy(other._Data);
        }
        return *this;
    }
    virtual ~exception() noexcept { __std_exception_destroy(&_Data); }
    [[nodiscard]] virtual const char* what() const { return _Data._What ? _Data._What : "Unknown exception"; }

private:
    void copy(const __std_exception_data& from) noexcept { __std_exception_copy(&from, &_Data); }

    __std_exception_data _Data;
};

class bad_exception : public exception {
public:
    bad_exception() noexcept : exception("bad exception", 1) {}
};

class bad_alloc : public exception {
public:
    bad_alloc() noexcept : exception("bad allocation", 1) {}

private:
    friend class bad_array_new_length;
    explicit bad_alloc(const char* literal) noexcept : exception(literal, 1) {}
};

class bad_array_new_length : public bad_alloc {
public:
    bad_array_new_length() noexcept : bad_alloc("bad array new length") {}
};
}  // namespace std
