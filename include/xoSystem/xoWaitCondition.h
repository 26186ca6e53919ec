// xoWaitCondition: threads that hold an xoMutex wait here until another thread wakes them.
//
//     xoMutexLocker locker(mutex);
//     while (queue.empty()) condition.wait(&mutex);
//
// Any number of threads may use one object. A wake-up with nobody waiting is forgotten, and a thread may wake for no
// reason: test what you wait for, in a loop, with the mutex held.
//
// Made before initializeXoSystem(InitTypeFull), an object works for life on the older of two implementations and logs
// one CRITICAL line, "WaitCondition created before full init of xoSystem", when there is a log.
#ifndef XOSYSTEM_XOWAITCONDITION_H
#define XOSYSTEM_XOWAITCONDITION_H

#include <memory>

#include "xoSystem/xoExport.h"
#include "xoSystem/xoMutex.h"

namespace xo {

class xoWaitConditionPrivate;

class XOSYSTEM_API xoWaitCondition {
public:
    xoWaitCondition();
    virtual ~xoWaitCondition();
    xoWaitCondition(const xoWaitCondition&) = delete;
    xoWaitCondition& operator=(const xoWaitCondition&) = delete;

    // Releases the mutex, which the caller must hold exactly once, waits to be woken, and takes the mutex again in
    // every case. False when timeoutMs milliseconds (0xFFFFFFFF: no limit) have passed.
    bool wait(xoMutex* mutex, unsigned long timeoutMs = 0xFFFFFFFF) XO_REQUIRES(mutex);

    // Wakes one of the waiting threads, if there is any.
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

#endif
