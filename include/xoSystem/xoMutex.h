// Locks: xoMutex for the threads of a process, xoMutex2 where a wait needs a limit, xoMutexSystem between processes.
//
//     xoMutex mutex;
//     {
//         xoMutexLocker locker(mutex);
//         ++shared;
//     }
//
// Every operation may be called from any thread. A thread that owns a lock may lock it again and then unlocks it as
// often. Nothing here reports an error; only tryLock has a result. The constructors may throw std::bad_alloc.
// Destroying a lock that a thread holds or waits for is an error that nothing detects.
//
// A lock made before initializeXoSystem(InitTypeFull) works, but logs one CRITICAL line, "Mutex created before full
// init of xoSystem", when there is a log: the library's own services are not thread-safe yet.
#ifndef XOSYSTEM_XOMUTEX_H
#define XOSYSTEM_XOMUTEX_H

#include <atomic>
#include <memory>
#include <type_traits>

#include "xoSystem/xoExport.h"

#if defined(_MSC_VER)
#    pragma warning(push)
#    pragma warning(disable : 4251)  // private members of standard types: host and DLL share one C++ runtime
#endif

namespace xo {

namespace impl {
// Selects the constructors for the library's own locks, which may be made before full initialisation without a warning.
struct WithoutEarlyWarning {};

// The library's own access to the critical section of a lock.
struct MutexAccess;
}  // namespace impl

// The in-process lock: a critical section. The cheapest lock here, and the one that xoWaitCondition works with.
class XO_CAPABILITY("mutex") XOSYSTEM_API xoMutex {
public:
    xoMutex();
    // For the library's own locks: without the warning.
    explicit xoMutex(impl::WithoutEarlyWarning);
    virtual ~xoMutex();
    xoMutex(const xoMutex&) = delete;
    xoMutex& operator=(const xoMutex&) = delete;

    // Waits without limit.
    void lock() XO_ACQUIRE();

    // The calling thread must own the lock. An unlock by any other thread damages it: threads that lock it later may
    // wait for ever.
    void unlock() XO_RELEASE();

    // Takes the lock only when that needs no wait; true when the thread owns it already.
    bool tryLock() XO_TRY_ACQUIRE(true);

private:
    friend struct impl::MutexAccess;
    void* getMutexData() const;  // the critical section

    struct Private;
    std::unique_ptr<Private> mPrivate;
};

// An unnamed kernel mutex: slower, but a wait for it can have a limit. It belongs to a thread: an unlock by another
// thread does nothing.
class XO_CAPABILITY("mutex") XOSYSTEM_API xoMutex2 {
public:
    xoMutex2();
    virtual ~xoMutex2();
    xoMutex2(const xoMutex2&) = delete;
    xoMutex2& operator=(const xoMutex2&) = delete;

    // Waits without limit.
    void lock() XO_ACQUIRE();

    // Waits at most timeoutMs milliseconds (0xFFFFFFFF: without limit). False after that time, and also when the thread
    // that owned the mutex ended without unlocking it: the caller owns it then all the same, and may unlock it.
    bool tryLock(unsigned int timeoutMs) XO_TRY_ACQUIRE(true);

    // Does nothing when the calling thread does not own the mutex.
    void unlock() XO_RELEASE();

private:
    struct Private;
    std::unique_ptr<Private> mPrivate;
};

// A named mutex that all processes of the machine share, whoever is logged on.
class XO_CAPABILITY("mutex") XOSYSTEM_API xoMutexSystem {
public:
    // Opens the mutex of that name or creates it. The name is UTF-8, each broken sequence of which counts as U+FFFD;
    // case counts, a backslash counts as a slash, and the kernel name is "Global\" and the name. Null gives a fresh
    // name that no other object has.
    //
    // When Windows refuses the mutex, lock and unlock do nothing, without any sign of it. That is so for an empty name,
    // for a name that belongs to another kind of object, for a name too long for Windows (260 characters with the
    // prefix are safe), and for a mutex whose creator does not let this process wait for it and release it. A mutex
    // that this class creates has the default access list of its creator, so another account, or the same one without
    // elevation when the creator is elevated, may be refused.
    explicit xoMutexSystem(const char* name);
    xoMutexSystem(const char* name, impl::WithoutEarlyWarning);
    ~xoMutexSystem();
    xoMutexSystem(const xoMutexSystem&) = delete;
    xoMutexSystem& operator=(const xoMutexSystem&) = delete;

    // Waits without limit. A process that ends while it holds the mutex passes it on.
    void lock() XO_ACQUIRE();

    // Does nothing when the calling thread does not own the mutex.
    void unlock() XO_RELEASE();

private:
    struct Private;
    std::unique_ptr<Private> mPrivate;
};

// Holds an xoMutex for a scope. A locker belongs to one thread and must not outlive its mutex.
class XO_SCOPED_CAPABILITY XOSYSTEM_API xoMutexLocker {
public:
    // Locks at once.
    explicit xoMutexLocker(xoMutex& mutex) XO_ACQUIRE(mutex) : mMutex(mutex), mLocked(true) { mMutex.lock(); }

    // Locks at once only when lockNow is true. Clang's analysis takes such a locker as not locked yet.
    xoMutexLocker(xoMutex& mutex, bool lockNow) XO_EXCLUDES(mutex) XO_NO_THREAD_SAFETY_ANALYSIS : mMutex(mutex),
                                                                                                  mLocked(lockNow) {
        if (lockNow) mMutex.lock();
    }
    ~xoMutexLocker() XO_RELEASE() {
        if (mLocked) mMutex.unlock();
    }
    xoMutexLocker(const xoMutexLocker&) = delete;
    xoMutexLocker& operator=(const xoMutexLocker&) = delete;

    // Does nothing when this locker holds the mutex already.
    void lock() XO_ACQUIRE() {
        if (!mLocked) mMutex.lock();
        mLocked = true;
    }

    // Does nothing unless this locker holds the mutex.
    void unlock() XO_RELEASE() {
        if (mLocked) mMutex.unlock();
        mLocked = false;
    }

    // Whether this locker holds the mutex.
    bool isLocked() const { return mLocked; }

private:
    xoMutex& mMutex;
    bool mLocked;
};

namespace impl {

// Whether values of this type fit into one lock-free atomic on x86-64.
template <class T>
constexpr bool isSmallValue =
    std::conjunction_v<std::is_trivially_copyable<T>, std::is_copy_constructible<T>, std::is_copy_assignable<T>> &&
    (sizeof(T) == 1 || sizeof(T) == 2 || sizeof(T) == 4 || sizeof(T) == 8);  // NOLINT(bugprone-sizeof-expression)

// A value under a lock, with the operations of std::atomic.
template <class T>
class LockedValue {
public:
    // exchange returns the value before.
    explicit LockedValue(const T& value) : mMutex(WithoutEarlyWarning()), mValue(value) {}
    T load() {
        const xoMutexLocker locker(mMutex);
        return mValue;
    }
    T exchange(const T& value) {
        const xoMutexLocker locker(mMutex);
        const T before = mValue;
        mValue = value;
        return before;
    }

private:
    xoMutex mMutex;
    T mValue XO_GUARDED_BY(mMutex);
};

// The value that the copies of an xoThreadSafePtr share.
template <class T>
using SharedValue = std::conditional_t<isSmallValue<T>, std::atomic<T>, LockedValue<T>>;

}  // namespace impl

// A value that all copies of the handle share; the last copy to go frees it. Different handles may be used by different
// threads; one handle is assigned to by one thread at a time. A number, a bool, a pointer or an enumerator is read and
// written without a lock, so that a thread which is suspended or killed in the middle of that blocks nobody.
template <class T>
class xoThreadSafePtr {
public:
    // Makes a new shared value, a copy of this one.
    explicit xoThreadSafePtr(const T& value) : mShared(std::make_shared<impl::SharedValue<T>>(value)) {}
    virtual ~xoThreadSafePtr() = default;
    xoThreadSafePtr(const xoThreadSafePtr&) = default;
    xoThreadSafePtr& operator=(const xoThreadSafePtr&) = default;

    // Gives a copy of the value.
    T get() const { return mShared->load(); }

    // Replaces the value, for all copies of the handle.
    void set(const T& value) { mShared->exchange(value); }

    // Sets the value and returns the one before, with no other access in between.
    T exchange(const T& value) { return mShared->exchange(value); }

private:
    std::shared_ptr<impl::SharedValue<T>> mShared;
};

}  // namespace xo

#if defined(_MSC_VER)
#    pragma warning(pop)
#endif

#endif
