// The two ways in which a wait condition works: on the system's condition variables, or on two events.
#ifndef XO_CONCURRENCY_WAITCONDITIONPRIVATE_H
#define XO_CONCURRENCY_WAITCONDITIONPRIVATE_H

#include <set>

#include "platform/handle.h"

namespace xo {

class xoWaitConditionPrivate {
public:
    xoWaitConditionPrivate() = default;
    virtual ~xoWaitConditionPrivate() = default;
    xoWaitConditionPrivate(const xoWaitConditionPrivate&) = delete;
    xoWaitConditionPrivate& operator=(const xoWaitConditionPrivate&) = delete;

    // Leaves the caller's section, which it holds, waits, and enters it again. False after the time-out.
    virtual bool wait(CRITICAL_SECTION* callersSection, unsigned long timeoutMs) = 0;
    virtual void wakeAll() = 0;
    virtual void wakeOne() = 0;
};

// The condition variables of Windows Vista and later, looked up at run time so that the library loads without them.
class xoWaitConditionPrivateVista final : public xoWaitConditionPrivate {
public:
    // True when the system has all four functions; only then may an object be made.
    static bool lookUp();

    xoWaitConditionPrivateVista();
    bool wait(CRITICAL_SECTION* callersSection, unsigned long timeoutMs) override;
    void wakeAll() override;
    void wakeOne() override;

private:
    CONDITION_VARIABLE mCondition;
};

// An auto-reset event wakes one thread, a manual-reset event all of them.
class xoWaitConditionPrivateEvent final : public xoWaitConditionPrivate {
public:
    xoWaitConditionPrivateEvent();
    ~xoWaitConditionPrivateEvent() override;
    bool wait(CRITICAL_SECTION* callersSection, unsigned long timeoutMs) override;
    void wakeAll() override;
    void wakeOne() override;

private:
    enum Event { kWakeOne, kWakeAll, kEventCount };

    // A broadcast is over when its last waiter has seen it, or when a thread sees it for the second time.
    bool endsBroadcast();

    int mWaiterCount = 0;       // threads inside wait
    CRITICAL_SECTION mSection;  // guards mWaiterCount and mReleased; never held together with a caller's section
    platform::KernelHandle mEvents[kEventCount];
    std::set<DWORD> mReleased;  // threads that the current broadcast has woken already
};

}  // namespace xo

#endif
