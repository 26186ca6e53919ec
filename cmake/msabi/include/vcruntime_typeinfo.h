// The layout of type_info is what the compiler makes for each type; the functions are vcruntime140.dll's.
#pragma once
#include <vcruntime_exception.h>

struct __std_type_info_data {
    const char* _UndecoratedName;
    const char _DecoratedName[1];
};
extern "C" int __cdecl __std_type_info_compare(const __std_type_info_data*, const __std_type_info_data*);

class type_info {
public:
    type_info(const type_info&) = delete;
    type_info& operator=(const type_info&) = delete;
    virtual ~type_info() noexcept;

    size_t hash_code() const noexcept;
    const char* name() const noexcept;
    const char* raw_name() const noexcept { return _Data._DecoratedName; }
    bool operator==(const type_info& other) const noexcept {
        return __std_type_info_compare(&_Data, &other._Data) == 0;
    }
    bool operator!=(const type_info& other) const noexcept { return !(*this == other); }
    bool before(const type_info& other) const noexcept { return __std_type_info_compare(&_Data, &other._Data) < 0; }

private:
    mutable __std_type_info_data _Data;
};

namespace std {
using ::type_info;
class bad_cast : public exception {
public:
    bad_cast() noexcept : exception("bad cast", 1) {}
};
class bad_typeid : public exception {
public:
    bad_typeid() noexcept : exception("bad typeid", 1) {}
};
class __non_rtti_object : public bad_typeid {};
}  // namespace std
