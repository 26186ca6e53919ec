// Shows a work on the console: by a bar that a timer draws, or by plain lines where the output is redirected.
#include "xoSystem/xoProgressConsole.h"

#include <new>

#include "log/console.h"
#include "platform/handle.h"
#include "platform/slimLock.h"
#include "progress/notifierWork.h"
#include "progress/view/consoleLine.h"

namespace xo {
namespace {

constexpr DWORD kDrawMs = 100;  // the period of the timer: often enough to look smooth
// The times of plain lines: each doubles the one before, up to the last of these, and the rest follow at an interval,
// so that the log of a long work stays short.
constexpr std::int64_t kFirstLineMs = 10000;
constexpr std::int64_t kLastDoubledLineMs = 160000;
constexpr std::int64_t kLineIntervalMs = 300000;

struct TimerPolicy {
    using Type = PTP_TIMER;
    static Type none() noexcept { return nullptr; }
    // In this order, so that no callback is queued or running when the timer is closed:
    // https://learn.microsoft.com/windows/win32/api/threadpoolapiset/nf-threadpoolapiset-closethreadpooltimer
    static void close(Type timer) noexcept {
        ::SetThreadpoolTimer(timer, nullptr, 0, 0);
        ::WaitForThreadpoolTimerCallbacks(timer, /*fCancelPendingCallbacks=*/TRUE);
        ::CloseThreadpoolTimer(timer);
    }
};

bool isConsole(HANDLE handle) {
    // Fails for files and pipes.
    DWORD mode = 0;
    return ::GetConsoleMode(handle, &mode);
}

// Null when both outputs are redirected. The handle belongs to the process and must not be closed.
HANDLE findConsole() {
    // Standard error first, because standard output is redirected more often.
    for (const DWORD standard : {STD_ERROR_HANDLE, STD_OUTPUT_HANDLE}) {
        const HANDLE handle = ::GetStdHandle(standard);
        if (isConsole(handle)) return handle;
    }
    return nullptr;
}

// The columns of the window without the last one: some consoles continue on the next line once that is filled. 79 when
// the console does not report its size.
std::size_t usableColumns(HANDLE console) {
    CONSOLE_SCREEN_BUFFER_INFO info{};
    if (!::GetConsoleScreenBufferInfo(console, &info)) return 79;
    const int columns = info.srWindow.Right - info.srWindow.Left;
    return columns > 0 ? static_cast<std::size_t>(columns) : 1;
}

// To standard error, so that redirected output of the program itself stays clean.
void writePlainLine(std::string line) {
    const HANDLE output = ::GetStdHandle(STD_ERROR_HANDLE);
    if (!output || output == INVALID_HANDLE_VALUE) return;
    line += "\r\n";
    DWORD written = 0;
    ::WriteFile(output, line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
}

}  // namespace

// The state of a view. While a work runs, a timer draws from a thread of the system's pool. It holds the lock while it
// draws, so that nothing is drawn after the end line.
struct xoProgressConsole::Private {
    Private(progress::Work& shownWork, int ownFlags, unsigned ownDelayMs)
        : work(shownWork), flags(ownFlags), delayMs(ownDelayMs) {}

    void begin();  // on the thread that owns the work, as end()
    void draw();   // on a thread of the pool
    void drawBar(const xoProgressState& state) XO_REQUIRES(lock);
    void drawPlainLine(const xoProgressState& state) XO_REQUIRES(lock);
    void stop() XO_REQUIRES(lock);
    void end(const xoProgressState& state);
    static void CALLBACK onTimer(PTP_CALLBACK_INSTANCE, void* self, PTP_TIMER);

    // Not the view itself: when a processor fault has ended the function whose local variable the view was, the timer
    // goes on, and the stack is used again. This record and the work are on the heap and stay.
    progress::Work& work;
    const int flags;
    const unsigned delayMs;    // before the bar is shown for the first time
    HANDLE console = nullptr;  // of the current work; null for plain lines

    platform::SlimLock lock;
    bool isRunning XO_GUARDED_BY(lock) = false;  // between begin() and end()
    bool isVisible XO_GUARDED_BY(lock) = true;
    bool hasDrawn XO_GUARDED_BY(lock) = false;
    unsigned tick XO_GUARDED_BY(lock) = 0;            // bars drawn, which moves a bar without a fraction
    std::int64_t nextLineMs XO_GUARDED_BY(lock) = 0;  // the elapsed time at which the next plain line is due

    platform::Owned<TimerPolicy> timer;  // the last member: its callback uses the others
};

void xoProgressConsole::Private::begin() {
    console = findConsole();
    {
        const platform::SlimLocker locker(lock);
        isRunning = true;
        hasDrawn = false;
        tick = 0;
        nextLineMs = kFirstLineMs;
    }
    if (!console && (flags & ProgressConsoleNoLines) != 0) return;
    if (!timer) timer.reset(::CreateThreadpoolTimer(&onTimer, this, nullptr));
    if (!timer) return;  // the end line is still written
    constexpr std::int64_t kTicksPerMs = 10000;
    const std::int64_t firstMs = console ? static_cast<std::int64_t>(delayMs) : kFirstLineMs;
    ULARGE_INTEGER due;
    due.QuadPart = static_cast<ULONGLONG>(-firstMs * kTicksPerMs);  // negative: relative to now
    FILETIME dueTime{due.LowPart, due.HighPart};
    ::SetThreadpoolTimer(timer.get(), &dueTime, kDrawMs, /*msWindowLength=*/0);
}

void CALLBACK xoProgressConsole::Private::onTimer(PTP_CALLBACK_INSTANCE, void* self, PTP_TIMER) {
    try {
        static_cast<Private*>(self)->draw();
    } catch (...) {  // such as std::bad_alloc: this drawing is skipped, the next one may succeed
    }
}

void xoProgressConsole::Private::draw() {
    const platform::SlimLocker locker(lock);
    // A callback that had begun before the end waits for the lock and then draws nothing.
    if (!isRunning) return;
    const xoProgressState state = work.state();
    if (state.phase != xoProgressState::PhaseRunning) {
        // The work was reset, which makes no call, or end() is about to be called.
        stop();
        log::endStatusLine(this);
    } else if (console) {
        drawBar(state);
    } else {
        drawPlainLine(state);
    }
}

void xoProgressConsole::Private::drawBar(const xoProgressState& state) {
    if (!isVisible) return;
    std::string line = progress::barLine(state, usableColumns(console), tick++);
    const std::size_t columns = progress::consoleColumns(line);
    hasDrawn |= log::setStatusLine({this, console, std::move(line), columns});
}

void xoProgressConsole::Private::drawPlainLine(const xoProgressState& state) {
    if (state.elapsedMs < nextLineMs) return;
    // One line stands for all that have become due, for instance while the machine slept.
    do nextLineMs += nextLineMs < kLastDoubledLineMs ? nextLineMs : kLineIntervalMs;
    while (nextLineMs <= state.elapsedMs);
    hasDrawn = true;
    writePlainLine(progress::plainLine(state));
}

void xoProgressConsole::Private::stop() {
    isRunning = false;
    if (timer) ::SetThreadpoolTimer(timer.get(), nullptr, 0, 0);
}

void xoProgressConsole::Private::end(const xoProgressState& state) {
    const platform::SlimLocker locker(lock);
    stop();
    std::string line;
    try {
        if ((flags & ProgressConsoleErase) == 0) line = progress::endLine(state);
    } catch (const std::bad_alloc&) {  // no line, but the bar is taken away
    }
    if (console) {
        const bool wasShown = log::endStatusLine(this, isVisible ? line : std::string());
        // A work that has taken the delay leaves its line, even if the bar was never shown: another view may have had
        // the bottom line, or there was no timer.
        const bool isDue = hasDrawn || state.elapsedMs >= static_cast<std::int64_t>(delayMs);
        if (!wasShown && isVisible && isDue && !line.empty()) log::writeConsoleLine(console, line);
    } else if ((flags & ProgressConsoleNoLines) == 0 && (hasDrawn || state.elapsedMs >= kFirstLineMs)) {
        if (!line.empty()) writePlainLine(line);
    }
}

xoProgressConsole::xoProgressConsole(int flags, unsigned delayMs)
    : xoProgressNotifier(kCallsAtEnds), mPrivate(std::make_unique<Private>(progress::workOf(*this), flags, delayMs)) {}

xoProgressConsole::~xoProgressConsole() {
    mPrivate->timer.reset();  // waits for a callback under way
    log::endStatusLine(mPrivate.get());
}

void xoProgressConsole::setVisible(bool visible) {
    const platform::SlimLocker locker(mPrivate->lock);
    mPrivate->isVisible = visible;
    if (!visible) log::endStatusLine(mPrivate.get());
}

void xoProgressConsole::WriteLine(std::string_view line) {
    std::string text(line);
    log::writeLineToConsole(text);
}

std::string xoProgressConsole::FormatLine(const xoProgressState& state, unsigned columns, unsigned tick) {
    return progress::barLine(state, columns, tick);
}

void xoProgressConsole::onProgress(const xoProgressState& state) {
    if (state.phase == xoProgressState::PhaseRunning)
        mPrivate->begin();
    else
        mPrivate->end(state);
}

}  // namespace xo
