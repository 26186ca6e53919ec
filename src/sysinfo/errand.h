// Questions to the system that may never be answered: to a driver, to a service, to a drive that has lost its medium.
// They are asked on a thread of their own, which is left behind when it is late.
#ifndef XO_SYSINFO_ERRAND_H
#define XO_SYSINFO_ERRAND_H

#include <functional>
#include <memory>

#include "platform/deadline.h"
#include "platform/slimLock.h"

namespace xo::sysinfo {

using platform::Deadline;

// One kind of question. At most one thread asks it at a time, and so at most one is left behind. A static object.
class Lane {
public:
    constexpr explicit Lane(const wchar_t* threadName) : mThreadName(threadName) {}
    Lane(const Lane&) = delete;
    Lane& operator=(const Lane&) = delete;

private:
    friend class Errand;

    // The number of the turn, which leave ends; 0 when the lane was not free in time.
    ULONGLONG enter(const Deadline& deadline);
    void leave();
    void setLate(ULONGLONG turn);

    const wchar_t* const mThreadName;
    platform::SlimLock mLock;
    platform::SlimCondition mChanged;
    ULONGLONG mTurn XO_GUARDED_BY(mLock) = 0;   // of the last thread
    bool mIsBusy XO_GUARDED_BY(mLock) = false;  // that thread has not ended yet
    bool mIsLate XO_GUARDED_BY(mLock) = false;  // and was left behind
};

// A question under way. The thread keeps the library loaded until it has ended.
class Errand {
public:
    // Begins to work on a new thread, and waits for the lane before that. The work owns all that it uses, and its
    // exceptions are dropped. With a limit of 0, and while another one is late, nothing begins: the errand is late at
    // once.
    Errand(Lane& lane, const Deadline& deadline, std::function<void()> work);
    ~Errand();
    Errand(const Errand&) = delete;
    Errand& operator=(const Errand&) = delete;

    // Waits for the end of the work. False when it has not ended in time, and will never be waited for again: what it
    // writes must not be read.
    bool wait(const Deadline& deadline);

private:
    struct Shared;
    struct Argument;
    static DWORD WINAPI run(void* argument);

    Lane& mLane;
    ULONGLONG mTurn = 0;
    std::shared_ptr<Shared> mShared;  // null when it is late, and when it has ended
};

}  // namespace xo::sysinfo

#endif
