// The process-wide pool, which the library's initialisation makes.
#include "threads/concurrentPoolInstance.h"

#include <system_error>

#include "xoSystem/xoConcurrentPool.h"

namespace xo {
namespace {

ConcurrentPool* instance = nullptr;  // a bare pointer, so that no destructor joins the workers at the process's exit

}  // namespace

namespace threads {

void createConcurrentPool(unsigned workerCount) {
    while (!instance) {
        try {
            instance = new ConcurrentPool(workerCount);
        } catch (const std::exception&) {  // no threads, or no memory, for so many
            // Half as many workers may still be possible. Without any the initialisation fails.
            if (workerCount <= 1) throw;
            workerCount /= 2;
        }
    }
}

void destroyConcurrentPool() {
    delete instance;
    instance = nullptr;
}

}  // namespace threads

ConcurrentPool& concurrent::GetConcurrentPool() {
    // The error of a thread that cannot be started: the library is not fully initialised, or no worker could be
    // started.
    if (!instance) throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again));
    return *instance;
}

}  // namespace xo
