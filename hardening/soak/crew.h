// Processes that are killed at any moment and started again, and a test that repeats that.
#ifndef XO_SOAK_CREW_H
#define XO_SOAK_CREW_H

#include <cstdio>
#include <memory>
#include <random>

#include "soak/soakBoard.h"
#include "support/child.h"
#include "support/temporaryFolder.h"
#include "threads/threadsFixture.h"

namespace xo::tests {

inline constexpr std::size_t kProcesses = 4;
inline constexpr std::size_t kThreads = SoakBoard::kThreads;
inline constexpr int kKills = 4;  // a round

// The processes of one round. Each has a number and cells of its own.
class Crew {
public:
    // The arguments take the number of the process and the name of the board.
    using Arguments = std::function<std::wstring(std::size_t process, const std::wstring& board)>;

    Crew(std::wstring program, Arguments arguments) : mProgram(std::move(program)), mArguments(std::move(arguments)) {
        for (Member& member : mMembers) start(member);
    }
    ~Crew() { killAll(); }

    // Lets one process do something, kills it and starts another in its place; returns the number of the killed one.
    std::size_t killOne() {
        Member& member = mMembers[mRandom() % kProcesses];
        const std::size_t process = member.process;
        EXPECT_TRUE(becomesTrue([&] { return sum(process, &SoakCell::done) != 0; })) << "nothing done since a kill";
        ::Sleep(mRandom() % 60);
        for (int i = 0; i < 1000 && sum(process, &SoakCell::held) == 0; ++i) ::SwitchToThread();
        member.child->kill();
        EXPECT_NE(member.child->wait(), -1);
        start(member);
        return process;
    }
    void killAll() {
        for (const Member& member : mMembers) member.child->kill();
        for (const Member& member : mMembers) EXPECT_NE(member.child->wait(), -1);
    }
    // For those that end by themselves.
    void awaitAll() {
        for (const Member& member : mMembers) EXPECT_EQ(member.child->wait(), 0);
    }

    void expectNoConflict() const {
        for (std::size_t i = 0; i < mStarted * kThreads; ++i)
            EXPECT_FALSE(SoakBoard::hasConflict(mBoard.cell(i))) << "two holders, one of them process " << i / kThreads;
    }
    std::int64_t done() const {
        std::int64_t all = 0;
        for (std::size_t process = 0; process < mStarted; ++process) all += sum(process, &SoakCell::done);
        return all;
    }
    std::size_t started() const { return mStarted; }
    const SoakBoard& board() const { return mBoard; }

private:
    struct Member {
        std::size_t process = 0;
        std::unique_ptr<Child> child;
    };

    void start(Member& member) {
        member.process = mStarted++;
        member.child = std::make_unique<Child>(mProgram, mArguments(member.process, mBoardName));
        EXPECT_EQ(member.child->error(), DWORD{ERROR_SUCCESS});
    }
    std::int64_t sum(std::size_t process, Shared SoakCell::*value) const {
        std::int64_t all = 0;
        for (std::size_t i = 0; i < kThreads; ++i) all += mBoard.cell(process * kThreads + i).*value;
        return all;
    }
    static std::wstring freshName() {
        static int count = 0;
        return L"xo_soak_" + std::to_wstring(::GetCurrentProcessId()) + L"_" + std::to_wstring(++count);
    }

    std::wstring mProgram;
    Arguments mArguments;
    std::wstring mBoardName = freshName();
    SoakBoard mBoard{mBoardName};
    std::size_t mStarted = 0;
    Member mMembers[kProcesses];
    std::mt19937 mRandom{std::random_device()()};
};

class KilledProcesses : public testing::Test {
protected:
    // How many were asked for, 0 by default.
    static double minutes() {
        wchar_t text[16]{};
        ::GetEnvironmentVariableW(L"XO_SOAK_MINUTES", text, 16);
        return std::wcstod(text, nullptr);
    }

    // So many times, or for this test's share of the minutes that were asked for.
    template <class Round>
    void repeat(int leastRounds, Round round) {
        const auto timeMs = static_cast<ULONGLONG>(minutes() * 60000 / kTests);
        const ULONGLONG start = ::GetTickCount64();
        int rounds = 0;
        while ((rounds < leastRounds || ::GetTickCount64() - start < timeMs) && !HasFailure()) {
            TemporaryFolder folder;
            round(folder);
            ++rounds;
        }
        std::printf("%d rounds, %d kills\n", rounds, rounds * kKills);
    }

    static constexpr int kTests = 6;
};

}  // namespace xo::tests

#endif
