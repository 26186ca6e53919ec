// Each of these tests runs in a process of its own, in which the library has not been initialised yet.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <system_error>
#include <vector>

#include "support/importHook.h"
#include "support/logLines.h"
#include "xoSystem/xoSystem.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using xo::initializeXoSystem;
using xo::IsXoSystemThreadSafe;
using xo::terminateXoSystem;
using xo::xoLog;
using xo::tests::LogLines;

bool isUp() { return xoLog::editPtr() != nullptr && xo::xoStringUtils::GetCLocale() != nullptr; }

TEST(Lifecycle, EndsWithTheOutermostTermination) {
    for (const int type : {0, 3, -1}) initializeXoSystem(type, false);
    EXPECT_FALSE(isUp());
    for (int life = 0; life < 2; ++life) {
        initializeXoSystem(xo::InitTypeBasic);
        EXPECT_TRUE(isUp() && !IsXoSystemThreadSafe()) << "a refused call must not count";
        const xoLog* const log = xoLog::editPtr();
        initializeXoSystem(1);
        EXPECT_FALSE(IsXoSystemThreadSafe());
        initializeXoSystem(xo::InitTypeFull, false);
        EXPECT_TRUE(IsXoSystemThreadSafe());
        EXPECT_EQ(xo::concurrent::GetConcurrentPool().getWorkerCount(), xo::xoSystemUtils::GetProcessorCount());
        terminateXoSystem();
        initializeXoSystem(xo::InitTypeFull, false);
        terminateXoSystem();
        terminateXoSystem();
        EXPECT_TRUE(isUp() && IsXoSystemThreadSafe()) << "not the outermost termination";
        EXPECT_EQ(xoLog::editPtr(), log);
        terminateXoSystem();
        EXPECT_FALSE(isUp() || IsXoSystemThreadSafe());
    }
}

TEST(Lifecycle, CountsAnUnmatchedTermination) {
    terminateXoSystem();
    EXPECT_FALSE(isUp());
    initializeXoSystem(xo::InitTypeBasic);
    EXPECT_FALSE(isUp()) << "only back at zero";
    initializeXoSystem(xo::InitTypeBasic);
    EXPECT_TRUE(isUp());
    for (int i = 0; i < 2; ++i) terminateXoSystem();
    initializeXoSystem(xo::InitTypeFull, false);
    EXPECT_TRUE(IsXoSystemThreadSafe() && !isUp()) << "the full level comes up even then";
    const xo::xoMutex mutex;
    initializeXoSystem(xo::InitTypeBasic);
    EXPECT_TRUE(isUp());
    EXPECT_TRUE(IsXoSystemThreadSafe()) << "the level never falls before the end";
    terminateXoSystem();
    EXPECT_FALSE(IsXoSystemThreadSafe());
}

int refusedThreads = 0;
std::uintptr_t beginThread(void* security, unsigned stackSize, unsigned(__stdcall* function)(void*), void* argument,
                           unsigned flags, unsigned* id) {
    if (refusedThreads > 0) return --refusedThreads, 0;
    return xo::tests::ImportHook::behind(&beginThread)(security, stackSize, function, argument, flags, id);
}

TEST(Lifecycle, HasAPoolOfTheThreadsThatCanBeStarted) {
    const xo::tests::ImportHook hook("xoSystem.dll", "_beginthreadex", &beginThread);
    ASSERT_TRUE(hook.isInstalled());
    ::SetEnvironmentVariableW(L"NUMBER_OF_PROCESSORS", L"8");
    for (const auto& [refused, workers] : {std::pair{1, 4u}, {3, 1u}}) {
        refusedThreads = refused;
        initializeXoSystem(xo::InitTypeFull);
        EXPECT_EQ(xo::concurrent::GetConcurrentPool().getWorkerCount(), workers);
        terminateXoSystem();
    }
    EXPECT_THROW(xo::concurrent::GetConcurrentPool(), std::system_error);
    refusedThreads = 100;
    EXPECT_THROW(initializeXoSystem(xo::InitTypeFull), std::system_error);
    EXPECT_THROW(xo::concurrent::GetConcurrentPool(), std::system_error);
    terminateXoSystem();
}

TEST(Lifecycle, KeepsAndFinallyDestroysTheHostsLog) {
    xoLog::createInstance(false);
    const xoLog* const present = xoLog::editPtr();
    LogLines log;
    log.collect();
    xoLog::createInstance(true);
    initializeXoSystem(xo::InitTypeFull);
    EXPECT_EQ(xoLog::editPtr(), present);
    xo::xoLogObject(xo::xoLogInfo) << "kept";
    EXPECT_THAT(log.take(), ElementsAre("1()kept")) << "its own locks say nothing either";
    terminateXoSystem();
    EXPECT_EQ(xoLog::editPtr(), nullptr);
}

TEST(Lifecycle, WarnsOncePerLockMadeTooEarly) {
    { const xo::xoMutex withoutALog; }
    const std::string mutexLine = "3()Mutex created before full init of xoSystem";
    const std::string conditionLine = "3()WaitCondition created before full init of xoSystem";
    xoLog::createInstance(true);
    LogLines log;
    log.collect();
    EXPECT_THAT(log.take(), IsEmpty());

    { const xo::xoMutex mutex; }
    EXPECT_THAT(log.take(), ElementsAre(mutexLine));
    { const xo::xoMutex2 mutex; }
    EXPECT_THAT(log.take(), ElementsAre(mutexLine));
    { const xo::xoMutexSystem mutex("xo early"); }
    EXPECT_THAT(log.take(), ElementsAre(mutexLine));
    { const xo::xoWaitCondition condition; }
    EXPECT_THAT(log.take(), ElementsAre(conditionLine));
    initializeXoSystem(xo::InitTypeBasic);
    { const xo::xoSemaphore semaphore(1); }
    EXPECT_THAT(log.take(), ElementsAre(mutexLine, conditionLine));
    xoLog::edit().setLogTypeEnabled(xo::xoLogCritical, false);
    { const xo::xoMutex mutex; }
    xoLog::edit().setLogTypeEnabled(xo::xoLogCritical, true);

    initializeXoSystem(xo::InitTypeFull);
    { const xo::xoSemaphore semaphore(1); }
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST(LibInitCounter, CountsWithoutAFloor) {
    xo::impl::LibInitCounter counter(nullptr);
    EXPECT_FALSE(counter.isInitialized());
    EXPECT_TRUE(counter.incrementInitCounter());
    EXPECT_FALSE(counter.incrementInitCounter() || counter.decrementInitCounter());
    EXPECT_TRUE(counter.decrementInitCounter());
    EXPECT_FALSE(counter.decrementInitCounter());
    EXPECT_TRUE(counter.getInitCounter() == -1 && counter.isInitialized());
    EXPECT_FALSE(counter.incrementInitCounter());
    const xo::impl::LibInitCounter copy(counter);
    counter.incrementInitCounter();
    counter.clearInitCounter();
    EXPECT_FALSE(counter.isInitialized());
    EXPECT_EQ(copy.getInitCounter(), 0);
}

template <class Vector>
std::vector<std::uint32_t> lanes(const Vector& vector) {
    std::vector<std::uint32_t> lanes(4);
    std::memcpy(lanes.data(), &vector, sizeof vector);
    return lanes;
}

TEST(VectorConstants, HoldWhatTheirNamesSay) {
    constexpr std::uint32_t kAll = 0xFFFFFFFF;
    EXPECT_THAT(lanes(xo::sSSE_FF_FF_FF_FF), ElementsAre(0, 0, 0, 0)) << "before initialisation";
    initializeXoSystem(xo::InitTypeBasic);
    // One digit per lane, the lowest lane first.
    const std::pair<const __m128*, const char*> masks[] = {
        {&xo::sSSE_FF_FF_FF_FF, "1111"}, {&xo::sSSE_0_FF_FF_FF, "1110"}, {&xo::sSSE_FF_0_FF_FF, "1101"},
        {&xo::sSSE_FF_FF_0_FF, "1011"},  {&xo::sSSE_FF_FF_FF_0, "0111"}, {&xo::sSSE_FF_FF_0_0, "0011"},
        {&xo::sSSE_FF_0_0_0, "0001"},    {&xo::sSSE_0_FF_0_0, "0010"},   {&xo::sSSE_0_0_FF_0, "0100"},
        {&xo::sSSE_0_0_0_FF, "1000"},
    };
    for (const auto& [mask, digits] : masks)
        for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(lanes(*mask)[i], digits[i] == '1' ? kAll : 0) << digits;

    // Compilers differ in the initialisers of integers and of mixed lanes.
    EXPECT_THAT(lanes(xo::sSSEThreeI), ElementsAre(3, 3, 3, 3));
    EXPECT_THAT(lanes(xo::sSSERedI), ElementsAre(255, 0, 0, 255));
    EXPECT_THAT(lanes(xo::sSSEHalfWhiteI), ElementsAre(127, 127, 127, 255));
    EXPECT_THAT(lanes(xo::sSSE_ALL_BIT_ONE), ElementsAre(kAll, kAll, kAll, kAll));
    EXPECT_THAT(lanes(xo::sSSESignBitMask), ElementsAre(0x80000000, 0x80000000, 0x80000000, 0x80000000));
    EXPECT_EQ(lanes(xo::sSSEMaskRound), lanes(xo::sSSEMaskRoundFloat));
    EXPECT_THAT(lanes(xo::sSSEFirst), ElementsAre(0x3F800000, 0, 0, 0));
}

}  // namespace
