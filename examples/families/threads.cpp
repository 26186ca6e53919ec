// Kinds of background work: the pool of the process for one big computation, a work thread for jobs that are queued now
// and then, a periodic updater, and a thread of the older kind, which hosts still have.
#include <atomic>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "xoSystem/xoConcurrentPool.h"
#include "xoSystem/xoInit.h"
#include "xoSystem/xoLegacyThread.h"
#include "xoSystem/xoSemaphore.h"
#include "xoSystem/xoThread.h"
#include "xoSystem/xoWorkThread.h"

namespace {

// Counts the primes of a range, on the pool. The pool's mutex is unlocked while the task computes.
class CountPrimes final : public xo::ConcurrentPool::SolverBase {
public:
    CountPrimes(int first, int last) : mFirst(first), mLast(last) {}

    void solve(xo::xoMutex* poolMutex, xo::xoWaitCondition*) override XO_NO_THREAD_SAFETY_ANALYSIS {
        poolMutex->unlock();
        int count = 0;
        for (int number = mFirst; number < mLast; ++number) count += isPrime(number) ? 1 : 0;
        poolMutex->lock();
        mCount = count;
    }
    int count() const { return mCount; }

private:
    static bool isPrime(int number) {
        for (int divisor = 2; divisor * divisor <= number; ++divisor)
            if (number % divisor == 0) return false;
        return number > 1;
    }

    int mFirst, mLast, mCount = 0;
};

int primesBelow(int last) {
    constexpr int kStep = 1000;
    std::vector<std::unique_ptr<CountPrimes>> owned;
    std::vector<xo::ConcurrentPool::SolverBase*> tasks;
    for (int first = 0; first < last; first += kStep) {
        owned.push_back(std::make_unique<CountPrimes>(first, first + kStep));
        tasks.push_back(owned.back().get());
    }
    if (!xo::concurrent::GetConcurrentPool().solve(tasks)) return -1;
    int count = 0;
    for (const auto& task : owned) count += task->count();
    return count;
}

struct Page final : xo::xoJob {
    explicit Page(int number) : number(number) {}
    int number;
};

// Prints one page after the other while the program goes on.
class Printer final : public xo::xoWorkThread {
public:
    ~Printer() override { stop(); }

    void print(std::vector<Page>& pages) {
        beginWake();
        for (Page& page : pages) addJob(&page);
        endWake();
    }
    void awaitPages(unsigned int count) { mPrinted.acquire(count); }

    // The two jobs keep the thread awake until it has seen the request; xoWorkThread.h explains them.
    void stop() override {
        beginWake();
        addJob(&mUntilStop);
        addJob(&mUntilStop);
        endWake();
        xo::xoWorkThread::stop();
    }

private:
    void executeJob(xo::xoJob* job) override {
        if (job == &mUntilStop) {
            while (!mustStop()) msleep(1);
            return;
        }
        std::cout << "page " << static_cast<Page*>(job)->number << '\n';
        mPrinted.release();
    }

    xo::xoSemaphore mPrinted{0};
    xo::xoJob mUntilStop;
};

// Counts until it is asked to end. Its last act frees the thread object for destruction.
struct Counter final : xo::xoRunnable {
    void run() override {
        for (; !thread.mustEnd(); xo::xoLegacyThread::yield()) ++count;
        thread.setAlive(false);
    }
    std::atomic<int> count{0};
    xo::xoLegacyThread thread{this};
};

void tick(void* ticks) { static_cast<xo::xoSemaphore*>(ticks)->release(); }

}  // namespace

int main() {
    xo::initializeXoSystem(xo::InitTypeFull);
    {
        xo::xoSemaphore ticks(0);
        xo::xoThreadPeriodicalUpdater updater(/*periodSeconds=*/1);
        updater.addCallback(&tick, &ticks);

        std::cout << primesBelow(100000) << " primes below 100000\n";

        std::vector<Page> pages = {Page(1), Page(2), Page(3)};
        Printer printer;
        printer.startThread("printer");
        printer.print(pages);
        printer.awaitPages(3);

        ticks.acquire(2);  // the first one at once, the second one a second later
        std::cout << "two ticks\n";

        Counter counter;
        if (!counter.thread.create(xoThreadCreationFlagRun)) return 1;
        while (counter.count == 0) xo::xoLegacyThread::yield();
        counter.thread.end(/*wait=*/true);
        std::cout << "counted, " << (counter.thread.isAlive() ? "and goes on" : "then ended") << '\n';
    }  // every thread has ended before the library does
    xo::terminateXoSystem();
    return 0;
}
