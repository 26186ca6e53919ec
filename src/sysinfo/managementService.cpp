// Asks Windows Management Instrumentation for the partition of a drive and then for the disk of that partition.
// https://learn.microsoft.com/windows/win32/wmisdk/associators-of-statement
#include <cstdint>

#include "platform/handle.h"
#include "platform/moduleFunction.h"
#include "sysinfo/mainDisk.h"

#include <objbase.h>
#include <oleauto.h>
#include <wbemidl.h>

namespace xo::sysinfo {
namespace {

constexpr long kNextLimitMs = 5'000;

template <class Interface>
struct ComPolicy {
    using Type = Interface*;
    static Type none() noexcept { return nullptr; }
    static void close(Type object) noexcept { object->Release(); }
};
template <class Interface>
using ComObject = platform::Owned<ComPolicy<Interface>>;

// COM, loaded at run time, because no other part of the library needs it.
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

    bool isReady() const { return mInitialized; }

private:
    platform::LibraryHandle mOle{load(L"ole32.dll")};  // loaded before the functions below are looked up in it
    platform::LibraryHandle mOleAut{load(L"oleaut32.dll")};

    static HMODULE load(const wchar_t* name) { return ::LoadLibraryExW(name, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32); }

    template <class Function>
    static Function* find(const platform::LibraryHandle& library, const char* name) {
        return platform::findFunction<Function>(library.get(), name);
    }

    bool isLoaded() const {
        return coInitialize && coUninitialize && coCreateInstance && coSetProxyBlanket && sysAllocString &&
               sysFreeString && variantClear;
    }

    decltype(::CoInitializeEx)* coInitialize = find<decltype(::CoInitializeEx)>(mOle, "CoInitializeEx");
    decltype(::CoUninitialize)* coUninitialize = find<decltype(::CoUninitialize)>(mOle, "CoUninitialize");
    bool mInitialized = false;

public:
    decltype(::CoCreateInstance)* coCreateInstance = find<decltype(::CoCreateInstance)>(mOle, "CoCreateInstance");
    decltype(::CoSetProxyBlanket)* coSetProxyBlanket = find<decltype(::CoSetProxyBlanket)>(mOle, "CoSetProxyBlanket");
    decltype(::SysAllocString)* sysAllocString = find<decltype(::SysAllocString)>(mOleAut, "SysAllocString");
    decltype(::SysFreeString)* sysFreeString = find<decltype(::SysFreeString)>(mOleAut, "SysFreeString");
    decltype(::VariantClear)* variantClear = find<decltype(::VariantClear)>(mOleAut, "VariantClear");
};

class Bstr {
public:
    Bstr(const Com& com, const std::wstring& text) : mCom(com), mText(com.sysAllocString(text.c_str())) {}
    ~Bstr() { mCom.sysFreeString(mText); }
    Bstr(const Bstr&) = delete;
    Bstr& operator=(const Bstr&) = delete;
    BSTR get() const { return mText; }

private:
    const Com& mCom;
    BSTR mText;
};

class Value {
public:
    explicit Value(const Com& com) : mCom(com) { mValue.vt = VT_EMPTY; }
    ~Value() { mCom.variantClear(&mValue); }
    Value(const Value&) = delete;
    Value& operator=(const Value&) = delete;

    VARIANT* put() { return &mValue; }
    std::wstring text() const {
        return mValue.vt == VT_BSTR && mValue.bstrVal != nullptr ? mValue.bstrVal : std::wstring();
    }
    // -1 when the value is not a number.
    std::int64_t number() const { return mValue.vt == VT_I4 || mValue.vt == VT_UI4 ? std::int64_t{mValue.lVal} : -1; }

private:
    const Com& mCom;
    VARIANT mValue;
};

ComObject<IWbemServices> connect(const Com& com) {
    ComObject<IWbemLocator> locator;
    if (FAILED(com.coCreateInstance(CLSID_WbemLocator, nullptr, CLSCTX_INPROC_SERVER, IID_IWbemLocator,
                                    reinterpret_cast<void**>(locator.put()))))
        return {};
    ComObject<IWbemServices> services;
    if (FAILED(locator.get()->ConnectServer(Bstr(com, L"ROOT\\CIMV2").get(), nullptr, nullptr, nullptr,
                                            WBEM_FLAG_CONNECT_USE_MAX_WAIT, nullptr, nullptr, services.put())))
        return {};
    if (FAILED(com.coSetProxyBlanket(services.get(), RPC_C_AUTHN_WINNT, RPC_C_AUTHZ_NONE, nullptr,
                                     RPC_C_AUTHN_LEVEL_CALL, RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE)))
        return {};
    return services;
}

// A property of the first object that a query finds; the value stays empty when there is none.
void askFirst(const Com& com, IWbemServices& services, const std::wstring& query, const wchar_t* property,
              Value& value) {
    ComObject<IEnumWbemClassObject> answers;
    if (FAILED(services.ExecQuery(Bstr(com, L"WQL").get(), Bstr(com, query).get(),
                                  WBEM_FLAG_FORWARD_ONLY | WBEM_FLAG_RETURN_IMMEDIATELY, nullptr, answers.put())))
        return;
    ComObject<IWbemClassObject> object;
    ULONG count = 0;
    if (answers.get()->Next(kNextLimitMs, 1, object.put(), &count) != WBEM_S_NO_ERROR || count == 0) return;
    object.get()->Get(property, 0, value.put(), nullptr, nullptr);
}

}  // namespace

std::string diskFromManagementService(const std::wstring& drive) {
    const Com com;
    if (!com.isReady()) return {};
    const ComObject<IWbemServices> services = connect(com);
    if (!services) return {};

    Value partition(com);
    askFirst(com, *services.get(),
             L"ASSOCIATORS OF {Win32_LogicalDisk.DeviceID='" + drive + L"'} WHERE ResultClass=Win32_DiskPartition",
             L"DeviceID", partition);
    if (partition.text().empty()) return {};
    Value disk(com);
    askFirst(
        com, *services.get(),
        L"ASSOCIATORS OF {Win32_DiskPartition.DeviceID='" + partition.text() + L"'} WHERE ResultClass=Win32_DiskDrive",
        L"Index", disk);
    return disk.number() < 0 ? std::string() : R"(\\.\PHYSICALDRIVE)" + std::to_string(disk.number());
}

}  // namespace xo::sysinfo
