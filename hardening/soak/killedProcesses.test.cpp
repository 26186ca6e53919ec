// Four processes of four threads each share something, and one of them is killed at any moment and started again, over
// and over: what it had done stays done, what it held becomes free, and what it was just doing hurts nobody.
#include <array>
#include <map>

#include "soak/crew.h"
#include "xoSystem/xoIniFile.h"
#include "xoSystem/xoLockFile.h"
#include "xoSystem/xoMutex.h"

namespace {

using namespace xo::tests;

// The whole lines of all files, each by process, thread and number, and how often it is there. What a kill has left of
// a line stands in front of the next one.
using Lines = std::map<std::array<int, 3>, int>;
Lines linesIn(const TemporaryFolder& folder, int& fragments) {
    const std::string head = "INFO(worker) : ", tail = " " + std::string(200, 'x') + "\r";
    Lines found;
    for (const auto& entry : std::filesystem::directory_iterator(folder.widePath())) {
        std::istringstream lines(folder.read(entry.path().filename().u8string()));
        for (std::string line; std::getline(lines, line);) {
            if (line.rfind("\xEF\xBB\xBF", 0) == 0) line.erase(0, 3);
            const std::size_t at = line.rfind(head);
            if (at != 0) ++fragments;
            if (at == std::string::npos) continue;
            std::array<int, 3> id{};
            int length = 0;
            std::sscanf(line.c_str() + at + head.size(), "%*24c process %d thread %d line %d%n", &id[0], &id[1], &id[2],
                        &length);
            if (line.substr(at + head.size() + static_cast<std::size_t>(length)) == tail)
                ++found[id];
            else
                ++fragments;
        }
    }
    return found;
}

TEST_F(KilledProcesses, LoseNoLineThatTheyHaveLogged) {
    repeat(2, [](const TemporaryFolder& folder) {
        // So few lines that all backups are kept.
        const std::wstring file = L"\"" + (folder.widePath() / L"shared.log").wstring() + L"\" ";
        Crew crew(L"logWriter", [&](std::size_t process, const std::wstring& board) {
            return file + std::to_wstring(process) + L" 4 220 " + board;
        });
        for (int i = 0; i < kKills; ++i) crew.killOne();
        crew.awaitAll();

        int fragments = 0;
        std::int64_t acknowledged = 0;
        for (const auto& [id, count] : linesIn(folder, fragments)) {
            const auto cell = static_cast<std::size_t>(id[0]) * kThreads + static_cast<std::size_t>(id[1]);
            const std::int64_t done = crew.board().cell(cell).done;
            EXPECT_EQ(count, 1) << id[0] << " " << id[1] << " " << id[2];
            EXPECT_LE(id[2], done) << "the last one may not have been acknowledged any more";
            acknowledged += id[2] < done;
        }
        EXPECT_EQ(acknowledged, crew.done());
        EXPECT_LE(fragments, kKills);
        EXPECT_TRUE(folder.has("shared.log_9.back")) << "the file was meant to rotate";
    });
}

TEST_F(KilledProcesses, GiveTheirLockFilesBack) {
    repeat(2, [](const TemporaryFolder& folder) {
        const std::string path = folder.path("x.lock");
        Crew crew(L"lockFileHolder", [&](std::size_t process, const std::wstring& board) {
            return L"\"" + (folder.widePath() / L"x.lock").wstring() + L"\" " + board + L" " +
                   std::to_wstring(process * kThreads);
        });
        for (int i = 0; i < kKills; ++i) crew.killOne();
        crew.killAll();
        crew.expectNoConflict();
        EXPECT_TRUE(xo::xoLockFile().takeLockUtf8(path));
    });
}

TEST_F(KilledProcesses, PassTheirMutexOn) {
    repeat(2, [](const TemporaryFolder&) {
        Crew crew(L"mutexHolder", [&](std::size_t process, const std::wstring& board) {
            return L"mutex_of_" + board + L" " + board + L" " + std::to_wstring(process * kThreads);
        });
        for (int i = 0; i < kKills; ++i) crew.killOne();
        crew.killAll();
        crew.expectNoConflict();
        EXPECT_GE(crew.board().total(), crew.done());
        EXPECT_LE(crew.board().total(), crew.done() + static_cast<std::int64_t>(crew.started() * kThreads));
    });
}

TEST_F(KilledProcesses, LeaveTheOldIniFileOrTheNewOne) {
    repeat(2, [](const TemporaryFolder& folder) {
        Crew crew(L"iniSaver", [&](std::size_t process, const std::wstring& board) {
            return L"\"" + folder.widePath().wstring() + L"\" " + board + L" " + std::to_wstring(process * kThreads);
        });
        for (int kill = 0; kill < kKills; ++kill) {
            const std::size_t first = crew.killOne() * kThreads;
            for (std::size_t cell = first; cell < first + kThreads; ++cell) {
                const std::int64_t done = crew.board().cell(cell).done;
                xo::xoVariant::xoVariantMapImpl values;
                const bool isThere = xo::LoadIniFile(folder.path(std::to_string(cell) + ".ini"), values);
                if (done != 0 || isThere) ASSERT_EQ(values.size(), 1000u) << "after save " << done;
                for (const auto& [key, value] : values) {
                    ASSERT_EQ(value, values.begin()->second) << key;
                    ASSERT_TRUE(value == done || value == done + 1) << key;
                }
            }
        }
    });
}

}  // namespace
