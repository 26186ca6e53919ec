// Owners of Windows handles: one policy per kind says which value means "none" and how to close.
#ifndef XO_PLATFORM_HANDLE_H
#define XO_PLATFORM_HANDLE_H

#include <utility>

#include "platform/windows.h"

namespace xo::platform {

// Closes what it holds, once. Closing keeps the thread's last error, so that a failure can be read after its clean-up.
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

    // Closes what it holds and gives the place for an out-parameter: the called function's handle is owned at once.
    Type* put() noexcept {
        reset();
        return &mHandle;
    }

    [[nodiscard]] Type release() noexcept { return std::exchange(mHandle, Policy::none()); }

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
    static void close(Type memory) noexcept { ::LocalFree(memory); }
};
template <class T>
using LocalMemory = Owned<LocalMemoryPolicy<T>>;

}  // namespace xo::platform

#endif
