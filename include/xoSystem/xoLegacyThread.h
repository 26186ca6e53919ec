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
// still counts as alive when destroy() or a destructor runs is killed wherever it is, together with every lock that it
// holds (that of the heap, for one): end it first. What a body throws, and a fault in it, is reported by the library's
// guard, ends the thread alone, and clears the alive flag.
//
// Copies share the thread: one Windows handle, closed with the last of them, one alive flag and one must-end flag, but
// each has its own note of being suspended. Any copy that is destroyed kills a thread that is alive. mustEnd, setAlive
// and isAlive may be called from any thread; the rest by one thread at a time.
#ifndef XOSYSTEM_XOLEGACYTHREAD_H
#define XOSYSTEM_XOLEGACYTHREAD_H

#include <atomic>
#include <memory>

#include "xoSystem/xoExport.h"
#include "xoSystem/xoMutex.h"
#include "xoSystem/xoThread.h"

// How a thread begins. Any other value starts none.
enum xoThreadCreationFlag : int {
    xoThreadCreationFlagRun = 0,
    xoThreadCreationFlagSuspended = 1  // until somebody resumes it by its identifier; resume() knows nothing of it
};

namespace xo {

class XOSYSTEM_API xoLegacyThread {
public:
    // The body is not owned and outlives the thread; null does nothing.
    explicit xoLegacyThread(xoRunnable* body);
    // Share the thread, as said above.
    xoLegacyThread(const xoLegacyThread& other);
    xoLegacyThread& operator=(const xoLegacyThread& other);
    ~xoLegacyThread();

    // Starts the thread, which runs this very object, unless it is alive already. Whether there is one now. A new
    // thread takes the place of one that is no longer alive; a must-end request stays set.
    bool create(const xoThreadCreationFlag& flag = xoThreadCreationFlagRun);
    bool create(int flag) { return create(static_cast<xoThreadCreationFlag>(flag)); }

    // Runs on the new thread: calls the body.
    virtual void run();

    // Kills the thread if it is alive.
    virtual void destroy();

    // Asks the thread to end, and resumes it if suspend() had stopped it. With wait true, returns once it is not alive;
    // that is never if the body forgets setAlive(false).
    void end(bool wait);

    // Whether the thread was asked to end. Bodies poll it.
    bool mustEnd() const { return mMustEnd.get(); }

    // Whether the thread counts as alive: true from create() on, false by the body's last act.
    void setAlive(bool alive) { mAlive.set(alive); }
    bool isAlive() const { return mAlive.get(); }

    // Stop the thread wherever it is, and let it go on. Suspending does not nest.
    void suspend();
    void resume();
    bool isSuspended() const { return (mFlags & kSuspended) != 0; }

    // The identifier that Windows gave the thread; 0 before there is one.
    unsigned int getId() const { return mId; }

    // The number of objects, copies included, that exist.
    static unsigned int getNbThreads() { return mNbThreads; }

    // Pause the calling thread; yield only gives way to others.
    static void yield();
    static void sleep(int milliseconds);

private:
    struct Handle;
    static constexpr unsigned char kSuspended = 1;

    static unsigned int __stdcall execute(void* thread);
    static void runGuarded(void* thread);
    void kill();

    std::shared_ptr<Handle> mHandle;  // null before the first thread
    xoRunnable* mBody;
    std::atomic<unsigned int> mId{0};
    xoThreadSafePtr<bool> mAlive;
    std::atomic<unsigned char> mFlags{0};
    xoThreadSafePtr<bool> mMustEnd;

    static std::atomic<unsigned int> mNbThreads;
};

}  // namespace xo

#endif
