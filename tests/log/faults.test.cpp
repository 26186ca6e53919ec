// A processor fault while a line is written leaves a log that other threads can use.
#include <thread>

#include "log/logFixture.h"
#include "platform/handle.h"
#include "support/importHook.h"
#include "support/temporaryFolder.h"
#include "xoSystem/xoException.h"

namespace {

using xo::xoLogObject;

class LogFaults : public xo::tests::LogTest {
protected:
    LogFaults() {
        log().installCustomHandler(nullptr, nullptr);
        log().makeThreadSafe();
        log().installFileHandlerUtf8(mFolder.path("app.log"));
    }

    static bool faults(void (*function)()) {
        try {
            xo::exception::impl::ExecGuardedCode(function);
            return false;
        } catch (const std::exception&) {
            return true;
        }
    }

    // Writes a line by another thread, which needs both locks. It would wait for ever for one that is still held.
    void expectUsable(const std::string& what) {
        std::thread([] { log().Write("usable", xo::xoLogInfo, {}); }).join();
        EXPECT_NE(mFolder.read("app.log").find(" usable\r\n"), std::string::npos) << what;
    }

    xo::tests::TemporaryFolder mFolder;
};

void writeToNull() { *static_cast<volatile int*>(nullptr) = 1; }

bool faultsInWrite = false;
BOOL WINAPI writeFile(HANDLE file, LPCVOID bytes, DWORD size, LPDWORD written, LPOVERLAPPED overlapped) {
    if (std::exchange(faultsInWrite, false)) writeToNull();
    return xo::tests::ImportHook::behind(&writeFile)(file, bytes, size, written, overlapped);
}

// Each level logs, until the stack is exhausted. A line needs more stack than a level, so that it happens in a line.
volatile int lastDepth = -1;
int logDeeper(int depth) {
    volatile char frame[64];
    frame[depth % 64] = 1;
    xoLogObject(xo::xoLogInfo) << "level " << depth;
    return depth == lastDepth ? 0 : logDeeper(depth + 1) + frame[0];
}

TEST_F(LogFaults, ReleaseItsLocksWhereverTheyHappen) {
    const xo::tests::ImportHook hook("xoSystem.dll", "WriteFile", &writeFile);
    ASSERT_TRUE(hook.isInstalled());
    EXPECT_TRUE(faults([] {
        faultsInWrite = true;
        xoLogObject(xo::xoLogInfo) << "never written";
    }));
    expectUsable("while the file is written");
    EXPECT_TRUE(xo::platform::FileHandle(::CreateFileW((mFolder.widePath() / L"app.log").c_str(), GENERIC_READ,
                                                       /*dwShareMode=*/0, nullptr, OPEN_EXISTING, 0, nullptr)))
        << "the file was left open";
}

TEST_F(LogFaults, ReleaseItsLocksWhenTheStackIsExhausted) {
    EXPECT_TRUE(faults([] { lastDepth = logDeeper(0); }));
    expectUsable("after recursion that logs");

    log().installCustomHandler(
        [](const std::string& message, xo::xoLogType, const std::string&, void*) {
            if (message == "overflow") lastDepth = logDeeper(1);
        },
        nullptr);
    EXPECT_TRUE(faults([] { xoLogObject(xo::xoLogInfo) << "overflow"; }));
    log().installCustomHandler(nullptr, nullptr);
    expectUsable("in the handler");
}

}  // namespace
