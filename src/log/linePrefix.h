// What stands before the text of a log line.
#ifndef XO_LOG_LINEPREFIX_H
#define XO_LOG_LINEPREFIX_H

#include <cstdint>
#include <string>
#include <string_view>

#include "xoSystem/xoLog.h"

namespace xo::log {

// Seconds since 1970, UTC.
std::int64_t currentSecond();

// The local time of a second as "Tue Mar 03 14:05:09 2020", and for the moment kept: lines come many to a second.
class LocalTimeText {
public:
    std::string_view of(std::int64_t second);

private:
    std::int64_t mSecond = INT64_MIN;
    char mText[80] = "";
    std::size_t mLength = 0;
};

// Appends "WARNING(net) : Tue Mar 03 14:05:09 2020 ".
void appendPrefix(std::string& line, xoLogType type, std::string_view qualifier, std::string_view localTime);

}  // namespace xo::log

#endif
