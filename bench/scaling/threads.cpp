// Queues that grow long, and everything that several threads share, with one to sixteen of them.
#include <chrono>
#include <memory>
#include <mutex>
#include <thread>

#include "countingWorker.h"
#include "series.h"
#include "xoSystem/xoConcurrentPool.h"
#include "xoSystem/xoLog.h"
#include "xoSystem/xoMutex.h"
#include "xoSystem/xoSemaphore.h"
#include "xoSystem/xoStamp.h"

namespace bench {
namespace {

double nowNs() {
    return std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// Each of the threads does its share of the items. Returns the time from when all are there to when all are done:
// making threads is not what is measured.
template <class Item>
double inThreads(int count, std::size_t items, const Item& item) {
    xo::xoSemaphore ready(0), go(0), done(0);
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i)
        threads.emplace_back([&, share = items / static_cast<std::size_t>(count)] {
            ready.release();
            go.acquire();
            for (std::size_t j = 0; j != share; ++j) item();
            done.release();
        });
    for (int i = 0; i < count; ++i) ready.acquire();
    const double start = nowNs();
    for (int i = 0; i < count; ++i) go.release();
    for (int i = 0; i < count; ++i) done.acquire();
    const double end = nowNs();
    for (std::thread& thread : threads) thread.join();
    return end - start;
}

class Task final : public xo::ConcurrentPool::SolverBase {
    void solve(xo::xoMutex*, xo::xoWaitCondition*) override { ++mSolved; }
    int mSolved = 0;
};

struct TaskList {
    explicit TaskList(std::size_t size) : tasks(size) {
        for (Task& task : tasks) list.push_back(&task);
    }
    std::vector<Task> tasks;
    std::vector<xo::ConcurrentPool::SolverBase*> list;
};

void scaleQueues(Series& series) {
    series.measure(
        "threads", "pool, tasks of one list",
        [](std::size_t size) -> Run {
            return
                [tasks = std::make_shared<TaskList>(size)] { xo::concurrent::GetConcurrentPool().solve(tasks->list); };
        },
        1'000'000);
    series.measure("threads", "work thread, jobs at once", [](std::size_t size) -> Run {
        return [size, worker = std::make_shared<CountingWorker>()] { worker->doJobs(size); };
    });
}

void scaleSharing(Series& series, const Workplace& place) {
    constexpr std::size_t kMany = 1 << 20, kSome = 1 << 16, kFew = 1 << 13;
    series.measureThreads("threads", "stamps", kMany, [](int threads) {
        static xo::StampGenerator stamps;
        return inThreads(threads, kMany, [] { keep(stamps.generateStamp()); });
    });
    series.measureThreads("threads", "xoMutex, lock and unlock", kSome, [](int threads) {
        xo::xoMutex mutex;
        return inThreads(threads, kSome, [&]() XO_NO_THREAD_SAFETY_ANALYSIS {
            mutex.lock();
            mutex.unlock();
        });
    });
    series.measureThreads("threads", "std::mutex, lock and unlock", kSome, [](int threads) {
        std::mutex mutex;
        return inThreads(threads, kSome, [&] { const std::lock_guard<std::mutex> lock(mutex); });
    });
    series.measureThreads("threads", "log, a line to an open file", kFew, [&](int threads) {
        xo::xoLog::edit().installFileHandlerExUtf8(place.file("app.log"), xo::xoLogFileKeepOpen, -1, 0);
        const double ns = inThreads(threads, kFew, [] { xo::xoLogObject(xo::xoLogInfo) << "a line of the log"; });
        xo::xoLog::edit().removeFileHandler();
        return ns;
    });
    series.measureThreads("threads", "work thread, jobs from threads", kFew, [](int threads) {
        CountingWorker worker;
        worker.expect(kFew);
        const double ns = inThreads(threads, kFew, [&] {
            worker.beginWake();
            worker.post();
            worker.endWake();
        });
        worker.await();
        return ns;
    });
    series.measureThreads("threads", "pool, tasks for so many workers", kSome, [](int threads) {
        xo::ConcurrentPool pool(static_cast<unsigned>(threads));
        TaskList tasks(kSome);
        pool.solve(tasks.list);  // starts the workers
        const double start = nowNs();
        pool.solve(tasks.list);
        return nowNs() - start;
    });
}

}  // namespace

void scaleThreads(Series& series, const Workplace& place) {
    scaleQueues(series);
    scaleSharing(series, place);
}

}  // namespace bench
