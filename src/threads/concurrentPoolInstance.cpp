// The process-wide pool.
#include "threads/concurrentPoolInstance.h"

#include <system_error>

#include "xoSystem/xoConcurrentPool.h"

namespace xo {
namespace {

ConcurrentPool* instance = nullptr;  // a bare pointer: nothing happens to it at exit

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
    if (!instance) throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again));
    return *instance;
}

}  // namespace xo
