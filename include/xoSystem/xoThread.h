// xoThread: a thread with a name, run under the library's guard and joined with an optional time-out.
//
//     class Loader final : public xo::xoThread {
//     public:
//         ~Loader() override { waitThread(INT_MAX); }
//
//     private:
//         void run() override { loadAll(); }
//     };
//     Loader loader;
//     loader.startThread("loader");  // called "loader 4711" in the debugger
//
// A class derived from xoThread waits for its thread in its own destructor, as above: when the destructor of xoThread
// runs, the derived object is gone already, and its thread may be just about to enter run(). (A thread that enters so
// late runs nothing and leaves a CRITICAL line in the log.) A thread that destroys its own object ends the process, by
// std::terminate.
//
// One thread at a time starts, waits for and destroys an object; isRunning, isFinished and getThreadId may be called
// from any thread. What run() throws, and a processor fault in it, is reported by the guard and ends that thread alone.
// startThread and waitThread fail with std::system_error where they say so.
//
// Join threads before the library's DLL is unloaded, and never in DllMain or in the destructor of a static object of a
// DLL: a thread cannot end while another one is loading or unloading DLLs, so the join would wait for ever. A process
// may exit while threads run: Windows ends them first.
//
// A thread object made before initializeXoSystem(InitTypeFull) works, but logs one CRITICAL line, "Thread create before
// full init of xoSystem", when there is a log.
#ifndef XOSYSTEM_XOTHREAD_H
#define XOSYSTEM_XOTHREAD_H

#include <memory>
#include <string>

#include "xoSystem/xoExport.h"

#if defined(_MSC_VER)
#    pragma warning(push)
#    pragma warning(disable : 4251)  // private members of standard types: host and DLL share one C++ runtime
#endif

namespace xo {

// The body of an xoLegacyThread. It has no virtual destructor: never delete an object through this type.
class xoRunnable {
public:
    virtual void run() = 0;  // called once, on the new thread
};

// A body that can be asked to stop, as a common type for hosts; no class of the library uses it.
class xoRunnableInterface {
public:
    virtual ~xoRunnableInterface() = default;
    virtual void run() = 0;   // the body
    virtual void stop() = 0;  // asks run() to return soon; does not wait

protected:
    xoRunnableInterface() = default;
};

class XOSYSTEM_API xoThread {
public:
    xoThread();
    virtual ~xoThread();  // waits without limit
    xoThread(const xoThread&) = delete;
    xoThread& operator=(const xoThread&) = delete;

    // Starts the thread. Its name is the text given (UTF-8), or for null the name of the object's class, then a space
    // and the thread's identifier; it is complete before run() begins. A text that is not UTF-8 is kept as it is, and
    // Windows gets U+FFFD for each broken sequence. Does nothing while a thread is held, even one that has ended but
    // was not waited for. Throws std::system_error with std::errc::resource_unavailable_try_again when Windows makes no
    // thread.
    void startThread(const char* name = nullptr);

    // Waits at most timeoutMs milliseconds for run() to return, or without limit for INT_MAX, and lets go of the
    // thread; startThread may then start another. False when no thread is held, and when it still runs after that time:
    // nothing has changed then. A negative time does not wait. Throws std::system_error, and keeps the thread, with
    // std::errc::resource_deadlock_would_occur when the thread waits for itself without limit, and with
    // std::errc::no_such_process when Windows refuses the wait.
    bool waitThread(int timeoutMs);

    // True from startThread until run() has returned.
    bool isRunning() const;

    // Whether no thread is held: none was started, or waitThread has let go of it. A thread that has ended but was not
    // waited for is neither running nor finished.
    bool isFinished() const;

    // The identifier that Windows gives the thread, in decimal digits, or "InvalidThread" while none is held.
    std::string getThreadId() const;

    // UTF-8; empty until the first start. It stays the same until the next one.
    const std::string& getThreadName() const;

    // The identifier of the calling thread, in decimal digits.
    static std::string CurrentThreadId();

    // Pause the calling thread. Windows takes milliseconds in 32 bits: sleep counts modulo 2^32 of them,
    // msleep(0xFFFFFFFF) never returns, and usleep rounds down, so that below 1000 it only gives way to other threads.
    static void sleep(unsigned long seconds);
    static void msleep(unsigned long milliseconds);
    static void usleep(unsigned long microseconds);

protected:
    // The thread's body.
    virtual void run() = 0;

private:
    struct Private;

    static void Run(xoThread* thread);
    static void RunImpl(void* argument);

    std::unique_ptr<Private> mPrivate;
};

// Calls functions every few seconds, from a thread of its own, which starts with the object.
//
//     xo::xoThreadPeriodicalUpdater updater(60);
//     updater.addCallback(&saveSettings, &settings);
//
// A round calls all callbacks, in the order of their registration. There is one when the period has passed, one at once
// when a callback is added, and usually a last one while the object is destroyed. Without callbacks the thread sleeps.
//
// Callbacks run while the list is locked: once removeCallback has returned, the callback neither runs nor will run
// again. So a callback must not wait for another thread that adds or removes one. It may remove any callback itself,
// and add some, which the same round calls too; a callback that adds one in every call makes the round endless. What a
// callback throws, or a processor fault in it, ends the thread: no callback is called again.
class XOSYSTEM_API xoThreadPeriodicalUpdater : public xoThread {
public:
    // 0 counts as 1 second; the longest period is 4294967 seconds. Throws what startThread throws.
    explicit xoThreadPeriodicalUpdater(unsigned int periodSeconds);
    ~xoThreadPeriodicalUpdater() override;

    // The same pair may be added several times. Null functions are not called.
    void addCallback(void (*function)(void*), void* data);

    // Removes the first entry with this function and this data, if there is one.
    void removeCallback(void (*function)(void*), void* data);

protected:
    // The updater's own body.
    void run() override;

private:
    struct Private;
    std::unique_ptr<Private> mPrivate;
};

}  // namespace xo

#if defined(_MSC_VER)
#    pragma warning(pop)
#endif

#endif
