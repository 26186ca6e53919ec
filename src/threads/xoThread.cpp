#include "xoSystem/xoThread.h"

#include <process.h>

#include <climits>
#include <system_error>
#include <typeinfo>

#include "concurrency/earlyCreation.h"
#include "fault/signalWatch.h"
#include "platform/handle.h"
#include "threads/guardedBody.h"
#include "threads/threadName.h"
#include "xoSystem/xoLog.h"

namespace xo {

struct xoThread::Private {
    // Starts a thread, suspended, that is to run the object.
    void create(xoThread* object);
    void join();
    bool hasEndedWithin(int timeoutMs) const;

    static unsigned __stdcall enter(void* object);

    platform::KernelHandle thread;  // null when no thread is held
    std::atomic<unsigned> id{0};    // 0 when no thread is held
};

void xoThread::Private::create(xoThread* object) {
    unsigned newId = 0;
    const std::uintptr_t handle =
        ::_beginthreadex(/*security=*/nullptr, /*stack_size=*/0, &enter, object, CREATE_SUSPENDED, &newId);
    if (handle == 0) throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again));
    thread.reset(reinterpret_cast<HANDLE>(handle));
    id = newId;
}

void xoThread::Private::join() {
    if (id == ::GetCurrentThreadId())
        throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur));
    if (::WaitForSingleObject(thread.get(), INFINITE) != WAIT_OBJECT_0)
        throw std::system_error(std::make_error_code(std::errc::no_such_process));
    thread.reset();
    id = 0;
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

// NOLINTNEXTLINE(bugprone-exception-escape): only a thread that destroys its own object throws, and cannot go on
xoThread::~xoThread() { waitThread(INT_MAX); }

void xoThread::startThread(const char* name) {
    if (mPrivate->thread) return;

    std::string threadName = name ? std::string(name) : threads::readableName(typeid(*this));
    constexpr std::size_t kIdRoom = 11;
    threadName.reserve(threadName.size() + kIdRoom);  // so that nothing can fail once there is a thread

    mIsRunning = true;
    try {
        mPrivate->create(this);
    } catch (const std::system_error&) {
        mIsRunning = false;
        throw;
    }
    threadName += ' ';
    threadName += std::to_string(mPrivate->id);
    mThreadName = std::move(threadName);
    ::ResumeThread(mPrivate->thread.get());
}

bool xoThread::waitThread(int timeoutMs) {
    if (!mPrivate->thread) return false;
    if (timeoutMs < INT_MAX && isRunning() && !mPrivate->hasEndedWithin(timeoutMs) && isRunning()) return false;
    mPrivate->join();
    mIsRunning = false;  // a body that ended its thread by itself has left it true
    return true;
}

bool xoThread::isFinished() const { return !isRunning() && mPrivate->id == 0; }

std::string xoThread::getThreadId() const {
    const unsigned id = mPrivate->id;
    return id != 0 ? std::to_string(id) : "InvalidThread";
}

std::string xoThread::CurrentThreadId() { return std::to_string(::GetCurrentThreadId()); }

void xoThread::sleep(unsigned long seconds) { ::Sleep(seconds * 1000); }

void xoThread::msleep(unsigned long milliseconds) { ::Sleep(milliseconds); }

void xoThread::usleep(unsigned long microseconds) { ::Sleep(microseconds / 1000); }

void xoThread::Run(xoThread* thread) {
    threads::nameCurrentThread(thread->mThreadName);
    fault::watchSignalsOfThread();
    threads::runGuarded(&RunImpl, thread, /*locks=*/{});
    thread->mIsRunning.store(false, std::memory_order_release);
}

void xoThread::RunImpl(void* argument) {
    auto* const thread = static_cast<xoThread*>(argument);
    if (typeid(*thread) == typeid(xoThread)) {
        // The derived object is gone, and with it the body. Calling it would end the process.
        xoLogObject(xoLogCritical) << "Thread destroyed before its body began: " << thread->mThreadName;
        return;
    }
    thread->run();
}

}  // namespace xo
