// Calls a function on a fiber, whose stack can be as large as the caller needs.
#include "platform/ownStack.h"

#include <cstdint>
#include <exception>

#include "platform/handle.h"
#include "platform/structuredCall.h"

namespace xo::platform {
namespace {

// Bytes of the stack that have memory from the start. The rest is reserved, and gets memory when it is touched.
constexpr std::size_t kCommit = std::size_t{64} * 1024;

struct FiberPolicy {
    using Type = void*;
    static Type none() noexcept { return nullptr; }
    static void close(Type fiber) noexcept { ::DeleteFiber(fiber); }
};
using Fiber = Owned<FiberPolicy>;

// The fiber of the calling thread. A thread that is no fiber is converted to one while the object exists, because only
// a fiber can switch to another one. FIBER_FLAG_FLOAT_SWITCH preserves the floating-point state.
class HomeFiber {
public:
    HomeFiber()
        : mIsConverted(!::IsThreadAFiber()),
          mFiber(mIsConverted ? ::ConvertThreadToFiberEx(nullptr, FIBER_FLAG_FLOAT_SWITCH) : ::GetCurrentFiber()) {}
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

// What runs on the fiber, and how it ended.
struct Call {
    Call(void (*called)(void*), void* with) : function(called), argument(with) {}

    void (*function)(void*);
    void* argument;
    // The fiber to return to.
    void* home = nullptr;
    std::exception_ptr exception;
    EXCEPTION_RECORD fault{};  // its code is 0 if there was none
};

bool callCatching(void* argument) {
    Call& call = *static_cast<Call*>(argument);
    try {
        call.function(call.argument);
    } catch (...) {
        call.exception = std::current_exception();
    }
    return true;
}

long keepFault(const EXCEPTION_POINTERS& fault, void* argument) {
    static_cast<Call*>(argument)->fault = *fault.ExceptionRecord;
    return EXCEPTION_EXECUTE_HANDLER;
}

// No exception may leave the outermost function of a fiber: it has no caller, and the process would end.
// https://learn.microsoft.com/windows/win32/procthread/fibers
void WINAPI runFiber(void* argument) {
    callFiltered(&callCatching, argument, &keepFault, argument);
    ::SwitchToFiber(static_cast<Call*>(argument)->home);
}

bool callOnFiber(std::size_t size, Call& call) {
    const HomeFiber home;
    if (!home.get()) return false;
    call.home = home.get();
    const Fiber fiber(::CreateFiberEx(kCommit, size, FIBER_FLAG_FLOAT_SWITCH, &runFiber, &call));
    if (!fiber) return false;
    // Returns when runFiber switches back, after the function has ended.
    ::SwitchToFiber(fiber.get());
    return true;
}

}  // namespace

bool callOnOwnStack(std::size_t size, void (*function)(void*), void* argument) {
    Call call(function, argument);
    if (!callOnFiber(size, call)) return false;
    const EXCEPTION_RECORD& fault = call.fault;
    // Raised again here, so that the handlers of the calling stack see it as if the call had been made on it.
    if (fault.ExceptionCode != 0)
        ::RaiseException(fault.ExceptionCode, EXCEPTION_NONCONTINUABLE, fault.NumberParameters,
                         fault.ExceptionInformation);
    if (call.exception) std::rethrow_exception(call.exception);
    return true;
}

std::size_t stackLeft() {
    ULONG_PTR low = 0;
    ULONG_PTR high = 0;
    ::GetCurrentThreadStackLimits(&low, &high);
    const auto here = reinterpret_cast<ULONG_PTR>(&high);
    return here > low && here < high ? here - low : 0;
}

}  // namespace xo::platform
