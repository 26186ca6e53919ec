// Ends, with 7, while threads of the library exist that nobody has stopped: asleep, or with the argument "busy" at
// work.
#include <cstring>

#include "platform/handle.h"
#include "xoSystem/xoConcurrentPool.h"
#include "xoSystem/xoInit.h"
#include "xoSystem/xoWorkThread.h"

namespace {

using xo::ConcurrentPool;

xo::platform::KernelHandle begun(::CreateSemaphoreW(nullptr, 0, 100, nullptr));

[[noreturn]] void work() {
    ::ReleaseSemaphore(begun.get(), 1, nullptr);
    // Nothing that waits or wakes: Wine's exit can hang when it ends a thread inside its own locks.
    for (volatile unsigned rounds = 0;;) rounds = rounds + 1;
}

struct Worker final : xo::xoWorkThread {
    void executeJob(xo::xoJob*) override { work(); }
};

struct Task final : ConcurrentPool::SolverBase {
    void solve(xo::xoMutex* mutex, xo::xoWaitCondition*) override XO_NO_THREAD_SAFETY_ANALYSIS {
        if (!isFirst) work();
        isFirst = false;
        mutex->unlock();
        work();
    }
    bool isFirst = true;
};

struct Caller final : xo::xoThread {
    void run() override {
        Task task;
        (new ConcurrentPool(3))->solve({&task, &task});
    }
};

}  // namespace

int main(int count, char** arguments) {
    xo::initializeXoSystem(xo::InitTypeFull);
    static ConcurrentPool destroyedAtExit(2);  // before Windows ends the threads: an orderly end
    auto* const worker = new Worker;           // never destroyed, as are the others
    worker->startThread("worker");
    if (count < 2 || std::strcmp(arguments[1], "busy") != 0) return 7;

    xo::xoJob job;
    worker->beginWake();
    worker->addJob(&job);
    worker->endWake();
    (new Caller)->startThread("caller");
    for (int i = 0; i < 3; ++i)
        if (::WaitForSingleObject(begun.get(), 20000) != WAIT_OBJECT_0) return 1;
    return 7;
}
