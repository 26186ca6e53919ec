#include "log/console.h"

#include <io.h>

#include <cstdio>
#include <iostream>

#include "platform/wideText.h"
#include "platform/windows.h"

namespace xo::log {
namespace {

// A host that gave std::cout another buffer wants the lines there, whatever standard output is.
std::streambuf* const kOriginalBuffer = std::cout.rdbuf();

// Standard output when it is a console window, otherwise null.
HANDLE realConsole() {
    const int descriptor = ::_fileno(stdout);
    if (descriptor < 0 || std::cout.rdbuf() != kOriginalBuffer) return nullptr;
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
    if (const HANDLE console = realConsole()) {
        out->pubsync();
        writeWide(console, platform::toWide(line));
    } else if (out) {
        out->sputn(line.data(), static_cast<std::streamsize>(line.size()));
        out->pubsync();
    }
    line.pop_back();
}

}  // namespace xo::log
