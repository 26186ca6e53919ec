// Threads that copies of an object share, and that can be suspended and killed. See the header for the rules of copies.
#include "xoSystem/xoLegacyThread.h"

#include <process.h>

#include <algorithm>

#include "fault/signalWatch.h"
#include "platform/handle.h"
#include "threads/guardedBody.h"
#include "xoSystem/xoMutex.h"

namespace xo {
namespace {

// A Windows thread, shared by the object that started it and the copies made since then.
struct Thread {
    // Stops the thread, which has been counted in suspensions.
    void suspend();
    // Undoes one suspension, if there is any. The thread itself has none to undo, because it runs.
    void resume();
    // Lowers the count, if it is not 0.
    void uncount();

    bool isCalling() const { return id == ::GetCurrentThreadId(); }
    bool hasEnded() const { return ::WaitForSingleObject(handle.get(), 0) == WAIT_OBJECT_0; }

    platform::KernelHandle handle;
    unsigned int id = 0;
    std::atomic<unsigned int> suspensions{0};  // by suspend() of any of these objects, not undone yet
};

void Thread::suspend() {
    constexpr DWORD kFailed = 0xFFFFFFFF;
    if (::SuspendThread(handle.get()) == kFailed) return uncount();
    if (isCalling()) return;
    // SuspendThread does not wait until the thread has stopped, but GetThreadContext does:
    // https://devblogs.microsoft.com/oldnewthing/20150205-00/?p=44743
    CONTEXT context;
    context.ContextFlags = CONTEXT_CONTROL;
    ::GetThreadContext(handle.get(), &context);
}

void Thread::resume() {
    if (isCalling()) return;
    while (suspensions != 0) {
        if (hasEnded()) {
            suspensions = 0;
            return;
        }
        // 0 for a thread that is counted but has not stopped yet: without another try it would stop for good. It is
        // about to stop, because suspend() waits for nothing between the two. A failure counts as undone.
        if (::ResumeThread(handle.get()) != 0) return uncount();
        if (!::SwitchToThread()) ::Sleep(1);
    }
}

void Thread::uncount() {
    unsigned int count = suspensions;
    while (count != 0 && !suspensions.compare_exchange_weak(count, count - 1)) {
    }
}

}  // namespace

struct xoLegacyThread::Private {
    explicit Private(xoRunnable* runnable) : body(runnable), alive(false), mustEnd(false), current(nullptr) {}
    // Written out, because std::atomic cannot be copied.
    Private(const Private& other)
        : body(other.body),
          thread(other.thread),
          isSuspended(other.isSuspended.load()),
          alive(other.alive),
          mustEnd(other.mustEnd),
          current(other.current) {}
    // NOLINTNEXTLINE(bugprone-unhandled-self-assignment): a copy of an object to itself changes nothing
    Private& operator=(const Private& other) {
        body = other.body;
        thread = other.thread;
        isSuspended = other.isSuspended.load();
        alive = other.alive;
        mustEnd = other.mustEnd;
        current = other.current;
        return *this;
    }

    void kill();

    xoRunnable* body;                      // not owned; null does nothing
    std::shared_ptr<Thread> thread;        // null before the first one
    std::atomic<bool> isSuspended{false};  // whether this object has suspended the thread; not shared with copies
    xoThreadSafePtr<bool> alive;           // this and the next two are shared with all copies
    xoThreadSafePtr<bool> mustEnd;
    xoThreadSafePtr<const Thread*> current;  // the thread that alive refers to; for comparison only
};

// Kills the thread unless it has ended, or was created after this copy was made.
void xoLegacyThread::Private::kill() {
    if (current.get() != thread.get() || !alive.exchange(false) || !thread) return;
    ::TerminateThread(thread->handle.get(), 0);
    // TerminateThread returns before the thread has ended, and the thread may still use what its owner frees next:
    // https://learn.microsoft.com/windows/win32/api/processthreadsapi/nf-processthreadsapi-terminatethread
    constexpr DWORD kLongestEndMs = 1000;
    ::WaitForSingleObject(thread->handle.get(), kLongestEndMs);
}

std::atomic<unsigned int> xoLegacyThread::mNbThreads{0};

xoLegacyThread::xoLegacyThread(xoRunnable* body) : mPrivate(std::make_unique<Private>(body)) { ++mNbThreads; }

xoLegacyThread::xoLegacyThread(const xoLegacyThread& other) : mPrivate(std::make_unique<Private>(*other.mPrivate)) {
    ++mNbThreads;
}

xoLegacyThread& xoLegacyThread::operator=(const xoLegacyThread& other) {
    *mPrivate = *other.mPrivate;
    return *this;
}

xoLegacyThread::~xoLegacyThread() {
    mPrivate->kill();
    --mNbThreads;
}

bool xoLegacyThread::create(const xoThreadCreationFlag& flag) {
    if (isAlive()) return mPrivate->thread != nullptr;

    mPrivate->thread.reset();
    mPrivate->current.set(nullptr);
    if (flag != xoThreadCreationFlagRun && flag != xoThreadCreationFlagSuspended) return false;

    // The thread is created suspended in both cases and runs only when the record is complete: its body may ask for its
    // identifier, or clear the alive flag, at once.
    auto thread = std::make_shared<Thread>();
    thread->handle.reset(reinterpret_cast<HANDLE>(::_beginthreadex(
        /*security=*/nullptr, /*stack_size=*/0, &execute, this, CREATE_SUSPENDED, &thread->id)));
    if (!thread->handle) return false;
    mPrivate->isSuspended = false;
    mPrivate->alive.set(true);
    mPrivate->current.set(thread.get());
    mPrivate->thread = thread;
    // Uses the local handle: the body may clear the alive flag at once, after which the object may be destroyed.
    if (flag == xoThreadCreationFlagRun) ::ResumeThread(thread->handle.get());
    return true;
}

// The function of the Windows thread.
unsigned int __stdcall xoLegacyThread::execute(void* thread) {
    auto* const self = static_cast<xoLegacyThread*>(thread);
    fault::watchSignalsOfThread();
    xoThreadSafePtr<bool> alive =
        self->mPrivate->alive;  // a copy: the object may be destroyed once the body has cleared it
    // A body that fails does not clear the flag itself, and end(true) would wait for ever.
    if (!threads::runReporting(&runBody, self, /*locks=*/{})) alive.set(false);
    return 0;
}

void xoLegacyThread::runBody(void* thread) { static_cast<xoLegacyThread*>(thread)->run(); }

void xoLegacyThread::run() {
    if (mPrivate->body) mPrivate->body->run();
}

void xoLegacyThread::destroy() { mPrivate->kill(); }

void xoLegacyThread::end(bool wait) {
    mPrivate->mustEnd.set(true);
    Thread* const thread = mPrivate->thread.get();
    if (thread && thread->isCalling()) return;
    mPrivate->isSuspended = false;
    while (thread && thread->suspensions != 0) thread->resume();  // a suspended thread does not see the request
    while (wait && isAlive()) yield();
}

bool xoLegacyThread::mustEnd() const { return mPrivate->mustEnd.get(); }

void xoLegacyThread::setAlive(bool alive) { mPrivate->alive.set(alive); }

bool xoLegacyThread::isAlive() const { return mPrivate->alive.get(); }

void xoLegacyThread::suspend() {
    if (mPrivate->isSuspended) return;
    Thread* const thread = mPrivate->thread.get();
    // A thread that is not alive any more is about to end and may hold the lock of the loader or of the heap.
    // Suspended, it would keep that lock, because nobody resumes it.
    if (!thread || !isAlive()) {
        mPrivate->isSuspended = true;
        return;
    }
    // Counted before the flag is set, so that resume(), which clears the flag, finds what it has to undo.
    ++thread->suspensions;
    if (mPrivate->isSuspended.exchange(true)) return thread->uncount();  // another thread was faster
    thread->suspend();
    if (!isAlive()) thread->resume();  // it began to end meanwhile
}

// isSuspended is cleared first: once the thread runs, it may suspend itself again.
void xoLegacyThread::resume() {
    if (mPrivate->isSuspended.exchange(false) && mPrivate->thread) mPrivate->thread->resume();
}

bool xoLegacyThread::isSuspended() const { return mPrivate->isSuspended; }

unsigned int xoLegacyThread::getId() const { return mPrivate->thread ? mPrivate->thread->id : 0; }

void xoLegacyThread::yield() { ::SleepEx(0, /*bAlertable=*/FALSE); }

void xoLegacyThread::sleep(int milliseconds) {
    ::SleepEx(static_cast<DWORD>((std::max)(milliseconds, 0)), /*bAlertable=*/FALSE);
}

}  // namespace xo
