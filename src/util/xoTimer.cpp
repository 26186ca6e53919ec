// Timers: one on the system's tick count, which is cheap and coarse, and one on the performance counter.
#include "xoSystem/xoTimer.h"

#include "platform/windows.h"

namespace xo {
namespace {

constexpr std::int64_t kMsPerSec = 1000;

// Milliseconds since the start of the system, in steps of 10 to 16.
// https://learn.microsoft.com/windows/win32/api/sysinfoapi/nf-sysinfoapi-gettickcount64
std::int64_t nowMs() { return static_cast<std::int64_t>(::GetTickCount64()); }

// Limited to the range of the result, because a signed overflow would be undefined.
std::int64_t toMs(std::int64_t seconds) {
    if (seconds > INT64_MAX / kMsPerSec) return INT64_MAX;
    if (seconds < INT64_MIN / kMsPerSec) return INT64_MIN;
    return seconds * kMsPerSec;
}

}  // namespace

void xoTimer::snapTime() { mSnapMs = nowMs(); }

std::int64_t xoTimer::getElapsedMs() const { return isTimeSnapped() ? nowMs() - mSnapMs : INT64_MAX; }

std::int64_t xoTimer::getElapsedMs(bool resnap) {
    const std::int64_t elapsedMs = getElapsedMs();
    if (resnap) snapTime();
    return elapsedMs;
}

bool xoTimer::isElapsedMs(std::int64_t ms) const { return !isTimeSnapped() || nowMs() - mSnapMs > ms; }

bool xoTimer::isElapsedSec(std::int64_t seconds) const { return isElapsedMs(toMs(seconds)); }

}  // namespace xo

namespace {

// Neither function below fails, and the frequency does not change while the system runs.
// https://learn.microsoft.com/windows/win32/api/profileapi/nf-profileapi-queryperformancecounter
std::int64_t counterFrequency() {
    LARGE_INTEGER frequency;
    ::QueryPerformanceFrequency(&frequency);
    return frequency.QuadPart;
}

std::int64_t counter() {
    LARGE_INTEGER count;
    ::QueryPerformanceCounter(&count);
    return count.QuadPart;
}

}  // namespace

// The marks are ticks of the performance counter.
struct xoHighResTimer::Private {
    std::int64_t frequency = counterFrequency();  // ticks per second
    std::int64_t start = 0;
    std::int64_t end = 0;
    bool stopped = true;
};

xoHighResTimer::xoHighResTimer() : mPrivate(std::make_unique<Private>()) {}

xoHighResTimer::~xoHighResTimer() = default;

// A copy continues on its own from the marks of the other.
xoHighResTimer::xoHighResTimer(const xoHighResTimer& other) : mPrivate(std::make_unique<Private>(*other.mPrivate)) {}

xoHighResTimer& xoHighResTimer::operator=(const xoHighResTimer& other) {
    *mPrivate = *other.mPrivate;
    return *this;
}

void xoHighResTimer::start() {
    mPrivate->stopped = false;
    mPrivate->start = counter();
}

void xoHighResTimer::stop() {
    if (mPrivate->stopped) return;
    mPrivate->stopped = true;
    mPrivate->end = counter();
}

bool xoHighResTimer::isRunning() const { return !mPrivate->stopped; }

void xoHighResTimer::clearTimer() {
    mPrivate->start = 0;
    mPrivate->end = 0;
    mPrivate->stopped = true;
}

double xoHighResTimer::getElapsedTimeInMicroSec() {
    // A running timer reports the time so far and keeps running.
    if (!mPrivate->stopped) mPrivate->end = counter();
    const double microSecPerTick = 1e6 / static_cast<double>(mPrivate->frequency);
    // Separate statements: within one expression a compiler may contract the multiplication and the subtraction into a
    // fused multiply-add, which rounds differently.
    const double end = static_cast<double>(mPrivate->end) * microSecPerTick;
    const double begin = static_cast<double>(mPrivate->start) * microSecPerTick;
    return end - begin;
}
