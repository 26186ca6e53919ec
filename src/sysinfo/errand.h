// Calls of the system that may never return: into a driver, a service, or a drive that has lost its medium. Each runs
// on a thread of its own. When it is late, the caller continues without it, because a thread inside a driver cannot be
// ended.
#ifndef XO_SYSINFO_ERRAND_H
#define XO_SYSINFO_ERRAND_H

#include <functional>
#include <memory>

#include "platform/deadline.h"
#include "platform/slimLock.h"

namespace xo::sysinfo {

using platform::Deadline;

// The errands of one kind. At most one of them runs at a time, so at most one thread is left behind. A lane must be a
// static object, because that thread uses it when it ends at last.
class Lane {
public:
    constexpr explicit Lane(const wchar_t* threadName) : mThreadName(threadName) {}
    Lane(const Lane&) = delete;
    Lane& operator=(const Lane&) = delete;

private:
    friend class Errand;

    // Waits until the lane is free and occupies it. Returns the number of the turn, which leave() ends; 0 when the
    // deadline passed first, or when the thread in the lane is late.
    ULONGLONG enter(const Deadline& deadline);
    void leave();
    // Marks the turn as late if it still lasts. enter() then fails at once, also in threads that wait there already.
    void setLate(ULONGLONG turn);

    const wchar_t* const mThreadName;
    platform::SlimLock mLock;
    platform::SlimCondition mChanged;           // signalled when mIsBusy or mIsLate has changed
    ULONGLONG mTurn XO_GUARDED_BY(mLock) = 0;   // of the last thread
    bool mIsBusy XO_GUARDED_BY(mLock) = false;  // that thread has not ended yet
    bool mIsLate XO_GUARDED_BY(mLock) = false;  // and was left behind
};

// One call under way, owned by the thread that waits for it. The thread that runs it holds a reference to the library
// until it ends, so that unloading the library cannot remove its code.
class Errand {
public:
    // Begins to work on a new thread, and waits for the lane before that. The work owns all that it uses, and its
    // exceptions are dropped. With a limit of 0, and while another one is late, nothing begins: the errand is late at
    // once.
    Errand(Lane& lane, const Deadline& deadline, std::function<void()> work);
    // Leaves the thread behind if wait() has not been called.
    ~Errand();
    Errand(const Errand&) = delete;
    Errand& operator=(const Errand&) = delete;

    // Waits for the end of the work. False when it has thrown, and when it has not ended in time and will never be
    // waited for again: what it writes must not be read.
    bool wait(const Deadline& deadline);

private:
    // What both threads use, and what the new thread alone owns.
    struct Shared;
    struct Argument;
    static DWORD WINAPI run(void* given);

    Lane& mLane;
    ULONGLONG mTurn = 0;
    std::shared_ptr<Shared> mShared;  // null when it is late, and when it has ended
};

}  // namespace xo::sysinfo

#endif
