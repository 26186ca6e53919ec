#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>

#include "platform/windows.h"
#include "support/child.h"
#include "support/importHook.h"
#include "xoSystem/xoMutex.h"

#if defined(__clang__)  // these tests lock and unlock in ways that the analysis rejects
#    pragma clang diagnostic ignored "-Wthread-safety-analysis"
#endif

namespace {

// Runs the body on another thread and waits for it: a lock belongs to a thread.
template <class Body>
bool onAnotherThread(Body body) {
    bool result = false;
    std::thread([&] { result = body(); }).join();
    return result;
}

bool isFree(xo::xoMutex& mutex) {
    return onAnotherThread([&] {
        const bool locked = mutex.tryLock();
        if (locked) mutex.unlock();
        return locked;
    });
}

TEST(Mutex, ExcludesOtherThreadsAndLetsItsOwnerInAgain) {
    xo::xoMutex mutex;
    EXPECT_TRUE(isFree(mutex));
    mutex.lock();
    EXPECT_TRUE(mutex.tryLock());
    mutex.unlock();
    EXPECT_FALSE(isFree(mutex)) << "locked twice, unlocked once";
    mutex.unlock();
    EXPECT_TRUE(isFree(mutex));
}

TEST(MutexLocker, TouchesTheMutexOnlyWhileItHoldsIt) {
    xo::xoMutex mutex;
    {
        xo::xoMutexLocker locker(mutex, false);
        EXPECT_FALSE(locker.isLocked());
        locker.unlock();  // nothing to do
        locker.lock();
        locker.lock();  // must not count twice
        EXPECT_FALSE(isFree(mutex));
        locker.unlock();
        EXPECT_TRUE(isFree(mutex));
    }
    EXPECT_TRUE(isFree(mutex));
    {
        const xo::xoMutexLocker locker(mutex, true);
        EXPECT_TRUE(locker.isLocked());
        EXPECT_FALSE(isFree(mutex));
    }
    EXPECT_TRUE(isFree(mutex));
}

TEST(Mutex2, WaitsNoLongerThanAsked) {
    xo::xoMutex2 mutex;
    mutex.lock();
    EXPECT_TRUE(mutex.tryLock(0)) << "the owner may lock again";
    for (const unsigned int timeoutMs : {0u, 20u}) {
        EXPECT_FALSE(onAnotherThread([&] {
            mutex.unlock();  // not the owner: nothing happens
            return mutex.tryLock(timeoutMs);
        }));
    }
    mutex.unlock();
    mutex.unlock();
    EXPECT_TRUE(onAnotherThread([&] { return mutex.tryLock(0); })) << "and that thread is gone at once";
    EXPECT_FALSE(mutex.tryLock(0)) << "the first wait says that the owner is gone";
    EXPECT_FALSE(onAnotherThread([&] { return mutex.tryLock(0); })) << "yet this thread owns the abandoned mutex";
    mutex.unlock();
    EXPECT_TRUE(mutex.tryLock(0));
    mutex.unlock();
}

// Whether somebody holds the kernel mutex of this name.
bool isHeld(const wchar_t* kernelName) {
    return onAnotherThread([&] {
        const xo::platform::KernelHandle mutex(::OpenMutexW(SYNCHRONIZE | MUTEX_MODIFY_STATE, FALSE, kernelName));
        if (!mutex) return false;
        const bool held = ::WaitForSingleObject(mutex.get(), 0) == WAIT_TIMEOUT;
        if (!held) ::ReleaseMutex(mutex.get());
        return held;
    });
}

BOOLEAN WINAPI refuseRandomBytes(void*, ULONG) { return FALSE; }

TEST(MutexSystem, IsGlobalUnderItsNameWithSlashesAndAloneWithout) {
    xo::xoMutexSystem mutex("xo t\xC3\xA9st\\a/b");
    mutex.lock();
    EXPECT_TRUE(isHeld(L"Global\\xo t\u00E9st/a/b"));
    mutex.unlock();
    EXPECT_FALSE(isHeld(L"Global\\xo t\u00E9st/a/b"));

    for (const bool isRandom : {true, false}) {
        const auto hook =
            isRandom ? nullptr
                     : std::make_unique<xo::tests::ImportHook>("xoSystem.dll", "SystemFunction036", &refuseRandomBytes);
        ASSERT_TRUE(!hook || hook->isInstalled());
        xo::xoMutexSystem first(nullptr), second(nullptr);
        first.lock();
        onAnotherThread([&] { return second.lock(), second.unlock(), true; });  // would hang if they were one
        first.unlock();
    }
}

// A hook, because Wine grants every process all access to an existing mutex.
HANDLE WINAPI denyAllAccess(LPSECURITY_ATTRIBUTES, BOOL, LPCWSTR) {
    return ::SetLastError(ERROR_ACCESS_DENIED), nullptr;
}

TEST(MutexSystem, IsALockWhereItsOwnerGrantsNoMoreThanThat) {
    const xo::platform::KernelHandle owners(::CreateMutexW(nullptr, FALSE, L"Global\\xo granted"));
    const xo::tests::ImportHook hook("xoSystem.dll", "CreateMutexW", &denyAllAccess);
    ASSERT_TRUE(owners && hook.isInstalled());
    xo::xoMutexSystem mutex("xo granted");
    mutex.lock();
    EXPECT_TRUE(isHeld(L"Global\\xo granted"));
    mutex.unlock();
    EXPECT_FALSE(isHeld(L"Global\\xo granted"));
}

TEST(MutexSystem, DoesNothingWhereTheNameBelongsToAnotherObject) {
    const xo::platform::KernelHandle event(::CreateEventW(nullptr, TRUE, FALSE, L"Global\\xo taken"));
    ASSERT_TRUE(event);
    xo::xoMutexSystem mutex("xo taken");
    mutex.lock();
    mutex.unlock();
    EXPECT_EQ(::WaitForSingleObject(event.get(), 0), static_cast<DWORD>(WAIT_TIMEOUT)) << "the event is untouched";
}

TEST(MutexSystem, PassesOnWhenItsProcessEnds) {
    constexpr wchar_t kName[] = L"Global\\xo passed on";
    const xo::tests::Child child(L"mutexHolder", L"\"xo passed on\"");
    ASSERT_TRUE(child.isStarted());
    for (int i = 0; i < 2000 && !isHeld(kName); ++i) ::Sleep(5);
    ASSERT_TRUE(isHeld(kName));
    child.kill();
    xo::xoMutexSystem mutex("xo passed on");
    mutex.lock();  // would hang if the mutex died with its owner
    EXPECT_TRUE(isHeld(kName));
    mutex.unlock();
}

template <class T>
void shareAmongCopies(const T& first, const T& second) {
    xo::xoThreadSafePtr<T> value(first);
    {
        xo::xoThreadSafePtr<T> copy(value);
        EXPECT_EQ(copy.exchange(second), first);
    }
    EXPECT_EQ(value.get(), second);
    xo::xoThreadSafePtr<T> other(second);
    other = value;
    value.set(first);
    EXPECT_EQ(other.get(), first);
}

int locksTaken = 0;
void WINAPI countLock(LPCRITICAL_SECTION section) {
    ++locksTaken;
    xo::tests::ImportHook::behind (&countLock)(section);
}

TEST(ThreadSafePtr, SharesOneValueAmongCopiesWithALockOnlyWhereItMust) {
    const xo::tests::ImportHook hook("xoSystem.dll", "EnterCriticalSection", &countLock);
    ASSERT_TRUE(hook.isInstalled());
    shareAmongCopies<std::string>("a", "b");
    EXPECT_GT(locksTaken, 0);
    locksTaken = 0;
    shareAmongCopies(false, true);
    EXPECT_EQ(locksTaken, 0) << "a thread that is suspended while it holds one blocks the others";
}

}  // namespace
