// Stamps, timers and the power poll against the calls that they cannot do without.
#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "families.h"
#include "platform/windows.h"
#include "xoSystem/xoCpuInfo.h"
#include "xoSystem/xoPowerStatus.h"
#include "xoSystem/xoStamp.h"
#include "xoSystem/xoSystemUtils.h"
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

void measureMachine(Suite& suite) {
    using Utils = xo::xoSystemUtils;
    static const xo::CPUInfo& cpu = xo::CPUInfo::Get();
#if defined(_MSC_VER)
    const Other other{"IsProcessorFeaturePresent", many([] { return ::IsProcessorFeaturePresent(40 /* AVX2 */); })};
#else
    const Other other{"__builtin_cpu_supports", many([] { return __builtin_cpu_supports("avx2"); })};
#endif
    suite.compare("util", "a feature of the processor", kCalls,
                  many([] { return cpu.hasFeature(xo::CPUInfo::FeatureAVX2); }), {other});
    constexpr int kAtOnce = Utils::ReportAll & ~(Utils::ReportGraphics | Utils::ReportVolumes | Utils::ReportDisks);
    suite.compare(
        "util", "report, what answers at once", 1, [] { keep(Utils::GetReport(kAtOnce)); },
        {{"limit: the firmware's tables, EnumDisplay...", [] {
              char tables[8192];
              keep(::GetSystemFirmwareTable('R' << 24 | 'S' << 16 | 'M' << 8 | 'B', 0, tables, sizeof tables));
              DISPLAY_DEVICEW display{};
              display.cb = sizeof display;
              for (DWORD i = 0; ::EnumDisplayDevicesW(nullptr, i, &display, 0); ++i) {
                  DEVMODEW mode{};
                  mode.dmSize = sizeof mode;
                  keep(::EnumDisplaySettingsExW(display.DeviceName, ENUM_CURRENT_SETTINGS, &mode, 0));
              }
          }}});
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
    measureMachine(suite);
    measureTimers(suite);
}

}  // namespace bench
