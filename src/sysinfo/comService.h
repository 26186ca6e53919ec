// COM and the management service (Windows Management Instrumentation), for threads that the library starts itself.
#ifndef XO_SYSINFO_COMSERVICE_H
#define XO_SYSINFO_COMSERVICE_H

#include <string>

#include "platform/handle.h"
#include "platform/moduleFunction.h"

#include <objbase.h>
#include <oleauto.h>
#include <wbemidl.h>

namespace xo::sysinfo {

// Owns one reference to a COM object. It must end before the Com of its thread.
template <class Interface>
struct ComPolicy {
    using Type = Interface*;
    static Type none() noexcept { return nullptr; }
    static void close(Type object) noexcept { object->Release(); }
};
template <class Interface>
using ComObject = platform::Owned<ComPolicy<Interface>>;

// COM, initialised for the thread that makes the object, and loaded at run time because only few calls need it. The
// thread must not have initialised COM itself: a second initialisation with another model fails. Bstr, OwnedVariant and
// ComObject use its functions when they end, so it is declared before them.
class Com {
public:
    Com() {
        if (isLoaded()) mInitialized = SUCCEEDED(coInitialize(nullptr, COINIT_MULTITHREADED));
    }
    ~Com() {
        if (mInitialized) coUninitialize();
    }
    Com(const Com&) = delete;
    Com& operator=(const Com&) = delete;

    bool isReady() const { return mInitialized; }  // if false, no function below may be called

private:
    platform::LibraryHandle mOle{load(L"ole32.dll")};  // loaded before the functions below are looked up in it
    platform::LibraryHandle mOleAut{load(L"oleaut32.dll")};

    // From the folder of the system alone: a library of that name beside the program must not be loaded.
    static HMODULE load(const wchar_t* name) { return ::LoadLibraryExW(name, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32); }

    template <class Function>
    static Function* find(const platform::LibraryHandle& library, const char* name) {
        return platform::findFunction<Function>(library.get(), name);
    }

    bool safeArrayGetBounds() const { return safeArrayGetLBound && safeArrayGetUBound && safeArrayGetElement; }
    bool isLoaded() const {
        return coInitialize && coUninitialize && coCreateInstance && coSetProxyBlanket && sysAllocString &&
               sysFreeString && variantClear && safeArrayGetBounds();
    }

    decltype(::CoInitializeEx)* coInitialize = find<decltype(::CoInitializeEx)>(mOle, "CoInitializeEx");
    decltype(::CoUninitialize)* coUninitialize = find<decltype(::CoUninitialize)>(mOle, "CoUninitialize");
    bool mInitialized = false;  // by this object, which uninitialises COM in that case

    // The functions of the two libraries under their own names; none is null while isReady() is true.
public:
    decltype(::CoCreateInstance)* coCreateInstance = find<decltype(::CoCreateInstance)>(mOle, "CoCreateInstance");
    decltype(::CoSetProxyBlanket)* coSetProxyBlanket = find<decltype(::CoSetProxyBlanket)>(mOle, "CoSetProxyBlanket");
    decltype(::SysAllocString)* sysAllocString = find<decltype(::SysAllocString)>(mOleAut, "SysAllocString");
    decltype(::SysFreeString)* sysFreeString = find<decltype(::SysFreeString)>(mOleAut, "SysFreeString");
    decltype(::VariantClear)* variantClear = find<decltype(::VariantClear)>(mOleAut, "VariantClear");
    decltype(::SafeArrayGetLBound)* safeArrayGetLBound =
        find<decltype(::SafeArrayGetLBound)>(mOleAut, "SafeArrayGetLBound");
    decltype(::SafeArrayGetUBound)* safeArrayGetUBound =
        find<decltype(::SafeArrayGetUBound)>(mOleAut, "SafeArrayGetUBound");
    decltype(::SafeArrayGetElement)* safeArrayGetElement =
        find<decltype(::SafeArrayGetElement)>(mOleAut, "SafeArrayGetElement");
};

// A BSTR, the text type of COM, with its length before the characters: neither an ordinary wide literal nor free() may
// be used in its place. Null until it is set, and when memory is short.
class Bstr {
public:
    explicit Bstr(const Com& com) : mCom(com) {}
    Bstr(const Com& com, const std::wstring& text) : mCom(com), mText(com.sysAllocString(text.c_str())) {}
    ~Bstr() { mCom.sysFreeString(mText); }
    Bstr(const Bstr&) = delete;
    Bstr& operator=(const Bstr&) = delete;

    BSTR get() const { return mText; }
    // For a function that returns a text through a pointer; only while there is none.
    BSTR* put() { return &mText; }

private:
    const Com& mCom;
    BSTR mText = nullptr;
};

// A VARIANT, empty at first.
class OwnedVariant {
public:
    explicit OwnedVariant(const Com& com) : mCom(com) { mValue.vt = VT_EMPTY; }
    ~OwnedVariant() { mCom.variantClear(&mValue); }
    OwnedVariant(const OwnedVariant&) = delete;
    OwnedVariant& operator=(const OwnedVariant&) = delete;

    const VARIANT& get() const { return mValue; }
    // For a function that returns a value through a pointer; only while it is empty.
    VARIANT* put() { return &mValue; }

private:
    const Com& mCom;
    VARIANT mValue;
};

// A connection to the management service; none when it fails.
ComObject<IWbemServices> connectManagement(const Com& com, const std::wstring& nameSpace);

}  // namespace xo::sysinfo

#endif
