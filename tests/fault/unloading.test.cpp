#include <gtest/gtest.h>

#include "support/child.h"

TEST(UnloadingProgram, GetsItsCrashHelpOutOfTheWay) { EXPECT_EQ(xo::tests::Child(L"unloader").wait(), 7); }
