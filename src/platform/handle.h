// Owners of Windows handles. One policy for each kind of handle defines which value means "none" and how it is closed.
// For example, CloseHandle does not close a search or a registry key.
#ifndef XO_PLATFORM_HANDLE_H
#define XO_PLATFORM_HANDLE_H

#include <utility>

#include "platform/windows.h"

namespace xo::platform {

// Owns one handle, or none, and closes it. Closing preserves GetLastError, so that the error of a failed call can be
// read after the clean-up. Moving leaves the other object empty. An object is used by one thread at a time.
template <class Policy>
class Owned {
public:
    using Type = typename Policy::Type;

    Owned() noexcept = default;
    explicit Owned(Type handle) noexcept : mHandle(handle) {}
    Owned(Owned&& other) noexcept : mHandle(other.release()) {}
    Owned& operator=(Owned&& other) noexcept {
        reset(other.release());
        return *this;
    }
    Owned(const Owned&) = delete;
    Owned& operator=(const Owned&) = delete;
    ~Owned() { reset(); }

    Type get() const noexcept { return mHandle; }
    explicit operator bool() const noexcept { return mHandle != Policy::none(); }

    // Closes the handle, and returns the place for an out-parameter, so that the handle that the called function stores
    // there is owned at once.
    Type* put() noexcept {
        reset();
        return &mHandle;
    }

    // Gives up the ownership: the caller must close the handle.
    [[nodiscard]] Type release() noexcept { return std::exchange(mHandle, Policy::none()); }

    // Owns another handle, or none, instead. Does nothing for the handle that it owns already, so that moving an object
    // to itself is safe.
    void reset(Type handle = Policy::none()) noexcept {
        const Type old = std::exchange(mHandle, handle);
        if (old == Policy::none() || old == handle) return;
        const DWORD lastError = ::GetLastError();
        Policy::close(old);
        ::SetLastError(lastError);
    }

private:
    Type mHandle = Policy::none();
};

// Mutexes, events, threads, processes: creating one fails with null.
struct KernelObjectPolicy {
    using Type = HANDLE;
    static Type none() noexcept { return nullptr; }
    static void close(Type handle) noexcept { ::CloseHandle(handle); }
};
using KernelHandle = Owned<KernelObjectPolicy>;

// Files and pipes: CreateFileW fails with -1, not null.
struct FilePolicy {
    using Type = HANDLE;
    static Type none() noexcept { return INVALID_HANDLE_VALUE; }
    static void close(Type handle) noexcept { ::CloseHandle(handle); }
};
using FileHandle = Owned<FilePolicy>;

// Searches of FindFirstFileW, which are closed by a function of their own.
struct FindPolicy {
    using Type = HANDLE;
    static Type none() noexcept { return INVALID_HANDLE_VALUE; }
    static void close(Type handle) noexcept { ::FindClose(handle); }
};
using FindHandle = Owned<FindPolicy>;

// Libraries that LoadLibraryExW has loaded.
struct LibraryPolicy {
    using Type = HMODULE;
    static Type none() noexcept { return nullptr; }
    static void close(Type library) noexcept { ::FreeLibrary(library); }
};
using LibraryHandle = Owned<LibraryPolicy>;

// Memory that a Windows call allocated with LocalAlloc for its caller.
template <class T>
struct LocalMemoryPolicy {
    using Type = T*;
    static Type none() noexcept { return nullptr; }
    static void close(Type memory) noexcept { ::LocalFree(static_cast<void*>(memory)); }
};
template <class T>
using LocalMemory = Owned<LocalMemoryPolicy<T>>;

}  // namespace xo::platform

#endif
