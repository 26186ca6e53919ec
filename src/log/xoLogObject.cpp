#include <algorithm>
#include <atomic>
#include <charconv>

#include "platform/windows.h"
#include "text/numberText.h"
#include "xoSystem/xoLog.h"

namespace xo {

struct xoLogObject::Line {
    class Pool;

    xoLog* log = nullptr;
    xoLogType type = xoLogInfo;
    bool hasText = false;
    bool hasEventSource = false;
    std::string text;
    std::string qualifier;
    std::string eventSource;
    std::atomic<bool> isTaken{false};
};

// Lines that keep their room from one use to the next, so that most lines allocate nothing. Each thread has its place;
// whoever finds it taken, by a line in the making or by another thread, gets a line from the heap.
class xoLogObject::Line::Pool {
public:
    // Lines that are written while the process ends find every place taken.
    ~Pool() {
        for (Line& line : mLines) line.isTaken = true;
    }

    Line* take() {
        Line& line = mLines[::GetCurrentThreadId() / 4 % kSize];  // identifiers are multiples of 4
        return line.isTaken.exchange(true, std::memory_order_acquire) ? new Line() : &line;
    }

    void give(Line* line) {
        if (line < mLines || line >= mLines + kSize) {
            delete line;
            return;
        }
        constexpr std::size_t kMostRoomKept = 4096;
        if (line->text.capacity() > kMostRoomKept) std::string().swap(line->text);
        line->isTaken.store(false, std::memory_order_release);
    }

    static Pool msInstance;

private:
    static constexpr std::size_t kSize = 16;
    Line mLines[kSize];
};

xoLogObject::Line::Pool xoLogObject::Line::Pool::msInstance;

void xoLogObject::begin(xoLogType type, const char* qualifier, xoLog* log, const char* eventSourceName) {
    mLine = Line::Pool::msInstance.take();
    mLine->log = log;
    mLine->type = type;
    mLine->hasText = false;
    mLine->hasEventSource = eventSourceName != nullptr;
    mLine->text.clear();
    mLine->qualifier = qualifier ? qualifier : "";
    mLine->eventSource = eventSourceName ? eventSourceName : "";
}

void xoLogObject::end() noexcept {
    const Line& line = *mLine;
    try {
        if (!line.hasText) {
        } else if (line.hasEventSource) {
            xoLog::WriteToSystemLog(line.text, line.type, line.qualifier, line.eventSource);
        } else if (line.log) {
            line.log->Write(line.text, line.type, line.qualifier);
        } else {
            xoLog::WriteToStd(line.text, line.type, line.qualifier);
        }
    } catch (...) {  // out of memory: the line is lost, the host is not
    }
    Line::Pool::msInstance.give(mLine);
}

void xoLogObject::append(const char* text) { append(std::string_view(text ? text : "[NullPtr]")); }

void xoLogObject::append(std::string_view text) {
    constexpr std::size_t kUsualLength = 120;
    std::string& line = mLine->text;
    const std::size_t size = line.size() + text.size();
    if (size > line.capacity()) line.reserve((std::max)(kUsualLength, 2 * size));
    line += text;
    mLine->hasText = true;
}

void xoLogObject::appendInteger(std::int64_t value) {
    char digits[20];
    append({digits, static_cast<std::size_t>(std::to_chars(digits, digits + sizeof digits, value).ptr - digits)});
}

void xoLogObject::appendUnsigned(std::uint64_t value) {
    char digits[20];
    append({digits, static_cast<std::size_t>(std::to_chars(digits, digits + sizeof digits, value).ptr - digits)});
}

void xoLogObject::appendReal(double value) {
    char digits[text::kRealRoom];
    append({digits, static_cast<std::size_t>(text::printReal(digits, value) - digits)});
}

}  // namespace xo
