#include <gtest/gtest.h>

#include "support/child.h"

namespace {

TEST(Console, ShowsTextAsItIs) {
    const xo::tests::Child child(L"consoleWriter", {}, CREATE_NEW_CONSOLE);
    const int result = child.wait();
    if (result == 2) GTEST_SKIP() << "no console can be made here";
    EXPECT_EQ(result, 0);
}

}  // namespace
