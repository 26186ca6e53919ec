#include "threads/concurrentPoolInstance.h"

#include "xoSystem/xoConcurrentPool.h"

namespace xo {
namespace {

ConcurrentPool* instance = nullptr;  // a bare pointer: nothing happens to it at exit

}  // namespace

namespace threads {

void createConcurrentPool(unsigned workerCount) {
    if (!instance) instance = new ConcurrentPool(workerCount);
}

void destroyConcurrentPool() {
    delete instance;
    instance = nullptr;
}

}  // namespace threads

ConcurrentPool& concurrent::GetConcurrentPool() { return *instance; }

}  // namespace xo
