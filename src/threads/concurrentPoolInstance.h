// Creates and destroys the process-wide pool. Called by the initialisation and termination of the library, one thread
// at a time.
#ifndef XO_THREADS_CONCURRENTPOOLINSTANCE_H
#define XO_THREADS_CONCURRENTPOOLINSTANCE_H

namespace xo::threads {

// Creates the pool that concurrent::GetConcurrentPool() returns, unless it exists. If so many workers cannot be
// started, it gets fewer; throws what the pool throws when not even one can be started.
void createConcurrentPool(unsigned workerCount);

// Ends the workers and destroys the pool, if it exists. If this is never called, the pool is left alone on purpose when
// the process ends: its threads are gone when static objects are destroyed, and joining under the loader's lock would
// hang.
void destroyConcurrentPool();

}  // namespace xo::threads

#endif
