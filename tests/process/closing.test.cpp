// The polite end. Windows make Wine start a desktop, so this program runs alone.
#include "process/processFixture.h"
#include "support/importHook.h"

namespace xo::tests {

int posted = 0;

TEST_F(Process, ClosesAllItsWindowsAndAThreadWithoutOne) {
    for (const auto& [task, code] : {std::pair("window", 7), std::pair("queue", 8)}) {
        ASSERT_TRUE(mChild.startProcess(mHelper, {task}) && waitForResult(task));
        mChild.terminateProcess();
        EXPECT_TRUE(mChild.waitForFinished(20000)) << task;
        EXPECT_EQ(mChild.exitCode(), code) << task;
    }
    mChild.terminateProcess();  // nobody is there to be asked

    const auto belongsToOther = +[](HANDLE) -> DWORD { return 1; };
    const auto count = +[](DWORD, UINT, WPARAM, LPARAM) -> BOOL { return ++posted; };
    const ImportHook hook("xoSystem.dll", "GetProcessIdOfThread", belongsToOther);
    const ImportHook postHook("xoSystem.dll", "PostThreadMessageW", count);
    ASSERT_TRUE(hook.isInstalled() && postHook.isInstalled() && mChild.startProcess(mHelper, {"sleep"}));
    mChild.terminateProcess();
    EXPECT_EQ(posted, 0) << "the thread's number may be another one's by now";
}

}  // namespace xo::tests
