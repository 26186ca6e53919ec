// The "C" locales, made at the library's start and released at its end. Between these they are not changed, so any
// thread may read them without a lock; before and after they are null.
#include <memory>
#include <new>

#include "xoSystem/xoStringUtils.h"

namespace xo {

_locale_t xoStringUtils::msCLocale = nullptr;
std::locale* xoStringUtils::msCplusLocale = nullptr;

bool xoStringUtils::InitializeStringUtils() {
    if (msCLocale || msCplusLocale) return false;
    auto streamLocale = std::make_unique<std::locale>("C");
    msCLocale = ::_create_locale(LC_ALL, "C");
    if (!msCLocale) throw std::bad_alloc();  // the name is valid, so only memory can be missing
    msCplusLocale = streamLocale.release();
    return true;
}

bool xoStringUtils::TerminateStringUtils() {
    if (!msCLocale && !msCplusLocale) return false;
    ::_free_locale(msCLocale);
    msCLocale = nullptr;
    delete msCplusLocale;
    msCplusLocale = nullptr;
    return true;
}

// Nothing depends on the thread's locale.
void xoStringUtils::InitializeForThread() {}

_locale_t xoStringUtils::GetCLocale() { return msCLocale; }

std::locale* xoStringUtils::GetCPlusLocale() { return msCplusLocale; }

}  // namespace xo
