#include <gtest/gtest.h>

#include "support/child.h"

TEST(LibraryEnd, LeavesNothingRunningBehind) { EXPECT_EQ(xo::tests::Child(L"libraryUnloader").wait(), 7); }
