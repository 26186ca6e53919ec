// The prefix of a log line: type, qualifier and time.
#ifndef XO_LOG_LINEPREFIX_H
#define XO_LOG_LINEPREFIX_H

#include <cstdint>
#include <string>
#include <string_view>

#include "xoSystem/xoLog.h"

namespace xo::log {

// The system clock in seconds since the start of 1970, UTC.
std::int64_t currentSecond();

// Formats local time as "Tue Mar 03 14:05:09 2020". Keeps the last text, because many lines share a second.
class LocalTimeText {
public:
    // The view is valid until the next call. Seconds outside the years 1970 to 3000 give the nearest time.
    std::string_view of(std::int64_t second);

private:
    std::int64_t mSecond = INT64_MIN;  // of mText; the initial value means that there is no text yet
    char mText[80] = "";
    std::size_t mLength = 0;
};

// Appends "WARNING(net) : Tue Mar 03 14:05:09 2020 ".
void appendPrefix(std::string& line, xoLogType type, std::string_view qualifier, std::string_view localTime);

}  // namespace xo::log

#endif
