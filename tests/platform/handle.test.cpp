#include "platform/handle.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

std::vector<int> closed;

struct NumberPolicy {
    using Type = int;
    static Type none() noexcept { return -1; }
    static void close(Type handle) noexcept {
        closed.push_back(handle);
        ::SetLastError(ERROR_INVALID_HANDLE);
    }
};
using Number = xo::platform::Owned<NumberPolicy>;

TEST(Owned, ClosesEachHandleOnce) {
    closed.clear();
    {
        Number first(1);
        Number second(std::move(first));
        EXPECT_FALSE(first);
        Number third(3);
        third = std::move(second);  // closes 3
        EXPECT_EQ(closed, (std::vector<int>{3}));
        Number& self = third;
        third = std::move(self);
        EXPECT_EQ(third.get(), 1);
        third.reset(1);  // the same handle again is no reason to close it
        Number released(7);
        EXPECT_EQ(released.release(), 7);
        EXPECT_EQ(closed, (std::vector<int>{3}));
    }
    EXPECT_EQ(closed, (std::vector<int>{3, 1}));
}

TEST(Owned, KeepsTheLastErrorOfTheCallBefore) {
    Number number(1);
    ::SetLastError(ERROR_DISK_FULL);
    number.reset();
    EXPECT_EQ(::GetLastError(), static_cast<DWORD>(ERROR_DISK_FULL));
}

}  // namespace
