// How processes end that have threads of the library: never by hanging.
#include <gtest/gtest.h>

#include "support/child.h"

namespace {

TEST(ProcessEnd, WaitsForNoThreadThatNobodyStopped) {
    for (const wchar_t* const meanwhile : {L"idle", L"busy"})
        EXPECT_EQ(xo::tests::Child(L"threadsAtExit", meanwhile).wait(), 7) << meanwhile;
}

}  // namespace
