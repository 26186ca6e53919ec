#include "platform/ownStack.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <stdexcept>

#include "platform/windows.h"

#undef __try  // libstdc++ defines it as a macro; below it is the keyword of structured exception handling

namespace {

using xo::platform::callOnOwnStack;
using xo::platform::stackLeft;

constexpr std::size_t kMegabyte = 1024 * 1024;

bool call(std::size_t size, std::function<void()> function) {
    const auto run = [](void* called) { (*static_cast<std::function<void()>*>(called))(); };
    return callOnOwnStack(size, run, &function);
}

int useStack(int kilobytes) {
    volatile char used[1000];
    used[0] = 1;
    return used[0] + (kilobytes > 0 ? useStack(kilobytes - 1) : 0);
}

TEST(OwnStack, IsAsLargeAsAskedForOnTheSameThread) {
    const DWORD thread = ::GetCurrentThreadId();
    EXPECT_LT(stackLeft(), 60 * kMegabyte);
    EXPECT_TRUE(call(64 * kMegabyte, [&] {
        EXPECT_EQ(::GetCurrentThreadId(), thread);
        EXPECT_GT(stackLeft(), 60 * kMegabyte);
        EXPECT_EQ(useStack(50000), 50001);
        EXPECT_TRUE(call(kMegabyte, [] { EXPECT_LT(stackLeft(), kMegabyte); })) << "on a stack of its own again";
    }));
    EXPECT_FALSE(::IsThreadAFiber());
    EXPECT_FALSE(call(std::size_t{1} << 60, [] { ADD_FAILURE() << "there is no such stack"; }));
}

// Of the process's addresses, those in use.
std::size_t addressesInUse() {
    std::size_t sum = 0;
    MEMORY_BASIC_INFORMATION region{};
    for (std::uintptr_t at = 0; ::VirtualQuery(reinterpret_cast<void*>(at), &region, sizeof region) != 0;
         at += region.RegionSize)
        if (region.State != MEM_FREE) sum += region.RegionSize;
    return sum;
}

TEST(OwnStack, LetsExceptionsThroughAndIsFreed) {
    const std::size_t before = addressesInUse();
    for (int i = 0; i < 50; ++i)
        EXPECT_THROW(call(64 * kMegabyte, [] { throw std::out_of_range("text"); }), std::out_of_range);
    EXPECT_LT(addressesInUse(), before + 640 * kMegabyte);
    EXPECT_FALSE(::IsThreadAFiber());
}

long keep(const EXCEPTION_POINTERS* fault, EXCEPTION_RECORD& record) {
    record = *fault->ExceptionRecord;
    return EXCEPTION_EXECUTE_HANDLER;
}

__declspec(noinline) void callFaulting() {
    callOnOwnStack(
        kMegabyte, [](void*) { *reinterpret_cast<volatile char*>(0x123) = 0; }, nullptr);
}

TEST(OwnStack, RaisesAFaultOnceMoreForTheCaller) {
    EXCEPTION_RECORD record{};
    __try {
        callFaulting();
    } __except (keep(GetExceptionInformation(), record)) {
    }
    EXPECT_EQ(record.ExceptionCode, EXCEPTION_ACCESS_VIOLATION);
    EXPECT_EQ(record.ExceptionInformation[1], 0x123u) << "the address";
    EXPECT_FALSE(::IsThreadAFiber());
}

}  // namespace
