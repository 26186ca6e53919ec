// The entry point of a DLL.
#include "runtime.h"

extern "C" {
BOOL WINAPI DllMain(HINSTANCE, DWORD, LPVOID);

BOOL WINAPI _DllMainCRTStartup(HINSTANCE module, DWORD reason, LPVOID reserved) {
    static bool isUp = false;
    if (reason == DLL_PROCESS_ATTACH) {
        if (!runInitializers(/*isDll=*/true)) return FALSE;
        if (threadStart) threadStart(nullptr, DLL_THREAD_ATTACH, nullptr);
        isUp = true;
    } else if (!isUp) {
        return FALSE;
    }
    const BOOL result = DllMain(module, reason, reserved);
    if (reason == DLL_PROCESS_DETACH || (reason == DLL_PROCESS_ATTACH && !result)) {
        isUp = false;
        runExitFunctions(/*isDll=*/true);
    }
    return result;
}
}
