// Shows a work on the console: by a bar that a timer draws, or by plain lines where the output is redirected.
#include "xoSystem/xoProgressConsole.h"

#include <io.h>

#include <cstdio>

#include "log/console.h"
#include "platform/handle.h"
#include "platform/slimLock.h"
#include "progress/view/consoleLine.h"

namespace xo {
namespace {

constexpr DWORD kDrawMs = 100;                // the period of the timer: often enough to look smooth
constexpr std::int64_t kFirstLineMs = 10000;  // of plain lines; each later one at twice the time of the one before
constexpr std::int64_t kMostLineMs = 300000;  // the longest time between two plain lines

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
    Private(const xoProgressConsole& ownView, int ownFlags, unsigned ownDelayMs)
        : view(ownView), flags(ownFlags), delayMs(ownDelayMs) {}

    void begin();  // on the thread that owns the work, as end()
    void draw();   // on a thread of the pool
    void drawBar() XO_REQUIRES(lock);
    void drawPlainLine() XO_REQUIRES(lock);
    void end(const xoProgressState& state);
    static void CALLBACK onTimer(PTP_CALLBACK_INSTANCE, void* self, PTP_TIMER);

    const xoProgressConsole& view;  // the object that owns this record
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
    if (console)
        drawBar();
    else
        drawPlainLine();
}

void xoProgressConsole::Private::drawBar() {
    if (!isVisible) return;
    std::string line = progress::barLine(view.getState(), usableColumns(console), tick++);
    const std::size_t columns = progress::consoleColumns(line);
    hasDrawn |= log::setStatusLine({this, console, std::move(line), columns});
}

void xoProgressConsole::Private::drawPlainLine() {
    const xoProgressState state = view.getState();
    if (state.elapsedMs < nextLineMs) return;
    // The interval doubles up to five minutes, so that the log of a long work stays short.
    nextLineMs += (std::min)(nextLineMs, kMostLineMs);
    hasDrawn = true;
    writePlainLine(progress::plainLine(state));
}

void xoProgressConsole::Private::end(const xoProgressState& state) {
    const platform::SlimLocker locker(lock);
    isRunning = false;
    if (timer) ::SetThreadpoolTimer(timer.get(), nullptr, 0, 0);
    const std::string line = (flags & ProgressConsoleErase) != 0 ? std::string() : progress::endLine(state);
    if (console) {
        // A work that ended before the first bar was shown leaves no line.
        const bool wasShown = log::endStatusLine(this, isVisible ? line : std::string());
        if (!wasShown && isVisible && hasDrawn && !line.empty()) log::writeConsoleLine(console, line);
    } else if ((flags & ProgressConsoleNoLines) == 0 && (hasDrawn || state.elapsedMs >= kFirstLineMs)) {
        if (!line.empty()) writePlainLine(line);
    }
}

xoProgressConsole::xoProgressConsole(int flags, unsigned delayMs)
    : xoProgressNotifier(kCallsAtEnds), mPrivate(std::make_unique<Private>(*this, flags, delayMs)) {}

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
