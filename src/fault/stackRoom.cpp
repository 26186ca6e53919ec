#include "fault/stackRoom.h"

#include <cstddef>

#include "platform/handle.h"

namespace xo::fault {
namespace {

constexpr std::size_t kRoomOfReport = 256 * 1024;  // DbgHelp reads program databases on it
constexpr std::size_t kFiberCommit = 64 * 1024;
constexpr std::size_t kFiberReserve = 1024 * 1024;

struct FiberPolicy {
    using Type = void*;
    static Type none() noexcept { return nullptr; }
    static void close(Type fiber) noexcept { ::DeleteFiber(fiber); }
};
using Fiber = platform::Owned<FiberPolicy>;

// The fiber that the thread is: its own, or one that it becomes for as long as the object lives.
class HomeFiber {
public:
    HomeFiber()
        : mIsConverted(!::IsThreadAFiber()),
          mFiber(mIsConverted ? ::ConvertThreadToFiber(nullptr) : ::GetCurrentFiber()) {}
    ~HomeFiber() {
        if (mIsConverted && mFiber) ::ConvertFiberToThread();
    }
    HomeFiber(const HomeFiber&) = delete;
    HomeFiber& operator=(const HomeFiber&) = delete;

    void* get() const { return mFiber; }

private:
    bool mIsConverted;
    void* mFiber;
};

struct Call {
    Function function;
    void* argument;
    void* home;
};

void WINAPI runFiber(void* argument) {
    const Call& call = *static_cast<const Call*>(argument);
    callQuietly(call.function, call.argument);
    ::SwitchToFiber(call.home);
}

bool callOnFiber(Function function, void* argument) {
    const HomeFiber home;
    if (!home.get()) return false;
    Call call{function, argument, home.get()};
    const Fiber fiber(::CreateFiberEx(kFiberCommit, kFiberReserve, FIBER_FLAG_FLOAT_SWITCH, &runFiber, &call));
    if (!fiber) return false;
    ::SwitchToFiber(fiber.get());
    return true;
}

}  // namespace

bool hasStackRoom() {
    ULONG_PTR low = 0;
    ULONG_PTR high = 0;
    ::GetCurrentThreadStackLimits(&low, &high);
    const auto here = reinterpret_cast<ULONG_PTR>(&high);
    return here - low >= kRoomOfReport;
}

void callWithRoom(Function function, void* argument) {
    if (!hasStackRoom() && callOnFiber(function, argument)) return;
    callQuietly(function, argument);
}

}  // namespace xo::fault
