#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "log/logFixture.h"
#include "support/importHook.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using xo::xoLog;
using xo::xoLogObject;

std::vector<std::string> events;  // "<source> <type> <text>"
std::string source;
bool refuses = false;
int openSources = 0;

HANDLE WINAPI registerSource(LPCSTR server, LPCSTR name) {
    EXPECT_EQ(server, nullptr);
    source = name;
    if (refuses) return nullptr;
    ++openSources;
    return reinterpret_cast<HANDLE>(1);
}

BOOL WINAPI report(HANDLE, WORD type, WORD category, DWORD id, PSID user, WORD count, DWORD size, LPCSTR* texts,
                   LPVOID data) {
    EXPECT_TRUE(category == 0 && id == 1 && !user && count == 1 && size == 0 && !data);
    events.push_back(source + " " + std::to_string(type) + " " + texts[0]);
    return TRUE;
}

BOOL WINAPI deregisterSource(HANDLE) {
    --openSources;
    return TRUE;
}

class EventLog : public xo::tests::LogTest {
protected:
    EventLog() {
        events.clear();
        refuses = false;
        openSources = 0;
    }
    void SetUp() override {
        ASSERT_TRUE(mRegister.isInstalled() && mReport.isInstalled() && mDeregister.isInstalled());
    }

    std::vector<std::string> takeEvents() { return std::exchange(events, {}); }

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
    EXPECT_THAT(takeLines(), IsEmpty());
    EXPECT_EQ(openSources, 0);
}

TEST_F(EventLog, TakesAtMost16384Bytes) {
    const std::string prefix = "s 1 ";
    const struct {
        std::size_t size;
        std::size_t kept;
    } rows[] = {{16383, 16383}, {16384, 16384}, {16385, 16384}, {100000, 16384}};
    for (const auto& row : rows) {
        xoLog::WriteToSystemLog(std::string(row.size, 'x'), xo::xoLogCritical, {}, "s");
        EXPECT_THAT(takeEvents(), ElementsAre(prefix + std::string(row.kept, 'x')));
    }
    std::string wide;
    for (int i = 0; i < 5000; ++i) wide += "\xE6\x97\xA5";
    xoLog::WriteToSystemLog(wide, xo::xoLogCritical, {}, "s");
    EXPECT_THAT(takeEvents(), ElementsAre(prefix + std::string(5000, '?')))
        << "never lost, though not in the code page";
    xoLog::WriteToSystemLog(std::string("a\0b", 3), xo::xoLogCritical, {}, "s");
    EXPECT_THAT(takeEvents(), ElementsAre(prefix + "a b"));
}

TEST_F(EventLog, IsSilentWhenTheSourceIsRefused) {
    refuses = true;
    xoLogObject(xo::xoLogCritical, nullptr, nullptr, "s") << "text";
    EXPECT_THAT(takeEvents(), IsEmpty());
}

}  // namespace
