// xoWaitCondition: threads that hold an xoMutex wait here until another thread wakes them.
//
//     xoMutexLocker locker(mutex);
//     while (queue.empty()) condition.wait(&mutex);
//
// Any number of threads may use one object. A wake-up while no thread waits has no effect, and a wait may end without a
// wake-up: test the awaited state in a loop, with the mutex held. Destroy the object only when no thread is inside one
// of its functions any more.
//
// An object made before initializeXoSystem(InitTypeFull) uses the older of two implementations, for life, and logs one
// CRITICAL line, "WaitCondition created before full init of xoSystem", when there is a log. Both do the same; the older
// one is slower.
#ifndef XOSYSTEM_XOWAITCONDITION_H
#define XOSYSTEM_XOWAITCONDITION_H

#include <memory>

#include "xoSystem/xoExport.h"
#include "xoSystem/xoMutex.h"

#if defined(_MSC_VER)
#    pragma warning(push)
#    pragma warning(disable : 4251)  // private members of standard types: host and DLL share one C++ runtime
#endif

namespace xo {

class xoWaitConditionPrivate;

class XOSYSTEM_API xoWaitCondition {
public:
    xoWaitCondition();
    virtual ~xoWaitCondition();
    xoWaitCondition(const xoWaitCondition&) = delete;
    xoWaitCondition& operator=(const xoWaitCondition&) = delete;

    // Releases the mutex, waits for a wake-up, and takes the mutex again in every case. False when timeoutMs
    // milliseconds (0xFFFFFFFF: no limit) have passed, and at once, without a wait, for null and for a mutex that the
    // calling thread does not hold. A mutex that it has locked twice is unlocked only once, so that no other thread can
    // take it during the wait. When Windows refuses the wait it ends at once: with true in the older implementation,
    // with false in the other.
    bool wait(xoMutex* mutex, unsigned long timeoutMs = 0xFFFFFFFF) XO_REQUIRES(mutex);

    // Wakes one of the threads that wait now, if there are any.
    void wakeOne();

    // Wakes all threads that wait now.
    void wakeAll();

    // Makes later objects use the system's own condition variables, where it has them (Windows Vista and later). Full
    // initialisation calls it once, before threads make wait conditions.
    static void FindBestImplementation();

private:
    std::unique_ptr<xoWaitConditionPrivate> mPrivate;
};

}  // namespace xo

#if defined(_MSC_VER)
#    pragma warning(pop)
#endif

#endif
