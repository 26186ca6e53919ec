// Threads as objects: start, name and join.
#include "xoSystem/xoThread.h"

#include <process.h>

#include <atomic>
#include <climits>
#include <system_error>
#include <typeinfo>
#include <utility>

#include "concurrency/earlyCreation.h"
#include "fault/signalWatch.h"
#include "platform/handle.h"
#include "threads/guardedBody.h"
#include "threads/threadName.h"
#include "xoSystem/xoLog.h"

namespace xo {

// `thread` and `name` belong to the thread that uses the object; the atomic members may be read by any thread.
struct xoThread::Private {
    // Creates a suspended thread that will run the object. Throws std::system_error.
    void create(xoThread* object);
    // Waits for the end of the thread without limit, and closes its handle. Throws when the thread would wait for
    // itself.
    void join();
    // Waits at most that long; a negative time does not wait and counts as not ended.
    bool hasEndedWithin(int timeoutMs) const;

    static unsigned __stdcall enter(void* object);

    platform::KernelHandle thread;       // null when no thread is held
    std::atomic<unsigned> id{0};         // 0 when no thread is held
    std::atomic<bool> isRunning{false};  // from startThread until run() has returned
    std::string name;                    // of the thread that was started last
};

void xoThread::Private::create(xoThread* object) {
    unsigned newId = 0;
    // _beginthreadex and not CreateThread, so that the C runtime prepares and cleans up its data of the thread.
    platform::KernelHandle created(reinterpret_cast<HANDLE>(
        ::_beginthreadex(/*security=*/nullptr, /*stack_size=*/0, &enter, object, CREATE_SUSPENDED, &newId)));
    if (!created) throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again));
    thread = std::move(created);
    id = newId;
}

void xoThread::Private::join() {
    // A thread that waits for itself would never wake.
    if (id == ::GetCurrentThreadId())
        throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur));
    if (::WaitForSingleObject(thread.get(), INFINITE) != WAIT_OBJECT_0)
        throw std::system_error(std::make_error_code(std::errc::no_such_process));
    thread.reset();
    id = 0;
    isRunning = false;  // a body that ended its thread itself, with ExitThread, has left it true
}

bool xoThread::Private::hasEndedWithin(int timeoutMs) const {
    if (timeoutMs < 0) return false;
    const DWORD result = ::WaitForSingleObject(thread.get(), static_cast<DWORD>(timeoutMs));
    if (result == WAIT_FAILED) throw std::system_error(std::make_error_code(std::errc::no_such_process));
    return result == WAIT_OBJECT_0;
}

unsigned __stdcall xoThread::Private::enter(void* object) {
    Run(static_cast<xoThread*>(object));
    return 0;
}

xoThread::xoThread() : mPrivate(std::make_unique<Private>()) {
    concurrency::warnIfCreatedEarly("Thread create before full init of xoSystem");
}

// NOLINTNEXTLINE(bugprone-exception-escape): throws only in a thread that destroys its own object, which is an error
xoThread::~xoThread() { waitThread(INT_MAX); }

void xoThread::startThread(const char* name) {
    if (mPrivate->thread) return;

    std::string threadName = name ? std::string(name) : threads::readableName(typeid(*this));
    constexpr std::size_t kIdLength = 11;               // a space and the digits of 32 bits
    threadName.reserve(threadName.size() + kIdLength);  // so that nothing can fail once the thread exists

    // The thread is created suspended and gets its name before it runs.
    mPrivate->create(this);
    mPrivate->isRunning = true;
    threadName += ' ';
    threadName += std::to_string(mPrivate->id);
    mPrivate->name = std::move(threadName);
    ::ResumeThread(mPrivate->thread.get());
}

bool xoThread::waitThread(int timeoutMs) {
    if (!mPrivate->thread) return false;
    // isRunning() is read again, because the body may have returned while its thread has not ended yet.
    if (timeoutMs < INT_MAX && isRunning() && !mPrivate->hasEndedWithin(timeoutMs) && isRunning()) return false;
    mPrivate->join();
    return true;
}

bool xoThread::isRunning() const { return mPrivate->isRunning.load(std::memory_order_acquire); }

bool xoThread::isFinished() const { return !isRunning() && mPrivate->id == 0; }

const std::string& xoThread::getThreadName() const { return mPrivate->name; }

std::string xoThread::getThreadId() const {
    const unsigned id = mPrivate->id;
    return id != 0 ? std::to_string(id) : "InvalidThread";
}

std::string xoThread::CurrentThreadId() { return std::to_string(::GetCurrentThreadId()); }

// unsigned long has 32 bits on Windows: the product wraps around from 49.7 days on.
void xoThread::sleep(unsigned long seconds) { ::Sleep(seconds * 1000); }

void xoThread::msleep(unsigned long milliseconds) { ::Sleep(milliseconds); }

// Windows sleeps whole milliseconds. Less than one becomes 0, which only yields.
void xoThread::usleep(unsigned long microseconds) { ::Sleep(microseconds / 1000); }

void xoThread::Run(xoThread* thread) {
    threads::nameCurrentThread(thread->mPrivate->name);
    fault::watchSignalsOfThread();
    threads::runReporting(&RunImpl, thread, /*locks=*/{});
    // The last access to the object. A thread that sees false in isRunning() also sees all that run() has written.
    thread->mPrivate->isRunning.store(false, std::memory_order_release);
}

void xoThread::RunImpl(void* argument) {
    auto* const thread = static_cast<xoThread*>(argument);
    if (typeid(*thread) == typeid(xoThread)) {
        // The destructor of the derived class has run already, so run() is pure virtual again, and calling it would end
        // the process.
        xoLogObject(xoLogCritical) << "Thread destroyed before its body began: " << thread->mPrivate->name;
        return;
    }
    thread->run();
}

}  // namespace xo
