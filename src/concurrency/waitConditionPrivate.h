// The two ways in which a wait condition works: on the system's condition variables, or on events.
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

// An event for each waiting thread, so that a wake-up belongs to the thread that it was meant for. The threads stand in
// a list, the longest waiting one first, from before they leave the caller's section. A wait for which the system has
// no event counts as woken.
class xoWaitConditionPrivateEvent final : public xoWaitConditionPrivate {
public:
    bool wait(CRITICAL_SECTION* callersSection, unsigned long timeoutMs) override;
    void wakeAll() override;
    void wakeOne() override;

private:
    struct Waiter;
    static constexpr int kMaxSpares = 4;

    // An auto-reset event that is not set; null when the system has none left.
    platform::KernelHandle takeEvent();
    void append(Waiter& waiter);
    void remove(Waiter& waiter) XO_REQUIRES(mLock);

    // Takes the waiter out of the list, lets it go on.
    void release(Waiter& waiter) XO_REQUIRES(mLock);

    // Ends a wait that had this result, and keeps the event if there is room. Whether the waiter was released.
    bool finish(Waiter& waiter, DWORD waitResult, platform::KernelHandle& event);

    platform::SlimLock mLock;  // taken last, under a caller's section or without one, and held for no wait
    Waiter* mFirst XO_GUARDED_BY(mLock) = nullptr;
    Waiter* mLast XO_GUARDED_BY(mLock) = nullptr;
    platform::KernelHandle mSpares[kMaxSpares] XO_GUARDED_BY(mLock);  // events that are not set, for the next waits
    int mSpareCount XO_GUARDED_BY(mLock) = 0;
};

}  // namespace xo

#endif
