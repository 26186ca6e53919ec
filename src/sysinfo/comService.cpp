// Connects to Windows Management Instrumentation:
// https://learn.microsoft.com/windows/win32/wmisdk/creating-a-wmi-application-using-c-
#include "sysinfo/comService.h"

namespace xo::sysinfo {

ComObject<IWbemServices> connectManagement(const Com& com, const std::wstring& nameSpace) {
    ComObject<IWbemLocator> locator;
    if (FAILED(com.coCreateInstance(CLSID_WbemLocator, nullptr, CLSCTX_INPROC_SERVER, IID_IWbemLocator,
                                    reinterpret_cast<void**>(locator.put()))))
        return {};
    ComObject<IWbemServices> services;
    // The flag limits the attempt to two minutes. Without it a machine that does not answer would block the thread
    // without limit.
    if (FAILED(locator.get()->ConnectServer(Bstr(com, nameSpace).get(), nullptr, nullptr, nullptr,
                                            WBEM_FLAG_CONNECT_USE_MAX_WAIT, nullptr, nullptr, services.put())))
        return {};
    // Lets the service act with the rights of the caller.
    if (FAILED(com.coSetProxyBlanket(services.get(), RPC_C_AUTHN_WINNT, RPC_C_AUTHZ_NONE, nullptr,
                                     RPC_C_AUTHN_LEVEL_CALL, RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE)))
        return {};
    return services;
}

}  // namespace xo::sysinfo
