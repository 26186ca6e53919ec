// The polite end. Windows make Wine start a desktop, so this program runs alone.
#include "process/processFixture.h"

namespace {

class Closing : public xo::tests::ProcessTest {};

TEST_F(Closing, ReachesEveryWindowAndAThreadWithoutOne) {
    for (const auto& [task, code] : {std::pair("window", 7), std::pair("queue", 8)}) {
        ASSERT_TRUE(begin(task));
        mChild.terminateProcess();
        EXPECT_TRUE(mChild.waitForFinished(20000)) << task;
        EXPECT_EQ(mChild.exitCode(), code) << task;
    }
    mChild.terminateProcess();  // nobody is there to be asked
}

}  // namespace
