// What the tests of processes share: a helper program, a folder for it to work in, and a log.
#ifndef XO_TESTS_PROCESSFIXTURE_H
#define XO_TESTS_PROCESSFIXTURE_H

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "log/logFixture.h"
#include "support/importHook.h"
#include "support/temporaryFolder.h"
#include "xoSystem/xoProcess.h"

namespace xo::tests {

class ProcessTest : public LogTest {
protected:
    ProcessTest() {
        log().setLogTypeEnabled(xoLogDebug, true);
        xoDirUtils::GetFolderOfCurrentProcessUtf8(mHelper);
        mHelper += "\\processChild.exe";
        mChild.setWorkingDirectoryUtf8(mFolder.path());
    }
    ~ProcessTest() override {
        mChild.killProcess();
        mChild.waitForFinished(10000);
    }

    // The exit code of the helper, run with these arguments in the folder.
    int run(const std::vector<std::string>& arguments, unsigned timeoutMs = 60000) {
        return xoProcess::ExecUtf8(mHelper, arguments, mFolder.path(), false, timeoutMs, &mError);
    }

    // Starts the helper and waits until it says that it is ready.
    bool begin(const std::string& task) {
        std::filesystem::remove(mFolder.widePath() / "told");
        if (!mChild.startProcess(mHelper, {task})) return false;
        for (int i = 0; i < 2000 && !mFolder.has("told"); ++i) ::Sleep(5);
        return mFolder.has("told");
    }

    const TemporaryFolder mFolder;
    std::string mHelper;
    std::string mError = "untouched";
    xoProcess mChild;
};

}  // namespace xo::tests

#endif
