// xoLegacyThread: a bare Windows thread around an xoRunnable, kept for hosts that still use it. New code takes
// xoThread.
//
//     struct Body final : xo::xoRunnable {
//         void run() override {
//             while (!thread->mustEnd()) step();
//             thread->setAlive(false);
//         }
//         xo::xoLegacyThread* thread = nullptr;
//     };
//     Body body;
//     xo::xoLegacyThread thread(&body);
//     body.thread = &thread;
//     thread.create(xoThreadCreationFlagRun);
//     thread.end(true);  // asks it to end and waits until it is not alive
//
// The contract: a body calls setAlive(false) as its last act, which frees the object for destruction. A thread that
// still counts as alive when destroy() or a destructor runs is killed wherever it is. The locks that it holds stay
// locked, that of the heap included, and a wait condition that it waits for must not be used again: end the thread
// first. What a body throws, and a processor fault in it, is reported by the library's guard, ends the thread alone,
// and clears the alive flag.
//
// A class derived from xoLegacyThread ends its thread in its own destructor, with end(true): when the destructor of
// xoLegacyThread runs, the derived object, whose run() the thread executes, is gone already.
//
// Copies share one alive flag, one must-end flag, and the thread that the source held when it was copied, whose Windows
// handle is closed with the last of them. Each has its own note that it has suspended the thread. Any copy that is
// destroyed kills the thread if it is alive, but a copy from before that thread was created leaves it alone. mustEnd,
// setAlive and isAlive may be called from any thread; the rest by one thread at a time.
#ifndef XOSYSTEM_XOLEGACYTHREAD_H
#define XOSYSTEM_XOLEGACYTHREAD_H

#include <atomic>
#include <memory>

#include "xoSystem/xoExport.h"
#include "xoSystem/xoThread.h"

#if defined(_MSC_VER)
#    pragma warning(push)
#    pragma warning(disable : 4251)  // private members of standard types: host and DLL share one C++ runtime
#endif

namespace xo {
template <class E>
class xoEnumList;
}

// How a thread begins. Any other value starts none.
enum xoThreadCreationFlag : int {
    xoThreadCreationFlagRun = 0,
    xoThreadCreationFlagSuspended = 1  // until somebody resumes it by its identifier; resume() knows nothing of it
};

// The names of the values, for EnumHelper.
XOSYSTEM_API xo::xoEnumList<xoThreadCreationFlag> xoEnumEntries(xoThreadCreationFlag);

namespace xo {

class XOSYSTEM_API xoLegacyThread {
public:
    // The body is not owned and outlives the thread. With null the thread runs nothing, and still counts as alive.
    explicit xoLegacyThread(xoRunnable* body);
    // Share the thread, as said above.
    xoLegacyThread(const xoLegacyThread& other);
    xoLegacyThread& operator=(const xoLegacyThread& other);
    ~xoLegacyThread();

    // Starts a thread, which runs this very object, unless one is alive already. A new thread takes the place of one
    // that is no longer alive; a must-end request stays set. False when the flag has another value, when Windows makes
    // no thread, and when the thread that is alive was started by a copy and this object does not hold it. May throw
    // std::bad_alloc.
    bool create(const xoThreadCreationFlag& flag = xoThreadCreationFlagRun);
    bool create(int flag) { return create(static_cast<xoThreadCreationFlag>(flag)); }

    // Runs on the new thread: calls the body.
    virtual void run();

    // Kills the thread if it is alive. Called by that thread itself, it does not return.
    virtual void destroy();

    // Asks the thread to end, and resumes it if this object or a copy has suspended it. A copy from before that thread
    // was created resumes nothing. With wait true, returns once it is not alive; that is never if the body forgets
    // setAlive(false), or if the thread is suspended still. The thread itself does not wait.
    void end(bool wait);

    // Whether the thread was asked to end. Bodies poll it.
    bool mustEnd() const;

    // Whether the thread counts as alive: true from create() on, false by the body's last act.
    void setAlive(bool alive);
    bool isAlive() const;

    // Stop the thread wherever it is, and let it go on. suspend() returns once the thread has stopped. Suspending does
    // not nest. A thread that suspends itself goes on when another one resumes it. Without a thread, or when it is not
    // alive, only what isSuspended() gives changes; a new thread begins with false.
    void suspend();
    void resume();
    bool isSuspended() const;

    // The identifier that Windows gave the thread; 0 before there is one.
    unsigned int getId() const;

    // The number of objects, copies included, that exist.
    static unsigned int getNbThreads() { return mNbThreads; }

    // Pause the calling thread; yield only gives way to others, and so does sleep for 0 and for negative times.
    static void yield();
    static void sleep(int milliseconds);

private:
    struct Private;

    static unsigned int __stdcall execute(void* thread);
    static void runBody(void* thread);

    std::unique_ptr<Private> mPrivate;

    static std::atomic<unsigned int> mNbThreads;
};

}  // namespace xo

#if defined(_MSC_VER)
#    pragma warning(pop)
#endif

#endif
