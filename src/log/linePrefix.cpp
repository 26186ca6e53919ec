// The beginning of a line: type, qualifier and local time.
#include "log/linePrefix.h"

#include <algorithm>
#include <cstdio>
#include <ctime>

#include "platform/fileTime.h"

namespace xo::log {
namespace {

std::string_view typeName(xoLogType type) {
    switch (static_cast<int>(type)) {
        case xoLogDebug: return "DEBUG";
        case xoLogInfo: return "INFO";
        case xoLogWarning: return "WARNING";
        case xoLogCritical: return "CRITICAL";
        default: return "UNKNOWN";
    }
}

}  // namespace

std::int64_t currentSecond() {
    FILETIME now;
    ::GetSystemTimeAsFileTime(&now);
    return platform::toUnixSeconds(now);
}

std::string_view LocalTimeText::of(std::int64_t second) {
    // A time is converted once in a second rather than for each line.
    if (second == mSecond) return {mText, mLength};

    // The C runtime converts times from 1970 to 3000, UTC.
    // https://learn.microsoft.com/en-us/cpp/c-runtime-library/reference/localtime-s-localtime32-s-localtime64-s
    constexpr std::int64_t kLastSecond = 32535215999;
    const __time64_t time = std::clamp(second, std::int64_t{0}, kLastSecond);
    std::tm local{};
    ::_localtime64_s(&local, &time);
    // Not strftime: its names follow the host's setlocale, and a log reads the same everywhere.
    static constexpr char kDays[7][4] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    static constexpr char kMonths[12][4] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                            "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const int length =
        std::snprintf(mText, sizeof mText, "%s %s %02d %02d:%02d:%02d %d", kDays[local.tm_wday], kMonths[local.tm_mon],
                      local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec, local.tm_year + 1900);
    mLength = static_cast<std::size_t>(length);
    mSecond = second;
    return {mText, mLength};
}

void appendPrefix(std::string& line, xoLogType type, std::string_view qualifier, std::string_view localTime) {
    line += typeName(type);
    if (!qualifier.empty()) {
        line += '(';
        line += qualifier;
        line += ')';
    }
    line += " : ";
    line += localTime;
    line += ' ';
}

}  // namespace xo::log
