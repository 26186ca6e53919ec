// Writes lines to the console, above a status line.
#include "log/console.h"

#include <io.h>

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <new>
#if defined(__GLIBCXX__)
#    include <ext/stdio_filebuf.h>
#    include <ext/stdio_sync_filebuf.h>
#endif

#include "platform/slimLock.h"
#include "platform/structuredCall.h"
#include "platform/wideText.h"

namespace xo::log {
namespace {

// Whether std::cout still has a buffer of the C++ library. If a host has replaced it, before or after this library was
// loaded, the lines go to the host's buffer and not to the console window.
#if defined(__GLIBCXX__)
// The library has two kinds: the first one, and the one that std::ios::sync_with_stdio(false) sets.
bool isStandardOutput(std::streambuf* buffer) {
    if (auto* const synchronised = dynamic_cast<__gnu_cxx::stdio_sync_filebuf<char>*>(buffer))
        return synchronised->file() == stdout;
    auto* const buffered = dynamic_cast<__gnu_cxx::stdio_filebuf<char>*>(buffer);
    return buffered && buffered->file() == stdout;
}
#else
// Microsoft's buffers do not say what they write to, but sync_with_stdio does not replace them. So the buffer at the
// time of loading is compared.
std::streambuf* const kOriginalBuffer = std::cout.rdbuf();
bool isStandardOutput(std::streambuf* buffer) { return buffer == kOriginalBuffer; }
#endif

// The handle of standard output when that is a console window, otherwise null. The C runtime owns it.
HANDLE consoleWindow() {
    const int descriptor = ::_fileno(stdout);  // negative in a program without standard output
    if (descriptor < 0 || !isStandardOutput(std::cout.rdbuf())) return nullptr;
    const auto handle = reinterpret_cast<HANDLE>(::_get_osfhandle(descriptor));
    DWORD mode = 0;
    return ::GetConsoleMode(handle, &mode) ? handle : nullptr;
}

// Wide text, because a console window converts bytes from its own code page.
// https://learn.microsoft.com/en-us/windows/console/writeconsole
void writeWide(HANDLE console, const std::wstring& text) {
    constexpr std::size_t kMostPerCall = 8192;  // older consoles refuse more than 64 KB
    for (std::size_t at = 0; at < text.size();) {
        std::size_t count = (std::min)(kMostPerCall, text.size() - at);
        // A surrogate pair must not be divided between two calls.
        if (at + count < text.size() && IS_HIGH_SURROGATE(text[at + count - 1])) --count;
        DWORD written = 0;
        if (!::WriteConsoleW(console, text.data() + at, static_cast<DWORD>(count), &written, nullptr)) return;
        at += count;
    }
}

// Lets one thread at a time write to consoles, so that lines and the status line do not mix.
class ConsoleLock {
public:
    // Runs the function with the lock held. A fault in it that a guard takes releases the lock too.
    template <class Function>
    static void run(Function function) {
        platform::callReleasing(
            [](void* argument) XO_NO_THREAD_SAFETY_ANALYSIS {
                msLock.lock();
                (*static_cast<Function*>(argument))();
            },
            [](void*) XO_NO_THREAD_SAFETY_ANALYSIS { msLock.unlock(); }, &function);
    }

private:
    static inline platform::SlimLock msLock;
};

StatusLine gStatus{};  // guarded by the lock; there is no status line while the owner is null

// The text that removes the status line, at whose end the cursor is: blanks over it, and the cursor at its begin.
std::string erasure() { return gStatus.owner ? "\r" + std::string(gStatus.columns, ' ') + "\r" : std::string(); }

// Appends the line and a line end, each as the C runtime writes it to standard output: a console in which the host has
// set DISABLE_NEWLINE_AUTO_RETURN does not return to the first column at a line feed alone.
// https://learn.microsoft.com/en-us/windows/console/setconsolemode
void appendLine(std::string& text, std::string_view line) {
    for (;;) {
        const std::string_view part = line.substr(0, line.find('\n'));
        text += part;
        if (part.empty() || part.back() != '\r') text += '\r';
        text += '\n';
        if (part.size() == line.size()) return;
        line.remove_prefix(part.size() + 1);
    }
}

// In one write, so that the status line does not flicker.
void writeAboveStatus(HANDLE console, std::string_view line) {
    ConsoleLock::run([&] {
        std::string text = erasure();
        text.reserve(text.size() + line.size() + 2 + gStatus.text.size());
        appendLine(text, line);
        writeWide(console, platform::toWide(text += gStatus.text));
    });
}

}  // namespace

void writeLineToConsole(std::string& line) {
    const std::size_t length = line.size();
    line += '\n';
    // Writes to the buffer, not to the stream: a closed standard output must not set the host's std::cout to failed.
    std::streambuf* const out = std::cout.rdbuf();
    try {
        if (const HANDLE console = consoleWindow()) {
            out->pubsync();  // what the host has written comes first
            writeAboveStatus(console, {line.data(), length});
        } else if (out) {
            out->sputn(line.data(), static_cast<std::streamsize>(line.size()));
            out->pubsync();
        }
    } catch (...) {  // a buffer of the host may throw; the line still goes to the file
    }
    line.pop_back();
}

void writeConsoleLine(HANDLE console, const std::string& line) { writeAboveStatus(console, line); }

bool setStatusLine(const StatusLine& line) {
    bool isSet = false;
    ConsoleLock::run([&] {
        isSet = !gStatus.owner || gStatus.owner == line.owner;
        if (!isSet || (gStatus.owner && gStatus.text == line.text)) return;
        const std::string before = erasure();
        gStatus = line;
        writeWide(line.console, platform::toWide(before + line.text));
    });
    return isSet;
}

bool endStatusLine(const void* owner, const std::string& lastLine) {
    bool isEnded = false;
    ConsoleLock::run([&] {
        isEnded = gStatus.owner == owner;
        if (!isEnded) return;
        std::wstring wide;
        try {
            std::string text = erasure();
            if (!lastLine.empty()) appendLine(text, lastLine);
            wide = platform::toWide(text);
        } catch (const std::bad_alloc&) {  // the screen keeps the line
        }
        const HANDLE console = gStatus.console;
        gStatus = StatusLine{};
        writeWide(console, wide);
    });
    return isEnded;
}

}  // namespace xo::log
