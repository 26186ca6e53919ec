// The life of the process-wide pool.
#ifndef XO_THREADS_CONCURRENTPOOLINSTANCE_H
#define XO_THREADS_CONCURRENTPOOLINSTANCE_H

namespace xo::threads {

// Creates the pool that concurrent::GetConcurrentPool() returns, unless there is one. With fewer workers when not so
// many can be started; throws what the pool throws when not even one can.
void createConcurrentPool(unsigned workerCount);

// Ends its workers and destroys it, if there is one. A process that never calls this leaves the pool alone on purpose:
// when static objects are destroyed its threads are gone, and joining them under the loader's lock would hang.
void destroyConcurrentPool();

}  // namespace xo::threads

#endif
