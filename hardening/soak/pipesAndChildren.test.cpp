// Peers of pipes and children of processes are killed at any moment: what was answered has arrived exactly once, and
// nothing of theirs is left in this process.
#include <map>
#include <optional>
#include <thread>

#include "platform/slimLock.h"
#include "soak/crew.h"
#include "support/openHandles.h"
#include "xoSystem/xoNamedPipe.h"
#include "xoSystem/xoProcess.h"

#include <tlhelp32.h>

namespace {

using namespace xo::tests;

using xo::xoNamedPipe;
using xo::xoNamedPipeServer;
using xo::xoProcess;

// What this process has: handles, threads and memory.
struct Holdings {
    int handles = openHandles();
    int threads = countThreads();
    std::uint64_t bytes = xoProcess().getCurrentRamInUse();
    std::wstring kinds = handleKinds();  // for the message

    static int countThreads() {
        const xo::platform::FileHandle snapshot(::CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0));
        THREADENTRY32 entry{};
        entry.dwSize = sizeof entry;
        int count = 0;
        for (BOOL found = ::Thread32First(snapshot.get(), &entry); found;
             found = ::Thread32Next(snapshot.get(), &entry))
            count += entry.th32OwnerProcessID == ::GetCurrentProcessId() ? 1 : 0;
        return count;
    }
};

// Empty when there are no more handles and threads than before. Those of children that have just ended may be there for
// a moment longer.
std::wstring growthSince(const Holdings& before) {
    if (becomesTrue([&] { return openHandles() <= before.handles && Holdings::countThreads() <= before.threads; }))
        return {};
    return handleKinds() + L" instead of " + before.kinds + L", " + std::to_wstring(Holdings::countThreads()) +
           L" threads instead of " + std::to_wstring(before.threads) + L"\n";
}

void expectNoMoreMemory(const Holdings& before) { EXPECT_LT(Holdings().bytes, before.bytes + (4 << 20)); }

// Compares what this process has after each round. A leak adds to it each time. What the system or the runtime makes
// once and keeps, for instance the event of a lock at which threads have met, may come in any round.
class Level {
public:
    static constexpr int kLeastRounds = 4;

    void look() {
        if (mFirst) {
            const std::wstring growth = growthSince(*mLast);
            expectNoMoreMemory(*mFirst);
            mGrowths += growth;
            if (!growth.empty()) EXPECT_LT(++mGrown, kLeastRounds - 1) << mGrowths;
            if (growth.empty()) return;
        } else {
            mFirst.emplace();  // from the second round on nothing is new
        }
        mLast.emplace();
    }

private:
    std::optional<Holdings> mFirst, mLast;
    std::wstring mGrowths;
    int mGrown = 0;
};

// Answers everybody, each in a thread of its own, and keeps what it was asked.
class Collector {
public:
    explicit Collector(const std::string& name) {
        EXPECT_TRUE(mServer.listenUtf8(name));
        mAcceptor = std::thread([this] {
            xoNamedPipe peer;
            while (mServer.waitForConnection(peer))
                mThreads.emplace_back([this, pipe = std::move(peer)]() mutable { answer(pipe); });
        });
    }
    // Once no client is left.
    void stop() {
        mServer.close();
        mAcceptor.join();
        for (std::thread& thread : mThreads) thread.join();
    }
    // How often each number of a cell has arrived.
    std::map<std::int64_t, int> numbersOf(std::size_t cell) {
        const xo::platform::SlimLocker locker(mLock);
        return mNumbers[cell];
    }

private:
    void answer(xoNamedPipe& pipe) {
        std::string question;
        while (pipe.readMessage(question)) {
            unsigned cell = 0, number = 0;
            std::sscanf(question.c_str(), "%u %u", &cell, &number);
            {
                const xo::platform::SlimLocker locker(mLock);
                ++mNumbers[cell][number];
            }
            if (!pipe.writeMessage(std::to_string(cell) + " " + std::to_string(number))) return;
        }
    }

    xoNamedPipeServer mServer;
    // Not std::mutex: that of libwinpthread keeps an event for ever once threads have met at it.
    xo::platform::SlimLock mLock;
    std::map<std::size_t, std::map<std::int64_t, int>> mNumbers XO_GUARDED_BY(mLock);  // by cell
    std::vector<std::thread> mThreads;
    std::thread mAcceptor;
};

TEST_F(KilledProcesses, HaveSaidWhatWasAnswered) {
    const std::string name = "xo-soak-" + std::to_string(::GetCurrentProcessId());
    Level level;
    repeat(Level::kLeastRounds, [&](const TemporaryFolder&) {
        Collector collector(name);
        {
            Crew crew(L"pipeTalker", [&](std::size_t process, const std::wstring& board) {
                return std::wstring(name.begin(), name.end()) + L" " + board + L" " +
                       std::to_wstring(process * kThreads);
            });
            for (int i = 0; i < kKills; ++i) crew.killOne();
            crew.killAll();
            collector.stop();
            for (std::size_t cell = 0; cell < crew.started() * kThreads; ++cell) {
                const std::int64_t done = crew.board().cell(cell).done;
                const auto numbers = collector.numbersOf(cell);
                EXPECT_LE(numbers.size(), static_cast<std::size_t>(done) + 1) << "the last one may not be answered";
                for (std::int64_t number = 1; number <= done; ++number)
                    ASSERT_EQ(numbers.count(number) ? numbers.at(number) : 0, 1) << cell << ": " << number;
            }
        }
        level.look();
    });
}

TEST_F(KilledProcesses, LeaveNothingInTheirParent) {
    xo::xoLog::createInstance(false);  // whose lines of failed starts go nowhere
    xo::xoLog::edit().setEchoToConsole(false);
    std::string folder;
    ASSERT_TRUE(xo::xoDirUtils::GetFolderOfCurrentProcessUtf8(folder));
    const std::string program = folder + "\\streamChild.exe";
    std::mt19937 random{std::random_device()()};
    const auto runAndKill = [&](int count) {
        for (int i = 0; i < count; ++i) {
            xoProcess child;
            child.setProcessTree(xoProcess::ProcessTreeOwned);
            child.setInput(xoProcess::Input::Text(std::string(300000, 'x')));
            child.setOutput(xoProcess::Output::Text());
            child.setErrorOutput(xoProcess::Output::Text(1000));
            ASSERT_TRUE(child.startProcess(program, {"e100000", "echo", "sleep"}));
            child.waitForFinished(random() % 40);
            child.killProcess();
            ASSERT_TRUE(child.waitForFinished(60000));
            EXPECT_EQ(child.getOutputText(), std::string(child.getOutputText().size(), 'x'));
            child.setOutput(xoProcess::Output::FileUtf8(""));
            EXPECT_FALSE(child.startProcess(program, {}));
        }
    };
    const auto connect = [&](int count) {
        xoNamedPipeServer server;
        ASSERT_TRUE(server.listenUtf8("xo-soak-level"));
        xoNamedPipe peer;
        for (int i = 0; i < count; ++i) {
            xoNamedPipe client;
            ASSERT_TRUE(client.connectUtf8("xo-soak-level", 60000) && server.waitForConnection(peer, 60000));
            EXPECT_TRUE(client.writeMessage("x"));
        }
    };
    runAndKill(5);
    connect(5);
    const Holdings before;
    runAndKill(minutes() > 0 ? 200 : 30);
    connect(minutes() > 0 ? 1000 : 200);
    EXPECT_EQ(growthSince(before), L"");
    expectNoMoreMemory(before);
    xo::xoLog::destroyInstance();
}

}  // namespace
