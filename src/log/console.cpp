#include "log/console.h"

#include <io.h>

#include <cstdio>
#include <iostream>
#if defined(__GLIBCXX__)
#    include <ext/stdio_filebuf.h>
#    include <ext/stdio_sync_filebuf.h>
#endif

#include "platform/wideText.h"
#include "platform/windows.h"

namespace xo::log {
namespace {

#if defined(__GLIBCXX__)
// The buffer of a std::cout that nobody has redirected, in the C stream's step or not (std::ios::sync_with_stdio).
bool isStandardOutput(std::streambuf* buffer) {
    if (auto* const synchronised = dynamic_cast<__gnu_cxx::stdio_sync_filebuf<char>*>(buffer))
        return synchronised->file() == stdout;
    auto* const own = dynamic_cast<__gnu_cxx::stdio_filebuf<char>*>(buffer);
    return own && own->file() == stdout;
}
#else
// Other libraries do not say what a buffer writes to: what std::cout had when the library was loaded counts.
std::streambuf* const kOriginalBuffer = std::cout.rdbuf();
bool isStandardOutput(std::streambuf* buffer) { return buffer == kOriginalBuffer; }
#endif

// Standard output when it is a console window, otherwise null. A host that gave std::cout another buffer wants the
// lines there, whatever standard output is.
HANDLE realConsole() {
    const int descriptor = ::_fileno(stdout);
    if (descriptor < 0 || !isStandardOutput(std::cout.rdbuf())) return nullptr;
    const auto handle = reinterpret_cast<HANDLE>(::_get_osfhandle(descriptor));
    DWORD mode = 0;
    return ::GetConsoleMode(handle, &mode) ? handle : nullptr;
}

// Bytes would be read in the console's own code page; wide text is shown as it is.
void writeWide(HANDLE console, const std::wstring& text) {
    constexpr std::size_t kMostPerCall = 8192;  // older consoles refuse more than 64 KB
    for (std::size_t at = 0; at < text.size();) {
        std::size_t count = (std::min)(kMostPerCall, text.size() - at);
        if (at + count < text.size() && IS_HIGH_SURROGATE(text[at + count - 1])) --count;
        DWORD written = 0;
        if (!::WriteConsoleW(console, text.data() + at, static_cast<DWORD>(count), &written, nullptr)) return;
        at += count;
    }
}

}  // namespace

void writeLineToConsole(std::string& line) {
    line += '\n';
    // The buffer and not the stream: a closed standard output must not set the host's std::cout to failed.
    std::streambuf* const out = std::cout.rdbuf();
    try {
        if (const HANDLE console = realConsole()) {
            out->pubsync();
            writeWide(console, platform::toWide(line));
        } else if (out) {
            out->sputn(line.data(), static_cast<std::streamsize>(line.size()));
            out->pubsync();
        }
    } catch (...) {  // a host's buffer may throw; the line still goes to the file
    }
    line.pop_back();
}

}  // namespace xo::log
