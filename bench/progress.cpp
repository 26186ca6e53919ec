// Progress: what a step costs, beside a loop that only counts.
#include <atomic>
#include <thread>
#include <vector>

#include "families.h"
#include "xoSystem/xoProgress.h"

namespace bench {
namespace {

constexpr int kSteps = 100'000;
constexpr const char* kLimit = "limit: one add";

void countOnly() {
    std::uint64_t count = 0;
    for (int i = 0; i < kSteps; ++i) keep(++count);
}

std::function<void()> steps(xo::xoProgressNotifier* notifier) {
    return [notifier] {
        xo::xoProgressScope scope(notifier, kSteps);
        for (int i = 0; i < kSteps; ++i) keep(scope.advance());
    };
}

void measureSteps(Suite& suite) {
    static xo::xoProgressNotifier silent;
    static xo::xoProgressNotifier called(/*intervalMs=*/100);
    suite.compare("progress", "advance, nobody looks", kSteps, steps(nullptr), {{kLimit, countOnly}});
    suite.compare("progress", "advance, without calls", kSteps, steps(&silent), {{kLimit, countOnly}});
    suite.compare("progress", "advance, with calls", kSteps, steps(&called), {{kLimit, countOnly}});
    suite.compare("progress", "isCanceled", kSteps,
                  [] {
                      for (int i = 0; i < kSteps; ++i) keep(silent.isCanceled());
                  },
                  {{kLimit, countOnly}});
}

void measureScopes(Suite& suite) {
    static xo::xoProgressNotifier notifier;
    constexpr int kCalls = 1000;
    const auto many = [](auto call) {
        return [call] {
            for (int i = 0; i < kCalls; ++i) call();
        };
    };
    const Other limit{"limit: a static atomic, twice", many([] {
                          static std::atomic<int> counter;
                          ++counter;
                          --counter;
                      })};
    static xo::xoProgressScope outer(&notifier, 1, "outer");
    suite.compare("progress", "a scope's begin and end", kCalls, many([] { xo::xoProgressScope(&notifier, 10); }),
                  {limit});
    static const std::string text(40, 'x');
    suite.compare("progress", "setText, 40 bytes", kCalls, many([] { outer.setText(text); }), {limit});
    static xo::xoProgressScope second(&notifier, 4, "second", xo::ProgressUnitBytes), third(&notifier, 4),
        fourth(&notifier, 4);
    suite.compare("progress", "getState, depth 4", kCalls, many([] { keep(notifier.getState().fraction); }), {limit});
}

void measureTasks(Suite& suite) {
    const auto run = [](int threadCount) {
        return [threadCount] {
            static xo::xoProgressNotifier notifier;
            xo::xoProgressProxy proxy(&notifier, static_cast<std::uint64_t>(threadCount));
            std::vector<std::thread> threads;
            for (int t = 0; t < threadCount; ++t)
                threads.emplace_back([&proxy] {
                    xo::xoProgressProxy::Task task(proxy);
                    xo::xoProgressScope scope(&task, 1'000'000);
                    for (int i = 0; i < 1'000'000; ++i) keep(scope.advance());
                });
            for (std::thread& thread : threads) thread.join();
        };
    };
    suite.compare("progress", "a million steps in each of two threads", 1, run(2),
                  {{"the same in one thread", run(1)}});
}

}  // namespace

void measureProgress(Suite& suite) {
    if (!suite.wants("progress")) return;
    measureSteps(suite);
    measureScopes(suite);
    measureTasks(suite);
}

}  // namespace bench
