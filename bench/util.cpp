// Stamps, timers and the power poll against the calls that they cannot do without.
#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "families.h"
#include "platform/windows.h"
#include "xoSystem/xoPowerStatus.h"
#include "xoSystem/xoStamp.h"
#include "xoSystem/xoTimer.h"

namespace bench {
namespace {

constexpr int kCalls = 100;

// One call is too short for a sample of its own.
template <class Call>
std::function<void()> many(Call call) {
    return [call] {
        for (int i = 0; i < kCalls; ++i) keep(call());
    };
}

template <class Call>
std::function<void()> onEightThreads(int callsEach, Call call) {
    return [=] {
        std::vector<std::thread> threads;
        for (int t = 0; t < 8; ++t)
            threads.emplace_back([=] {
                for (int i = 0; i < callsEach; ++i) keep(call());
            });
        for (std::thread& thread : threads) thread.join();
    };
}

void measureStamps(Suite& suite) {
    static xo::StampGenerator stamps;
    static std::atomic<std::uint64_t> counter{1};
    const auto ours = [] { return stamps.generateStamp(); };
    const auto limit = [] { return counter.fetch_add(1, std::memory_order_relaxed); };
    suite.compare("util", "stamp", kCalls, many(ours), {{"limit: atomic increment", many(limit)}});
    constexpr int kEach = 100'000;
    suite.compare("util", "stamp, eight threads", 8.0 * kEach, onEightThreads(kEach, ours),
                  {{"limit: atomic increment", onEightThreads(kEach, limit)}});
}

void measureTimers(Suite& suite) {
    static const xo::xoTimer timer(/*snapNow=*/true);
    static xoHighResTimer fineTimer;
    fineTimer.start();
    const Other ticks{"limit: GetTickCount64", many([] { return ::GetTickCount64(); })};
    const Other standard{"std::chrono::steady_clock", many([] { return std::chrono::steady_clock::now(); })};
    suite.compare("util", "timer, reading", kCalls, many([] { return timer.getElapsedMs(); }), {standard, ticks});
    suite.compare("util", "fine timer, reading", kCalls, many([] { return fineTimer.getElapsedTimeInMicroSec(); }),
                  {standard, {"limit: QueryPerformanceCounter", many([] {
                                  LARGE_INTEGER count;
                                  ::QueryPerformanceCounter(&count);
                                  return count.QuadPart;
                              })}});

    static xo::xoPowerStatusReader power(/*intervalMs=*/INT64_MAX);
    suite.compare("util", "power poll inside the interval", kCalls, many([] { return power.getPowerStatus().mAcLine; }),
                  {{"GetSystemPowerStatus", many([] {
                        SYSTEM_POWER_STATUS status;
                        return ::GetSystemPowerStatus(&status);
                    })},
                   ticks});
}

}  // namespace

void measureUtil(Suite& suite) {
    if (!suite.wants("util")) return;
    measureStamps(suite);
    measureTimers(suite);
}

}  // namespace bench
