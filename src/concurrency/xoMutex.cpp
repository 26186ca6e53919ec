// Mutexes: a critical section, a kernel mutex, and a named kernel mutex for several processes.
#include "xoSystem/xoMutex.h"

#include <string>

#include "concurrency/earlyCreation.h"
#include "platform/handle.h"
#include "platform/uuid.h"
#include "platform/wideText.h"

namespace xo {
namespace {

constexpr char kCreatedEarly[] = "Mutex created before full init of xoSystem";

platform::KernelHandle openSystemMutex(const char* name) {
    std::string kernelName = name ? name : platform::createUuid();
    for (char& c : kernelName)
        if (c == '\\') c = '/';  // Windows takes the part in front of a backslash for a kernel namespace
    // For the processes of all sessions: https://learn.microsoft.com/windows/win32/termserv/kernel-object-namespaces
    kernelName.insert(0, "Global\\");
    const std::wstring wideName = platform::toWide(kernelName);
    platform::KernelHandle mutex(
        ::CreateMutexW(/*lpMutexAttributes=*/nullptr, /*bInitialOwner=*/FALSE, wideName.c_str()));
    if (mutex || ::GetLastError() != ERROR_ACCESS_DENIED) return mutex;
    // CreateMutexW asks for all access to a mutex that exists; its owner may grant this process only what a lock needs:
    // https://learn.microsoft.com/windows/win32/api/synchapi/nf-synchapi-createmutexw
    return platform::KernelHandle(
        ::OpenMutexW(SYNCHRONIZE | MUTEX_MODIFY_STATE, /*bInheritHandle=*/FALSE, wideName.c_str()));
}

}  // namespace

struct xoMutex::Private {
    Private() { ::InitializeCriticalSection(&section); }
    ~Private() { ::DeleteCriticalSection(&section); }
    Private(const Private&) = delete;
    Private& operator=(const Private&) = delete;

    CRITICAL_SECTION section;
};

xoMutex::xoMutex() : xoMutex(impl::WithoutEarlyWarning()) { concurrency::warnIfCreatedEarly(kCreatedEarly); }

xoMutex::xoMutex(impl::WithoutEarlyWarning) : mPrivate(std::make_unique<Private>()) {}

xoMutex::~xoMutex() = default;

// Clang's analysis does not know that the functions of Windows take and release the lock, so it does not look into the
// functions below; callers are checked by the annotations in the header.
void xoMutex::lock() XO_NO_THREAD_SAFETY_ANALYSIS { ::EnterCriticalSection(&mPrivate->section); }

void xoMutex::unlock() XO_NO_THREAD_SAFETY_ANALYSIS { ::LeaveCriticalSection(&mPrivate->section); }

bool xoMutex::tryLock() XO_NO_THREAD_SAFETY_ANALYSIS { return ::TryEnterCriticalSection(&mPrivate->section) == TRUE; }

void* xoMutex::getMutexData() const { return &mPrivate->section; }

struct xoMutex2::Private {
    platform::KernelHandle mutex;  // belongs to a thread: ReleaseMutex by another one fails and changes nothing
};

xoMutex2::xoMutex2() : mPrivate(std::make_unique<Private>()) {
    mPrivate->mutex.reset(::CreateMutexA(/*lpMutexAttributes=*/nullptr, /*bInitialOwner=*/FALSE, /*lpName=*/nullptr));
    concurrency::warnIfCreatedEarly(kCreatedEarly);
}

xoMutex2::~xoMutex2() = default;

void xoMutex2::lock() XO_NO_THREAD_SAFETY_ANALYSIS { ::WaitForSingleObject(mPrivate->mutex.get(), INFINITE); }

// WAIT_ABANDONED, after the death of an owner, gives false too, although the caller owns the mutex then.
bool xoMutex2::tryLock(unsigned int timeoutMs) XO_NO_THREAD_SAFETY_ANALYSIS {
    return ::WaitForSingleObject(mPrivate->mutex.get(), timeoutMs) == WAIT_OBJECT_0;
}

void xoMutex2::unlock() XO_NO_THREAD_SAFETY_ANALYSIS { ::ReleaseMutex(mPrivate->mutex.get()); }

struct xoMutexSystem::Private {
    platform::KernelHandle mutex;  // null when the system refused it: the calls below then fail and do nothing
};

xoMutexSystem::xoMutexSystem(const char* name) : xoMutexSystem(name, impl::WithoutEarlyWarning()) {
    concurrency::warnIfCreatedEarly(kCreatedEarly);
}

xoMutexSystem::xoMutexSystem(const char* name, impl::WithoutEarlyWarning)
    : mPrivate(std::make_unique<Private>(Private{openSystemMutex(name)})) {}

xoMutexSystem::~xoMutexSystem() = default;

void xoMutexSystem::lock() XO_NO_THREAD_SAFETY_ANALYSIS { ::WaitForSingleObject(mPrivate->mutex.get(), INFINITE); }

void xoMutexSystem::unlock() XO_NO_THREAD_SAFETY_ANALYSIS { ::ReleaseMutex(mPrivate->mutex.get()); }

}  // namespace xo
