// The polite end. Windows make Wine start a desktop, so this program runs alone.
#include "process/processFixture.h"

namespace xo::tests {

TEST_F(Process, ClosesAllItsWindowsAndAThreadWithoutOne) {
    for (const auto& [task, code] : {std::pair("window", 7), std::pair("queue", 8)}) {
        ASSERT_TRUE(mChild.startProcess(mHelper, {task}) && waitUntilTold(task));
        mChild.terminateProcess();
        EXPECT_TRUE(mChild.waitForFinished(20000)) << task;
        EXPECT_EQ(mChild.exitCode(), code) << task;
    }
    mChild.terminateProcess();  // nobody is there to be asked
}

}  // namespace xo::tests
