// A helper program, a folder for it to work in, and a log.
#ifndef XO_TESTS_PROCESSFIXTURE_H
#define XO_TESTS_PROCESSFIXTURE_H

#include "log/logFixture.h"
#include "support/temporaryFolder.h"
#include "xoSystem/xoProcess.h"

namespace xo::tests {

using Texts = std::vector<std::string>;

class Process : public LogTest {
protected:
    Process() {
        log().setLogTypeEnabled(xoLogDebug, true);
        xoDirUtils::GetFolderOfCurrentProcessUtf8(mBinaries);
        mHelper = mBinaries + "\\processChild.exe";
        mChild.setWorkingDirectoryUtf8(mFolder.path());
    }
    ~Process() override {
        mChild.killProcess();
        mChild.waitForFinished(10000);
    }

    // The exit code of a program, by default the helper, run in the folder.
    int run(const Texts& arguments, unsigned timeoutMs = 60000) { return runOther(mHelper, arguments, timeoutMs); }
    int runOther(const std::string& program, const Texts& arguments, unsigned timeoutMs = 60000) {
        mError = "untouched";
        return xoProcess::ExecUtf8(program, arguments, mFolder.path(), true, timeoutMs, &mError);
    }

    // Waits until the helper has written this result. It has no other way to signal.
    bool waitForResult(const std::string& text) const {
        for (int i = 0; i < 2000 && mFolder.read("result") != text; ++i) ::SleepEx(5, FALSE);
        return mFolder.read("result") == text;
    }

    const TemporaryFolder mFolder;
    std::string mBinaries;
    std::string mHelper;
    std::string mError;
    xoProcess mChild;
};

// The texts with a NUL behind each.
inline std::string joined(const Texts& texts) {
    std::string all;
    for (const std::string& text : texts) all += text + '\0';
    return all;
}

}  // namespace xo::tests

#endif
