// Locks, hand-overs between threads, work threads and the pool against the standard library and the system's own calls.
#include <concurrentqueue/blockingconcurrentqueue.h>

#include <condition_variable>
#include <functional>
#include <mutex>
#include <queue>
#include <thread>

#include "countingWorker.h"
#include "families.h"
#include "platform/handle.h"
#include "xoSystem/xoSystem.h"

namespace bench {
namespace {

struct Section {
    Section() { ::InitializeCriticalSection(&section); }
    ~Section() { ::DeleteCriticalSection(&section); }
    void lock() { ::EnterCriticalSection(&section); }
    void unlock() { ::LeaveCriticalSection(&section); }
    CRITICAL_SECTION section;
};

void measureLock(Suite& suite) {
    static xo::xoMutex ours;
    static std::mutex standard;
    static Section section;
    constexpr int kRounds = 100;
    const auto rounds = [](auto& lock) XO_NO_THREAD_SAFETY_ANALYSIS {
        for (int i = 0; i < kRounds; ++i) {
            lock.lock();
            lock.unlock();
        }
    };
    suite.compare("threads", "lock and unlock", kRounds, [=] { rounds(ours); },
                  {{"std::mutex", [=] { rounds(standard); }}, {"limit: critical section", [=] { rounds(section); }}});
}

// A lock and a condition for either direction, three times with one face.
enum Direction { kThere, kBack };

struct OurPair {
    void lock() XO_NO_THREAD_SAFETY_ANALYSIS { mutex.lock(); }
    void unlock() XO_NO_THREAD_SAFETY_ANALYSIS { mutex.unlock(); }
    void wait(Direction to) XO_NO_THREAD_SAFETY_ANALYSIS { conditions[to].wait(&mutex); }
    void wake(Direction to) { conditions[to].wakeOne(); }
    xo::xoMutex mutex;
    xo::xoWaitCondition conditions[2];
};

struct StandardPair {
    void lock() { mutex.lock(); }
    void unlock() { mutex.unlock(); }
    void wait(Direction to) {
        std::unique_lock<std::mutex> held(mutex, std::adopt_lock);
        conditions[to].wait(held);
        held.release();
    }
    void wake(Direction to) { conditions[to].notify_one(); }
    std::mutex mutex;
    std::condition_variable conditions[2];
};

struct NativePair : Section {
    void wait(Direction to) { ::SleepConditionVariableCS(&conditions[to], &section, INFINITE); }
    void wake(Direction to) { ::WakeConditionVariable(&conditions[to]); }
    CONDITION_VARIABLE conditions[2] = {CONDITION_VARIABLE_INIT, CONDITION_VARIABLE_INIT};
};

// Two threads that wake each other in turn.
template <class Pair>
class PingPong {
public:
    PingPong() : mPartner([this] { answer(); }) {}
    ~PingPong() {
        mPair.lock();
        mStop = true;
        mPair.wake(kThere);
        mPair.unlock();
        mPartner.join();
    }

    void round() {
        mPair.lock();
        mBall = true;
        mPair.wake(kThere);
        while (mBall) mPair.wait(kBack);
        mPair.unlock();
    }

private:
    void answer() {
        mPair.lock();
        while (!mStop) {
            if (!mBall) {
                mPair.wait(kThere);
                continue;
            }
            mBall = false;
            mPair.wake(kBack);
        }
        mPair.unlock();
    }

    Pair mPair;
    bool mBall = false;
    bool mStop = false;
    std::thread mPartner;
};

void measureRoundTrip(Suite& suite, const char* name) {
    PingPong<OurPair> ours;
    PingPong<StandardPair> standard;
    PingPong<NativePair> native;
    suite.compare("threads", name, 1, [&] { ours.round(); },
                  {{"std::condition_variable", [&] { standard.round(); }},
                   {"limit: native condition variable", [&] { native.round(); }}});
}

void measureSemaphore(Suite& suite) {
    xo::xoSemaphore there(0);
    xo::xoSemaphore back(0);
    const xo::platform::KernelHandle kernelThere(::CreateSemaphoreW(nullptr, 0, 1000, nullptr));
    const xo::platform::KernelHandle kernelBack(::CreateSemaphoreW(nullptr, 0, 1000, nullptr));
    std::atomic<bool> stop{false};
    std::thread ours([&] {
        for (;;) {
            there.acquire();
            if (stop) return;
            back.release();
        }
    });
    std::thread kernel([&] {
        for (;;) {
            ::WaitForSingleObject(kernelThere.get(), INFINITE);
            if (stop) return;
            ::ReleaseSemaphore(kernelBack.get(), 1, nullptr);
        }
    });
    suite.compare("threads", "semaphore, there and back", 1,
                  [&] {
                      there.release();
                      back.acquire();
                  },
                  {{"kernel semaphore", [&] {
                        ::ReleaseSemaphore(kernelThere.get(), 1, nullptr);
                        ::WaitForSingleObject(kernelBack.get(), INFINITE);
                    }}});
    stop = true;
    there.release();
    ::ReleaseSemaphore(kernelThere.get(), 1, nullptr);
    ours.join();
    kernel.join();
}

// What a user writes with the standard library.
class StandardWorker {
public:
    ~StandardWorker() {
        {
            const std::lock_guard<std::mutex> lock(mMutex);
            mStop = true;
        }
        mWake.notify_one();
        mThread.join();
    }

    void doJobs(int count) {
        std::unique_lock<std::mutex> lock(mMutex);
        mLeft = count;
        for (int i = 0; i < count; ++i) mQueue.push([this] { --mLeft; });
        mWake.notify_one();
        mDone.wait(lock, [this] { return mLeft == 0; });
    }

private:
    void run() {
        std::unique_lock<std::mutex> lock(mMutex);
        for (;;) {
            mWake.wait(lock, [this] { return mStop || !mQueue.empty(); });
            if (mStop) return;
            const std::function<void()> job = std::move(mQueue.front());
            mQueue.pop();
            lock.unlock();
            job();
            lock.lock();
            if (mLeft == 0) mDone.notify_one();
        }
    }

    std::mutex mMutex;
    std::condition_variable mWake;
    std::condition_variable mDone;
    std::queue<std::function<void()>> mQueue;
    std::atomic<int> mLeft{0};
    bool mStop = false;
    std::thread mThread{[this] { run(); }};
};

// A queue without locks that a user may fetch instead; its own semaphores spin for a while before they wait.
class MoodycamelWorker {
public:
    ~MoodycamelWorker() {
        mQueue.enqueue(mToken, nullptr);
        mThread.join();
    }

    void doJobs(int count) {
        mLeft = count;
        for (int i = 0; i < count; ++i)
            mQueue.enqueue(mToken, [this] {
                if (--mLeft == 0) mDone.signal();
            });
        mDone.wait();
    }

private:
    void run() {
        moodycamel::ConsumerToken token(mQueue);
        for (;;) {
            std::function<void()> job;
            mQueue.wait_dequeue(token, job);
            if (!job) return;
            job();
        }
    }

    moodycamel::BlockingConcurrentQueue<std::function<void()>> mQueue;
    moodycamel::ProducerToken mToken{mQueue};
    moodycamel::LightweightSemaphore mDone;
    std::atomic<int> mLeft{0};
    std::thread mThread{[this] { run(); }};
};

void measureJobs(Suite& suite) {
    CountingWorker ours;
    StandardWorker standard;
    MoodycamelWorker moodycamel;
    constexpr int kBatch = 1000;
    const auto compare = [&](const char* name, int jobs) {
        suite.compare("threads", name, jobs, [&] { ours.doJobs(static_cast<std::size_t>(jobs)); },
                      {{"std queue, mutex, conditions", [&] { standard.doJobs(jobs); }},
                       {"moodycamel, blocking queue", [&] { moodycamel.doJobs(jobs); }}});
    };
    compare("job, submitted and awaited", 1);
    compare("job, in batches of 1000", kBatch);
}

class SmallTask final : public xo::ConcurrentPool::SolverBase {
    void solve(xo::xoMutex*, xo::xoWaitCondition*) override { ++mSolved; }
    int mSolved = 0;
};

void measurePool(Suite& suite) {
    constexpr std::size_t kTasks = 1000;
    static std::vector<SmallTask> tasks(kTasks);
    static std::vector<xo::ConcurrentPool::SolverBase*> list;
    for (SmallTask& task : tasks) list.push_back(&task);
    StandardWorker standard;
    suite.compare("threads", "pool, 1000 small tasks, a task", kTasks,
                  [] { xo::concurrent::GetConcurrentPool().solve(list); },
                  {{"std queue, mutex, conditions", [&] { standard.doJobs(kTasks); }}});
}

class EmptyThread final : public xo::xoThread {
public:
    ~EmptyThread() override { waitThread(INT_MAX); }

private:
    void run() override {}
};

void measureThread(Suite& suite) {
    suite.compare("threads", "thread, start and join", 1,
                  [] {
                      EmptyThread thread;
                      thread.startThread("bench");
                      thread.waitThread(INT_MAX);
                  },
                  {{"std::thread", [] { std::thread([] {}).join(); }}});
}

int calls = 0;

__declspec(noinline) void countCall() {
    ++calls;
    keep(calls);
}

void writeToNull() { *static_cast<volatile int*>(nullptr) = 1; }

void surviveFault() {
    try {
        xo::exception::impl::ExecGuardedCode(&writeToNull);
    } catch (const std::exception&) {
        ++calls;
    }
}

void captureAddresses() {
    void* frames[62];
    keep(::CaptureStackBackTrace(0, 62, frames, nullptr));
}

void measureGuard(Suite& suite) {
    suite.compare("threads", "guarded call that succeeds", 1, [] { xo::exception::impl::ExecGuardedCode(&countCall); },
                  {{"plain call", [] { countCall(); }}});
    suite.compare("threads", "crash report", 1, &surviveFault, {{"limit: captured addresses", &captureAddresses}});
}

}  // namespace

void measureThreads(Suite& suite) {
    if (!suite.wants("threads")) return;
    measureRoundTrip(suite, "condition on events, round trip");  // before the library is up
    xo::xoLog::createInstance(false);
    xo::xoLog::edit().setEchoToConsole(false);
    xo::initializeXoSystem(xo::InitTypeFull);
    measureLock(suite);
    measureRoundTrip(suite, "native condition, round trip");
    measureSemaphore(suite);
    measureJobs(suite);
    measurePool(suite);
    measureThread(suite);
    measureGuard(suite);
    xo::terminateXoSystem();
    suite.compare("threads", "full start-up and shut-down", 1,
                  [] {
                      xo::initializeXoSystem(xo::InitTypeFull);
                      xo::terminateXoSystem();
                  },
                  {{"two std::threads", [] {
                        std::thread first([] {});
                        std::thread second([] {});
                        first.join();
                        second.join();
                    }}});
}

}  // namespace bench
