// The two implementations of wait conditions: by condition variables of Windows, and by events where there are none.
#include "concurrency/waitConditionPrivate.h"

#include <utility>

#include "platform/moduleFunction.h"

namespace xo {
namespace {

// Set by lookUp, before the first object that uses them is made, and not changed later. The DLL does not import these
// functions, since a system that lacks one could not load it.
decltype(&::InitializeConditionVariable) initializeConditionVariable;
decltype(&::SleepConditionVariableCS) sleepConditionVariable;
decltype(&::WakeAllConditionVariable) wakeAllConditionVariable;
decltype(&::WakeConditionVariable) wakeConditionVariable;

template <class Function>
bool lookUpFunction(const char* name, Function*& function) {
    function = platform::findFunction<Function>(::GetModuleHandleW(L"kernel32.dll"), name);
    return function != nullptr;
}

}  // namespace

bool xoWaitConditionPrivateVista::lookUp() {
    // Look up all four even after a failure, so that each pointer is set, to null where the function is missing.
    bool hasAll = lookUpFunction("InitializeConditionVariable", initializeConditionVariable);
    hasAll = lookUpFunction("SleepConditionVariableCS", sleepConditionVariable) && hasAll;
    hasAll = lookUpFunction("WakeAllConditionVariable", wakeAllConditionVariable) && hasAll;
    return lookUpFunction("WakeConditionVariable", wakeConditionVariable) && hasAll;
}

xoWaitConditionPrivateVista::xoWaitConditionPrivateVista() { initializeConditionVariable(&mCondition); }

bool xoWaitConditionPrivateVista::wait(CRITICAL_SECTION* callersSection, unsigned long timeoutMs) {
    return sleepConditionVariable(&mCondition, callersSection, timeoutMs) == TRUE;
}

void xoWaitConditionPrivateVista::wakeAll() { wakeAllConditionVariable(&mCondition); }

void xoWaitConditionPrivateVista::wakeOne() { wakeConditionVariable(&mCondition); }

// One call to wait. The record lies on the stack of the waiting thread and is guarded by mLock. wait takes that lock
// once more before it returns, so no thread that wakes others can still be using the record then.
struct xoWaitConditionPrivateEvent::Waiter {
    HANDLE event;
    bool isReleased = false;     // once true, it is out of the list and its event has been set
    Waiter* previous = nullptr;  // in the list, as next is
    Waiter* next = nullptr;
};

bool xoWaitConditionPrivateEvent::wait(CRITICAL_SECTION* callersSection, unsigned long timeoutMs) {
    platform::KernelHandle event = takeEvent();
    if (!event) {
        // Like a wake-up without a cause, which callers expect. The section is left all the same, so that another
        // thread can bring about the state that the caller waits for.
        ::LeaveCriticalSection(callersSection);
        ::EnterCriticalSection(callersSection);
        return true;
    }
    // In the list before the section is left, so that no wake-up after a change of the state can miss it.
    Waiter waiter{event.get()};
    append(waiter);
    ::LeaveCriticalSection(callersSection);
    const DWORD result = ::WaitForSingleObject(event.get(), timeoutMs);
    const bool isReleased = finish(waiter, result, event);
    ::EnterCriticalSection(callersSection);
    return isReleased || result != WAIT_TIMEOUT;  // a failed wait counts as a wake-up
}

platform::KernelHandle xoWaitConditionPrivateEvent::takeEvent() {
    {
        const platform::SlimLocker locker(mLock);
        if (mSpareCount > 0) return std::move(mSpares[--mSpareCount]);
    }
    return platform::KernelHandle(
        ::CreateEventW(/*lpEventAttributes=*/nullptr, /*bManualReset=*/FALSE, /*bInitialState=*/FALSE, nullptr));
}

void xoWaitConditionPrivateEvent::append(Waiter& waiter) {
    const platform::SlimLocker locker(mLock);
    waiter.previous = mLast;
    (mLast ? mLast->next : mFirst) = &waiter;
    mLast = &waiter;
}

void xoWaitConditionPrivateEvent::remove(Waiter& waiter) {
    (waiter.previous ? waiter.previous->next : mFirst) = waiter.next;
    (waiter.next ? waiter.next->previous : mLast) = waiter.previous;
}

bool xoWaitConditionPrivateEvent::finish(Waiter& waiter, DWORD waitResult, platform::KernelHandle& event) {
    const platform::SlimLocker locker(mLock);
    if (!waiter.isReleased) {
        remove(waiter);
    } else if (waitResult != WAIT_OBJECT_0) {
        // The wake-up came after the wait had timed out or failed: it counts, but nothing has reset the event yet.
        ::ResetEvent(event.get());
    }
    // After a failed wait the state of the event is not certain, so it is closed.
    if (waitResult != WAIT_FAILED && mSpareCount < kMaxSpares) mSpares[mSpareCount++] = std::move(event);
    return waiter.isReleased;
}

void xoWaitConditionPrivateEvent::release(Waiter& waiter) {
    remove(waiter);
    waiter.isReleased = true;
    ::SetEvent(waiter.event);
}

void xoWaitConditionPrivateEvent::wakeAll() {
    const platform::SlimLocker locker(mLock);
    while (mFirst) release(*mFirst);
}

void xoWaitConditionPrivateEvent::wakeOne() {
    const platform::SlimLocker locker(mLock);
    if (mFirst) release(*mFirst);
}

}  // namespace xo
