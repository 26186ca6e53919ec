// Lanes and errands. See errand.h for their rules.
#include "sysinfo/errand.h"

#include <algorithm>
#include <atomic>
#include <utility>

#include "platform/handle.h"
#include "platform/threadDescription.h"

namespace xo::sysinfo {

ULONGLONG Lane::enter(const Deadline& deadline) {
    const platform::SlimLocker locker(mLock);
    for (;;) {
        const DWORD remainingMs = deadline.remainingMs();
        // While a thread that was left behind still runs, no other one is started: the threads would pile up.
        if (remainingMs == 0 || mIsLate) return 0;
        if (!mIsBusy) break;
        mChanged.wait(mLock, remainingMs);
    }
    mIsBusy = true;
    return ++mTurn;
}

void Lane::leave() {
    {
        const platform::SlimLocker locker(mLock);
        mIsBusy = mIsLate = false;
    }
    mChanged.wakeAll();
}

void Lane::setLate(ULONGLONG turn) {
    {
        const platform::SlimLocker locker(mLock);
        // The thread may have ended meanwhile, and the next turn begun.
        if (mIsBusy && mTurn == turn) mIsLate = true;
    }
    mChanged.wakeAll();
}

// Kept by the errand and by the thread; the last of them releases it.
struct Errand::Shared {
    std::function<void()> work;
    platform::KernelHandle ended{::CreateEventW(/*lpEventAttributes=*/nullptr, /*bManualReset=*/TRUE,
                                                /*bInitialState=*/FALSE, /*lpName=*/nullptr)};
    bool hasFailed = false;  // the work has thrown; written before the end is signalled
};

// Passed to the thread, which deletes it.
struct Errand::Argument {
    std::shared_ptr<Shared> shared;
    Lane* lane;
    platform::LibraryHandle ownLibrary;  // keeps the code of the thread loaded
};

DWORD WINAPI Errand::run(void* given) {
    std::unique_ptr<Argument> argument(static_cast<Argument*>(given));
    try {
        argument->shared->work();
    } catch (...) {  // such as std::bad_alloc
        argument->shared->hasFailed = true;
    }
    // What the work owns is released before the end is signalled and before the lane is free.
    argument->shared->work = nullptr;
    // The lane first: a caller that is woken by the event can begin its next errand at once.
    argument->lane->leave();
    ::SetEvent(argument->shared->ended.get());
    // The thread cannot release its own code by an ordinary call, which would return to code that is gone.
    // https://learn.microsoft.com/windows/win32/api/libloaderapi/nf-libloaderapi-freelibraryandexitthread
    const HMODULE ownLibrary = argument->ownLibrary.release();
    argument.reset();
    ::FreeLibraryAndExitThread(ownLibrary, 0);
}

Errand::Errand(Lane& lane, const Deadline& deadline, std::function<void()> work) : mLane(lane) {
    auto argument = std::make_unique<Argument>();
    argument->shared = std::make_shared<Shared>();
    argument->shared->work = std::move(work);
    argument->lane = &lane;
    // Adds a reference to the library that holds this code, which the thread releases when it ends.
    ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, reinterpret_cast<LPCWSTR>(&run),
                         argument->ownLibrary.put());
    if (!argument->ownLibrary || !argument->shared->ended) return;
    // The deadline covers this wait too: an errand that cannot begin in time is late.
    mTurn = lane.enter(deadline);
    if (mTurn == 0) return;
    // Copied first: the thread owns the argument as soon as it runs, and may have deleted it when CreateThread returns.
    const std::shared_ptr<Shared> shared = argument->shared;
    const platform::KernelHandle thread(::CreateThread(/*lpThreadAttributes=*/nullptr, /*dwStackSize=*/0, &run,
                                                       argument.get(), /*dwCreationFlags=*/0, nullptr));
    if (!thread) {
        lane.leave();
        return;
    }
    [[maybe_unused]] const Argument* const belongsToTheThread = argument.release();
    platform::describeThread(thread.get(), lane.mThreadName);
    mShared = shared;
}

Errand::~Errand() {
    if (mShared) mLane.setLate(mTurn);
}

bool Errand::wait(const Deadline& deadline) {
    if (!mShared) return false;
    // A second call returns false, and the destructor does nothing.
    const std::shared_ptr<Shared> shared = std::move(mShared);
    const bool hasEnded = ::WaitForSingleObject(shared->ended.get(), deadline.remainingMs()) == WAIT_OBJECT_0;
    if (!hasEnded) mLane.setLate(mTurn);
    return hasEnded && !shared->hasFailed;
}

}  // namespace xo::sysinfo
