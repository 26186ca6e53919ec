// Holds threads back after a wait condition has entered them as waiters and before they wait for their event.
#ifndef XO_TESTS_CONCURRENCY_WAITGATE_H
#define XO_TESTS_CONCURRENCY_WAITGATE_H

#include "platform/handle.h"
#include "support/importHook.h"

namespace xo::tests {

class WaitGate {
public:
    // Affects the waits that this module makes; null stands for the program.
    explicit WaitGate(const char* module) : mHook(module, "WaitForSingleObject", &pass) { msGate = this; }

    bool isInstalled() const { return mHook.isInstalled(); }

    // From now on the waits of the calling thread stop at the gate until openFor lets them pass.
    static void holdThisThread() { msIsHeld = true; }

    // Returns when one more thread is about to wait, whether it is held back or not.
    void awaitArrival() const { waitFor(mArrived.get()); }

    void openFor(long count) const { ::ReleaseSemaphore(mGate.get(), count, nullptr); }

private:
    static DWORD waitFor(HANDLE handle) { return ImportHook::behind(&pass)(handle, INFINITE); }

    static DWORD WINAPI pass(HANDLE handle, DWORD timeoutMs) {
        ::ReleaseSemaphore(msGate->mArrived.get(), 1, nullptr);
        if (msIsHeld) waitFor(msGate->mGate.get());
        return ImportHook::behind(&pass)(handle, timeoutMs);
    }

    static inline const WaitGate* msGate = nullptr;
    static inline thread_local bool msIsHeld = false;

    platform::KernelHandle mGate{::CreateSemaphoreW(nullptr, 0, 100, nullptr)};
    platform::KernelHandle mArrived{::CreateSemaphoreW(nullptr, 0, 100, nullptr)};
    ImportHook mHook;
};

}  // namespace xo::tests

#endif
