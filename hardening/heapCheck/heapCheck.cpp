// Where XO_HEAPCHECK is set, the C runtime asks the heap about each block before it lets go of it, and now and then,
// and at the end, about all blocks. A write beyond a block or into a freed one, and a block that is no block or not any
// more, end the program. The heap marks the ends of its blocks when Windows' global flags say so: './dev test
// --heapcheck'.
#include <malloc.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "support/importHook.h"

namespace xo::tests {
namespace {

constexpr unsigned kStride = 500;  // a freed block is watched until about 1000 others are

std::atomic<unsigned> gCount{0};
std::atomic<std::int64_t> gNextCheck{0};  // a performance counter

std::int64_t now() {
    LARGE_INTEGER ticks;
    ::QueryPerformanceCounter(&ticks);
    return ticks.QuadPart;
}

void require(bool isWhole) {
    if (isWhole) return;
    constexpr std::string_view kMessage = "The heap is damaged.\n";
    const HANDLE standardError = ::GetStdHandle(STD_ERROR_HANDLE);
    ::WriteFile(standardError, kMessage.data(), static_cast<DWORD>(kMessage.size()), nullptr, nullptr);
    ::TerminateProcess(::GetCurrentProcess(), EXIT_FAILURE);
}

// Takes at most about a third of the program's time. With hundreds of thousands of blocks, as a crash report makes
// while DbgHelp reads program databases, a check at each stride would take minutes.
void checkAll(HANDLE heap) {
    const std::int64_t begin = now();
    if (begin < gNextCheck) return;
    require(::HeapValidate(heap, 0, nullptr));
    const std::int64_t end = now();
    gNextCheck = end + 2 * (end - begin);
}

void check(HANDLE heap, const void* block) {
    require(::HeapValidate(heap, 0, block));
    if (++gCount % kStride == 0) checkAll(heap);
}

BOOL WINAPI freeChecked(HANDLE heap, DWORD flags, void* block) {
    if (block) check(heap, block);
    const BOOL isFreed = ::HeapFree(heap, flags, block);
    require(isFreed);
    return isFreed;
}

void* WINAPI resizeChecked(HANDLE heap, DWORD flags, void* block, SIZE_T size) {
    check(heap, block);
    return ::HeapReAlloc(heap, flags, block, size);
}

[[maybe_unused]] const bool gIsOn = [] {
    if (!std::getenv("XO_HEAPCHECK")) return false;
    const auto* const free = new ImportHook("msvcrt.dll", "HeapFree", &freeChecked);  // for as long as the program runs
    const auto* const resize = new ImportHook("msvcrt.dll", "HeapReAlloc", &resizeChecked);
    require(free->isInstalled() && resize->isInstalled());
    return std::atexit([] { require(::HeapValidate(reinterpret_cast<HANDLE>(::_get_heap_handle()), 0, nullptr)); }) ==
           0;
}();

}  // namespace
}  // namespace xo::tests
