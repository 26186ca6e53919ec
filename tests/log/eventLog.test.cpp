#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "log/logFixture.h"
#include "support/importHook.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using xo::xoLog;
using xo::xoLogObject;

// Stands in for the event log of the system.
struct {
    std::vector<std::string> events;  // "<source> <type> <text>"
    std::string source;
    bool refuses;
    int openSources;
} fakeSystem;

HANDLE WINAPI registerSource(LPCSTR server, LPCSTR name) {
    EXPECT_EQ(server, nullptr);
    fakeSystem.source = name;
    if (fakeSystem.refuses) return nullptr;
    ++fakeSystem.openSources;
    return reinterpret_cast<HANDLE>(1);
}

BOOL WINAPI report(HANDLE, WORD type, WORD category, DWORD id, PSID user, WORD count, DWORD size, LPCSTR* texts,
                   LPVOID data) {
    EXPECT_TRUE(category == 0 && id == 1 && !user && count == 1 && size == 0 && !data);
    fakeSystem.events.push_back(fakeSystem.source + " " + std::to_string(type) + " " + texts[0]);
    return TRUE;
}

BOOL WINAPI deregisterSource(HANDLE) { return --fakeSystem.openSources, TRUE; }

class EventLog : public xo::tests::LogTest {
protected:
    void SetUp() override {
        fakeSystem = {};
        ASSERT_TRUE(mRegister.isInstalled() && mReport.isInstalled() && mDeregister.isInstalled());
    }

    static std::vector<std::string> takeEvents() { return std::exchange(fakeSystem.events, {}); }

private:
    xo::tests::ImportHook mRegister{"xoSystem.dll", "RegisterEventSourceA", &registerSource};
    xo::tests::ImportHook mReport{"xoSystem.dll", "ReportEventA", &report};
    xo::tests::ImportHook mDeregister{"xoSystem.dll", "DeregisterEventSource", &deregisterSource};
};

TEST_F(EventLog, GetsEachTypeButDebugWhateverTheLogWants) {
    for (const xo::xoLogType type : {xo::xoLogDebug, xo::xoLogInfo, xo::xoLogWarning, xo::xoLogCritical}) {
        log().setLogTypeEnabled(type, false);
        xoLogObject(type, "net", xoLog::editPtr(), "my source") << "text";
    }
    xoLogObject(xo::xoLogInfo, nullptr, nullptr, "") << "caf\xC3\xA9";
    xoLog::WriteToSystemLog("text", static_cast<xo::xoLogType>(7), "net", "s");
    EXPECT_THAT(takeEvents(),
                ElementsAre("my source 4 text", "my source 2 text", "my source 1 text", "xoLog 4 caf\xE9", "s 4 text"));
    fakeSystem.refuses = true;
    xoLogObject(xo::xoLogCritical, nullptr, nullptr, "s") << "text";
    EXPECT_THAT(takeEvents(), IsEmpty());
    EXPECT_THAT(takeLines(), IsEmpty());
    EXPECT_EQ(fakeSystem.openSources, 0);
}

TEST_F(EventLog, TakesAtMost16384Bytes) {
    const auto reported = [](const std::string& message) {
        xoLog::WriteToSystemLog(message, xo::xoLogCritical, {}, "s");
        return takeEvents();
    };
    for (const std::size_t size : {16383u, 16384u, 16385u, 100000u})
        EXPECT_THAT(reported(std::string(size, 'x')),
                    ElementsAre("s 1 " + std::string((std::min)(size, std::size_t{16384}), 'x')));
    std::string wide;
    for (int i = 0; i < 5000; ++i) wide += "\xE6\x97\xA5";
    EXPECT_THAT(reported(wide), ElementsAre("s 1 " + std::string(5000, '?')))
        << "never lost, though not in the code page";
    EXPECT_THAT(reported(std::string("a\0b", 3)), ElementsAre("s 1 a b"));
}

}  // namespace
