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
    std::atomic<bool>* placeIsFree = nullptr;  // of its place in the pool; null for a line from the heap
    std::string text;
    std::string qualifier;
    std::string eventSource;
};

// Lines that keep their buffers from one use to the next, so that most lines allocate nothing. Each thread has its
// place; whoever finds it taken, by a line in the making or by another thread, gets a line from the heap. So does a
// line that is written before the pool is made or after its end, when static objects are made and destroyed.
class xoLogObject::Line::Pool {
public:
    Pool() {
        for (Place& place : mPlaces) {
            place.line.placeIsFree = &place.isFree;
            place.isFree = true;
        }
    }

    // Frees the buffers of the places that it can still take. A line in the making keeps its place: in a static build
    // the other threads still run.
    ~Pool() {
        for (Place& place : mPlaces)
            if (place.isFree.exchange(false, std::memory_order_acquire)) place.line.~Line();
    }

    Line* take() {
        Place& place = mPlaces[::GetCurrentThreadId() / 4 % kSize];  // identifiers are multiples of 4
        return place.isFree.exchange(false, std::memory_order_acquire) ? &place.line : new Line();
    }

    void give(Line* line) {
        if (!line->placeIsFree) {
            delete line;
            return;
        }
        constexpr std::size_t kMostKept = 4096;
        if (line->text.capacity() > kMostKept) std::string().swap(line->text);
        line->placeIsFree->store(true, std::memory_order_release);
    }

    static Pool msInstance;

private:
    static constexpr std::size_t kSize = 16;

    struct Place {
        Place() : line() {}
        ~Place() {}
        union {
            Line line;  // destroyed by the pool alone
        };
        std::atomic<bool> isFree;  // false in the zeroed memory before the pool is made
    };
    Place mPlaces[kSize];
};

xoLogObject::Line::Pool xoLogObject::Line::Pool::msInstance;

void xoLogObject::begin(xoLogType type, const char* qualifier, xoLog* log, const char* eventSourceName) {
    Line* line = nullptr;
    try {
        line = Line::Pool::msInstance.take();
        line->log = log;
        line->type = type;
        line->hasText = false;
        line->hasEventSource = eventSourceName != nullptr;
        line->text.clear();
        line->qualifier = qualifier ? qualifier : "";
        line->eventSource = eventSourceName ? eventSourceName : "";
        mLine = line;
    } catch (...) {  // out of memory: the line is lost, the host is not
        if (line) Line::Pool::msInstance.give(line);
    }
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
    } catch (...) {  // out of memory
    }
    Line::Pool::msInstance.give(mLine);
}

void xoLogObject::append(const char* text) { append(std::string_view(text ? text : "[NullPtr]")); }

void xoLogObject::append(std::string_view text) {
    constexpr std::size_t kUsualLength = 120;
    std::string& line = mLine->text;
    mLine->hasText = true;
    const std::size_t size = line.size() + text.size();
    try {
        if (size > line.capacity()) line.reserve((std::max)(kUsualLength, 2 * size));
        line += text;
    } catch (...) {  // out of memory: the line goes without this piece
    }
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
