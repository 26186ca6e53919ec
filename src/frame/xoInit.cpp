// Initialisation and termination of the library, in two levels that are counted.
#include "xoSystem/xoInit.h"

#include <atomic>

#include "concurrency/earlyCreation.h"
#include "fault/signalWatch.h"
#include "frame/resourceRegistry.h"
#include "progress/work.h"
#include "threads/concurrentPoolInstance.h"
#include "util/laneMasks.h"
#include "xoSystem/xoLog.h"
#include "xoSystem/xoStringUtils.h"
#include "xoSystem/xoSystemUtils.h"
#include "xoSystem/xoWaitCondition.h"

namespace xo {
namespace {

// How often each level was requested. Several libraries of a program may initialise and terminate this one.
impl::LibInitCounter basicCounter("xoSystem basic");
impl::LibInitCounter fullCounter("xoSystem full");
std::atomic<int> levelReached{0};  // 0, InitTypeBasic or InitTypeFull

// After an unmatched termination the full level may be reached before the basic one; levelReached keeps it. The log is
// made first, because the steps after it may write lines.
void initializeBasic() {
    if (!IsXoSystemThreadSafe()) levelReached = InitTypeBasic;
    xoLog::createInstance(/*threadSafe=*/IsXoSystemThreadSafe());
    util::writeLaneMasks();
    xoSystemUtils::InitializeSystemUtils();
    xoStringUtils::InitializeStringUtils();
    frame::createResourceRegistry();
}

// The log may be missing: after an unmatched termination the full level is reached without the basic one. The pool is
// made after the locks of the log and of the resources, since its threads are the first ones that may need them.
void initializeFull(bool queryMainDisk) {
    // First, because the locks and threads that are made below would otherwise be reported as created too early.
    levelReached = InitTypeFull;
    frame::makeResourceRegistryThreadSafe();
    if (xoLog* const log = xoLog::editPtr()) log->makeThreadSafe();
    xoWaitCondition::FindBestImplementation();
    if (queryMainDisk) xoSystemUtils::getMainHDDDevice();
    threads::createConcurrentPool(xoSystemUtils::GetProcessorCount());
    if (xoLog::editPtr()) xoLogObject(xoLogDebug, "") << "Register signal and exception whatchers";
    fault::installSignalWatch();
}

}  // namespace

void initializeXoSystem(InitType type, bool queryMainDisk) {
    if (type != InitTypeBasic && type != InitTypeFull) return;
    // Each call counts as a basic initialisation, so that one termination matches it whatever its level.
    if (basicCounter.incrementInitCounter()) initializeBasic();
    if (type == InitTypeFull && fullCounter.incrementInitCounter()) initializeFull(queryMainDisk);
}

void terminateXoSystem() {
    // Only the last termination acts: several libraries of one program may initialise this one.
    if (!basicCounter.decrementInitCounter()) return;
    fullCounter.clearInitCounter();
    if (IsXoSystemThreadSafe()) {
        // First, because the workers may use all that is terminated below.
        threads::destroyConcurrentPool();
        fault::removeSignalWatch();
    }
    // The log is destroyed last, because what is terminated before it may still write lines.
    frame::destroyResourceRegistry();
    xoStringUtils::TerminateStringUtils();
    xoSystemUtils::TerminateSystemUtils();
    xoLog::destroyInstance();
    levelReached = 0;
}

bool IsXoSystemThreadSafe() { return levelReached.load(std::memory_order_relaxed) == InitTypeFull; }

namespace impl {

LibInitCounter::LibInitCounter(const char* name) : mName(name ? name : "n/a") {}

LibInitCounter::LibInitCounter(const LibInitCounter& other) = default;

LibInitCounter::~LibInitCounter() = default;

bool LibInitCounter::incrementInitCounter() {
    mInitialisedOnce = 1;
    return ++mCounter == 1;
}

// False also when the counter becomes negative, by a termination without an initialisation.
bool LibInitCounter::decrementInitCounter() { return --mCounter == 0; }

void LibInitCounter::clearInitCounter() { mCounter = 0; }

bool LibInitCounter::isInitialized() const { return mCounter != 0; }

int LibInitCounter::getInitCounter() const { return mCounter; }

}  // namespace impl

// The functions that lower rooms declare, because they need to know the level of initialisation or the log.
namespace concurrency {

void warnIfCreatedEarly(const char* text) {
    if (IsXoSystemThreadSafe()) return;
    if (xoLog* const log = xoLog::editPtr()) xoLogObject(xoLogCritical, nullptr, log) << text;
}

bool isFullyInitialized() { return IsXoSystemThreadSafe(); }

}  // namespace concurrency

namespace progress {

void reportForeignScope() {
    if (xoLog* const log = xoLog::editPtr())
        xoLogObject(xoLogCritical, nullptr, log) << "xoProgressScope made by a thread that does not own the notifier";
}

}  // namespace progress
}  // namespace xo
