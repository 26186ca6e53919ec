// From start to end: the library comes up in two steps, a text that is compiled into the program is found by its name,
// an error of Windows becomes readable, and everything is taken down again.
#include <iostream>
#include <string>

#include "xoSystem/xoInit.h"
#include "xoSystem/xoLog.h"
#include "xoSystem/xoResource.h"
#include "xoSystem/xoSystemError.h"
#include "xoSystem/xoSystemUtils.h"
#include "xoSystem/xoVectorConstants.h"

namespace {

// What a resource compiler writes: one block of bytes, and where each resource lies in it.
constexpr char kBlob[] = "Hello!Goodbye!";
constexpr const char* kNames[] = {"texts/greeting", "texts/farewell"};
constexpr std::size_t kSizes[] = {6, 8};
constexpr std::size_t kOffsets[] = {0, 6};

// The sum of four numbers at once, whatever their signs.
float sumOfMagnitudes(__m128 numbers) {
    alignas(16) float lanes[4];
    _mm_store_ps(lanes, _mm_andnot_ps(xo::sSSESignBitMask, numbers));
    return lanes[0] + lanes[1] + lanes[2] + lanes[3];
}

}  // namespace

int main() {
    xo::initializeXoSystem(xo::InitTypeBasic);
    std::cout << "basic: safe for threads: " << std::boolalpha << xo::IsXoSystemThreadSafe() << '\n';
    xo::initializeXoSystem(xo::InitTypeFull);
    std::cout << "full:  safe for threads: " << xo::IsXoSystemThreadSafe() << '\n';

    xo::rc::impl::RegisterResources(2, kBlob, kNames, kSizes, kOffsets);
    std::string text;
    const bool found = xo::rc::GetResource("texts/farewell", text);
    std::cout << "resource: " << text << '\n';
    const bool foundOther = xo::rc::GetResource("texts/apology", text);
    xo::rc::impl::UnRegisterResources(2, kBlob, kNames, kSizes, kOffsets);

    std::cout << "error 5: " << xo::SystemError(5).toString() << '\n'
              << "one more: " << xo::SystemError(-1000000).toString() << '\n'
              << "magnitudes: " << sumOfMagnitudes(_mm_set_ps(1, -2, 3, -4)) << '\n'
              << "processors: " << (xo::xoSystemUtils::GetProcessorCount() >= 1 ? "some" : "none") << '\n'
              << "identifier: " << xo::xoSystemUtils::CreateUuid() << '\n';

    xo::terminateXoSystem();
    xo::terminateXoSystem();
    std::cout << "after: log is " << (xo::xoLog::editPtr() ? "there" : "gone") << '\n';
    return found && !foundOther ? 0 : 1;
}
