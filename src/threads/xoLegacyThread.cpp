#include "xoSystem/xoLegacyThread.h"

#include <process.h>

#include "fault/signalWatch.h"
#include "platform/handle.h"
#include "threads/guardedBody.h"

namespace xo {

struct xoLegacyThread::Handle {
    platform::KernelHandle thread;
};

std::atomic<unsigned int> xoLegacyThread::mNbThreads{0};

xoLegacyThread::xoLegacyThread(xoRunnable* body) : mBody(body), mAlive(false), mMustEnd(false) { ++mNbThreads; }

xoLegacyThread::xoLegacyThread(const xoLegacyThread& other)
    : mHandle(other.mHandle),
      mBody(other.mBody),
      mId(other.mId.load()),
      mAlive(other.mAlive),
      mFlags(other.mFlags.load()),
      mMustEnd(other.mMustEnd) {
    ++mNbThreads;
}

xoLegacyThread& xoLegacyThread::operator=(const xoLegacyThread& other) {
    if (this == &other) return *this;
    mHandle = other.mHandle;
    mBody = other.mBody;
    mId = other.mId.load();
    mAlive = other.mAlive;
    mFlags = other.mFlags.load();
    mMustEnd = other.mMustEnd;
    return *this;
}

xoLegacyThread::~xoLegacyThread() {
    kill();
    --mNbThreads;
}

bool xoLegacyThread::create(const xoThreadCreationFlag& flag) {
    if (isAlive()) return mHandle != nullptr;

    mHandle.reset();
    auto handle = std::make_shared<Handle>();
    mAlive.set(true);  // now, because a short body clears the flag before _beginthreadex returns
    if (flag == xoThreadCreationFlagRun || flag == xoThreadCreationFlagSuspended) {
        unsigned int id = 0;
        handle->thread.reset(reinterpret_cast<HANDLE>(
            ::_beginthreadex(/*security=*/nullptr, /*stack_size=*/0, &execute, this,
                             flag == xoThreadCreationFlagSuspended ? CREATE_SUSPENDED : 0, &id)));
        mId = id;
    }
    if (!handle->thread) {
        mAlive.set(false);
        return false;
    }
    mHandle = std::move(handle);
    return true;
}

unsigned int __stdcall xoLegacyThread::execute(void* thread) {
    auto* const self = static_cast<xoLegacyThread*>(thread);
    fault::watchSignalsOfThread();
    self->mId = ::GetCurrentThreadId();          // the body may ask before _beginthreadex has returned
    xoThreadSafePtr<bool> alive = self->mAlive;  // the object may be gone once the body has cleared it
    if (!threads::runGuarded(&runGuarded, self, /*locks=*/{})) alive.set(false);
    return 0;
}

void xoLegacyThread::runGuarded(void* thread) { static_cast<xoLegacyThread*>(thread)->run(); }

void xoLegacyThread::run() {
    if (mBody) mBody->run();
}

void xoLegacyThread::destroy() { kill(); }

void xoLegacyThread::kill() {
    if (!mAlive.exchange(false) || !mHandle) return;
    ::TerminateThread(mHandle->thread.get(), 0);
    // That only asks for the end; for a moment longer the thread may use what its owner is about to free.
    constexpr DWORD kMomentMs = 1000;
    ::WaitForSingleObject(mHandle->thread.get(), kMomentMs);
}

void xoLegacyThread::end(bool wait) {
    if (!mMustEnd.exchange(true)) resume();
    while (wait && isAlive()) yield();
}

void xoLegacyThread::suspend() {
    if (isSuspended()) return;
    mFlags |= kSuspended;  // first: a thread that suspends itself gets no further
    if (mHandle) ::SuspendThread(mHandle->thread.get());
}

void xoLegacyThread::resume() {
    if (!isSuspended()) return;
    if (mHandle) ::ResumeThread(mHandle->thread.get());
    mFlags &= static_cast<unsigned char>(~kSuspended);
}

void xoLegacyThread::yield() { ::SleepEx(0, /*bAlertable=*/FALSE); }

void xoLegacyThread::sleep(int milliseconds) { ::SleepEx(static_cast<DWORD>(milliseconds), /*bAlertable=*/FALSE); }

}  // namespace xo
