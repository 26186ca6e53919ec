// Composes one line of the log from the pieces that are streamed into an xoLogObject.
#include <algorithm>
#include <atomic>
#include <charconv>

#include "platform/windows.h"
#include "text/numberText.h"
#include "xoSystem/xoLog.h"

namespace xo {

// One line that is being composed. It belongs to its xoLogObject, and so to one thread, until end().
struct xoLogObject::Line {
    class Pool;

    void write() const;

    xoLog* log = nullptr;  // null: the line goes to standard output only
    xoLogType type = xoLogInfo;
    bool hasText = false;                      // false: nothing was streamed, and nothing is written
    bool hasEventSource = false;               // the line goes to the event log instead
    std::atomic<bool>* placeIsFree = nullptr;  // the flag of its place in the pool; null for a line from the heap
    std::string text;
    std::string qualifier;
    std::string eventSource;
};

// Lines that keep their buffers from one use to the next, so that most lines allocate nothing. The thread's identifier
// selects the place to begin at. A place may be taken by an unfinished line of the thread, by another thread, or for
// good by a line that a processor fault interrupted: with Visual Studio's /EHsc a fault destroys no objects. When all
// are taken, the line comes from the heap; so does every line before the pool is constructed and after it is destroyed,
// by other static objects for example.
class xoLogObject::Line::Pool {
public:
    Pool() {
        for (Place& place : mPlaces) {
            place.line.placeIsFree = &place.isFree;
            place.isFree = true;
        }
    }

    // Destroys the lines that are not in use. Others keep their places: where the library is linked statically, other
    // threads still run while static objects are destroyed.
    ~Pool() {
        for (Place& place : mPlaces)
            if (place.isFree.exchange(false, std::memory_order_acquire)) place.line.~Line();
    }

    Line* take() {
        const std::size_t first = ::GetCurrentThreadId() / 4;  // thread identifiers are multiples of 4
        for (std::size_t i = 0; i != kSize; ++i) {
            Place& place = mPlaces[(first + i) % kSize];
            // Read first, because an exchange would take the cache line from the thread that uses the place.
            if (place.isFree.load(std::memory_order_relaxed) && place.isFree.exchange(false, std::memory_order_acquire))
                return &place.line;
        }
        return new Line();
    }

    void give(Line* line) {
        if (!line->placeIsFree) {
            delete line;
            return;
        }
        constexpr std::size_t kMostKept = 4096;  // bytes; a longer line gives its memory back
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
            Line line;  // in a union, so that only the pool destroys it
        };
        std::atomic<bool> isFree;  // false before the pool is constructed: static memory is zeroed
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
    } catch (...) {  // such as std::bad_alloc: the line is dropped, and mLine stays null
        if (line) Line::Pool::msInstance.give(line);
    }
}

void xoLogObject::end() noexcept {
    try {
        mLine->write();
    } catch (...) {  // such as std::bad_alloc: the line is lost
    }
    Line::Pool::msInstance.give(mLine);
}

void xoLogObject::Line::write() const {
    if (!hasText) return;
    if (hasEventSource) {
        xoLog::WriteToSystemLog(text, type, qualifier, eventSource);
    } else if (log) {
        log->Write(text, type, qualifier);
    } else {
        xoLog::WriteToStd(text, type, qualifier);
    }
}

void xoLogObject::append(const char* text) { append(std::string_view(text ? text : "[NullPtr]")); }

void xoLogObject::append(std::string_view text) {
    // Most lines need one allocation; longer ones double.
    constexpr std::size_t kUsualLength = 120;
    std::string& line = mLine->text;
    mLine->hasText = true;
    const std::size_t size = line.size() + text.size();
    try {
        if (size > line.capacity()) line.reserve((std::max)(kUsualLength, 2 * size));
        line += text;
    } catch (...) {  // such as std::bad_alloc: the line lacks this piece
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
    char digits[text::kRealCapacity];
    append({digits, static_cast<std::size_t>(text::printReal(digits, value) - digits)});
}

}  // namespace xo
