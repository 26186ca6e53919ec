// xoSemaphore: a count of free resources that threads take from and give back to.
//
//     xoSemaphore slots(4);
//     slots.acquire();   // the fifth thread waits here
//     work();
//     slots.release();
//
// Every operation may be called from any thread. Waiting threads are not served in order: a thread that asks for many
// resources may be overtaken by threads that ask for few. Nothing here reports an error.
//
// Destroy a semaphore only when no thread is inside acquire or release any more. That acquire has returned does not
// mean that the release which ended it has returned, too: a semaphore on the stack, which one thread waits for and then
// destroys, could be destroyed while another thread is still inside release.
//
// A semaphore made before initializeXoSystem(InitTypeFull) works; its mutex and its wait condition each log their
// CRITICAL line when there is a log, and it keeps the older implementation of xoWaitCondition for life.
#ifndef XOSYSTEM_XOSEMAPHORE_H
#define XOSYSTEM_XOSEMAPHORE_H

#include <atomic>

#include "xoSystem/xoExport.h"
#include "xoSystem/xoMutex.h"
#include "xoSystem/xoWaitCondition.h"

#if defined(_MSC_VER)
#    pragma warning(push)
#    pragma warning(disable : 4251)  // private members of standard types: host and DLL share one C++ runtime
#endif

namespace xo {

class XOSYSTEM_API xoSemaphore {
public:
    // The number of resources that are free at first.
    explicit xoSemaphore(unsigned int initialCount);
    ~xoSemaphore();
    xoSemaphore(const xoSemaphore&) = delete;
    xoSemaphore& operator=(const xoSemaphore&) = delete;

    // Waits without limit until n resources are free and takes them all at once. 0 returns at once.
    void acquire(unsigned int n = 1);

    // Gives n resources back; more than were taken is allowed. The count wraps beyond 32 bits. 0 does nothing.
    void release(unsigned int n = 1);

    // The number of free resources, which may have changed by the time the caller sees it.
    unsigned int getNoResources() const { return mCount.load(std::memory_order_relaxed); }

private:
    xoMutex mMutex;  // held by whoever changes mCount
    xoWaitCondition mCondition;
    std::atomic<unsigned int> mCount;
};

}  // namespace xo

#if defined(_MSC_VER)
#    pragma warning(pop)
#endif

#endif
