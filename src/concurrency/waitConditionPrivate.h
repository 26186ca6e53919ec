// The two implementations of xoWaitCondition: on Windows' condition variables, and on events.
#ifndef XO_CONCURRENCY_WAITCONDITIONPRIVATE_H
#define XO_CONCURRENCY_WAITCONDITIONPRIVATE_H

#include "platform/handle.h"
#include "platform/slimLock.h"

namespace xo {

class xoWaitConditionPrivate {
public:
    xoWaitConditionPrivate() = default;
    virtual ~xoWaitConditionPrivate() = default;
    xoWaitConditionPrivate(const xoWaitConditionPrivate&) = delete;
    xoWaitConditionPrivate& operator=(const xoWaitConditionPrivate&) = delete;

    // Leaves the section, which the calling thread holds once, waits, and enters it again. False after a time-out.
    virtual bool wait(CRITICAL_SECTION* callersSection, unsigned long timeoutMs) = 0;
    virtual void wakeAll() = 0;
    virtual void wakeOne() = 0;
};

// Uses the condition variables of Windows Vista and later, looked up at run time.
class xoWaitConditionPrivateVista final : public xoWaitConditionPrivate {
public:
    // Whether the system has all four functions. Objects may be made only after it has returned true.
    static bool lookUp();

    xoWaitConditionPrivateVista();
    bool wait(CRITICAL_SECTION* callersSection, unsigned long timeoutMs) override;
    void wakeAll() override;
    void wakeOne() override;

private:
    CONDITION_VARIABLE mCondition;
};

// Uses an auto-reset event for each waiting thread, so that a wake-up cannot be taken by a thread that it was not meant
// for. The waiting threads form a list, the longest waiting one first, and a thread enters it before it leaves the
// caller's section. When the system has no event left, the wait returns at once, as if woken.
class xoWaitConditionPrivateEvent final : public xoWaitConditionPrivate {
public:
    bool wait(CRITICAL_SECTION* callersSection, unsigned long timeoutMs) override;
    void wakeAll() override;
    void wakeOne() override;

private:
    struct Waiter;
    static constexpr int kMaxSpares = 4;  // events that are kept, so that most waits need not create one

    // An auto-reset event that is not set; null when the system has none left.
    platform::KernelHandle takeEvent();
    // The list is linked through the waiters, so that neither allocates memory.
    void append(Waiter& waiter);
    void remove(Waiter& waiter) XO_REQUIRES(mLock);

    // Takes the waiter out of the list and wakes its thread.
    void release(Waiter& waiter) XO_REQUIRES(mLock);

    // Ends a wait that returned this result, and keeps the event for later waits if there is space for it. Whether the
    // waiter was released.
    bool finish(Waiter& waiter, DWORD waitResult, platform::KernelHandle& event);

    platform::SlimLock mLock;  // the innermost lock: no other is taken, and no wait begins, while it is held
    Waiter* mFirst XO_GUARDED_BY(mLock) = nullptr;
    Waiter* mLast XO_GUARDED_BY(mLock) = nullptr;
    platform::KernelHandle mSpares[kMaxSpares] XO_GUARDED_BY(mLock);  // events of earlier waits, not set
    int mSpareCount XO_GUARDED_BY(mLock) = 0;
};

}  // namespace xo

#endif
