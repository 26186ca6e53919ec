#include "concurrency/waitConditionPrivate.h"

namespace xo {
namespace {

decltype(&::InitializeConditionVariable) initializeConditionVariable;
decltype(&::SleepConditionVariableCS) sleepConditionVariable;
decltype(&::WakeAllConditionVariable) wakeAllConditionVariable;
decltype(&::WakeConditionVariable) wakeConditionVariable;

template <class Function>
bool lookUpFunction(const char* name, Function& function) {
    const FARPROC found = ::GetProcAddress(::GetModuleHandleA("kernel32.dll"), name);
    function = reinterpret_cast<Function>(reinterpret_cast<void (*)()>(found));
    return function != nullptr;
}

class SectionLock {
public:
    explicit SectionLock(CRITICAL_SECTION& section) : mSection(section) { ::EnterCriticalSection(&mSection); }
    ~SectionLock() { ::LeaveCriticalSection(&mSection); }
    SectionLock(const SectionLock&) = delete;
    SectionLock& operator=(const SectionLock&) = delete;

private:
    CRITICAL_SECTION& mSection;
};

}  // namespace

bool xoWaitConditionPrivateVista::lookUp() {
    // One "and" without a short cut: every pointer is set, to null where the function is missing.
    return static_cast<bool>(
        static_cast<int>(lookUpFunction("InitializeConditionVariable", initializeConditionVariable)) &
        static_cast<int>(lookUpFunction("SleepConditionVariableCS", sleepConditionVariable)) &
        static_cast<int>(lookUpFunction("WakeAllConditionVariable", wakeAllConditionVariable)) &
        static_cast<int>(lookUpFunction("WakeConditionVariable", wakeConditionVariable)));
}

xoWaitConditionPrivateVista::xoWaitConditionPrivateVista() { initializeConditionVariable(&mCondition); }

bool xoWaitConditionPrivateVista::wait(CRITICAL_SECTION* callersSection, unsigned long timeoutMs) {
    return sleepConditionVariable(&mCondition, callersSection, timeoutMs) == TRUE;
}

void xoWaitConditionPrivateVista::wakeAll() { wakeAllConditionVariable(&mCondition); }

void xoWaitConditionPrivateVista::wakeOne() { wakeConditionVariable(&mCondition); }

xoWaitConditionPrivateEvent::xoWaitConditionPrivateEvent() {
    ::InitializeCriticalSection(&mSection);
    mEvents[kWakeOne].reset(::CreateEventA(nullptr, /*bManualReset=*/FALSE, /*bInitialState=*/FALSE, nullptr));
    mEvents[kWakeAll].reset(::CreateEventA(nullptr, /*bManualReset=*/TRUE, /*bInitialState=*/FALSE, nullptr));
}

xoWaitConditionPrivateEvent::~xoWaitConditionPrivateEvent() { ::DeleteCriticalSection(&mSection); }

bool xoWaitConditionPrivateEvent::wait(CRITICAL_SECTION* callersSection, unsigned long timeoutMs) {
    {
        const SectionLock lock(mSection);
        ++mWaiterCount;
    }
    ::LeaveCriticalSection(callersSection);

    const HANDLE events[kEventCount] = {mEvents[kWakeOne].get(), mEvents[kWakeAll].get()};
    const DWORD result = ::WaitForMultipleObjects(kEventCount, events, /*bWaitAll=*/FALSE, timeoutMs);

    bool resetWakeAll = result == WAIT_OBJECT_0 + kWakeOne;
    {
        const SectionLock lock(mSection);
        --mWaiterCount;
        if (result == WAIT_OBJECT_0 + kWakeAll) resetWakeAll = endsBroadcast();
    }
    if (resetWakeAll) ::ResetEvent(events[kWakeAll]);
    ::EnterCriticalSection(callersSection);
    return result != WAIT_TIMEOUT;
}

bool xoWaitConditionPrivateEvent::endsBroadcast() {
    const bool firstTime = mReleased.insert(::GetCurrentThreadId()).second;
    if (firstTime && mWaiterCount > 0) return false;
    mReleased.clear();
    return true;
}

void xoWaitConditionPrivateEvent::wakeAll() {
    bool anyWaiter = false;
    {
        const SectionLock lock(mSection);
        mReleased.clear();
        anyWaiter = mWaiterCount != 0;
    }
    if (anyWaiter) ::SetEvent(mEvents[kWakeAll].get());
}

void xoWaitConditionPrivateEvent::wakeOne() {
    bool anyWaiter = false;
    {
        const SectionLock lock(mSection);
        anyWaiter = mWaiterCount != 0;
    }
    ::ResetEvent(mEvents[kWakeAll].get());  // cancels a broadcast that is still under way
    if (anyWaiter) ::SetEvent(mEvents[kWakeOne].get());
}

}  // namespace xo
