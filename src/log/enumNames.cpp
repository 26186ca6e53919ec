// The names of the enumerators of the log, for xoEnumHelper.
#include "xoSystem/xoEnumHelper.h"
#include "xoSystem/xoLog.h"

namespace xo {
namespace {

constexpr xoEnumEntry<xoLogType> kLogTypes[] = {
    {xoLogDebug, "DEBUG"}, {xoLogInfo, "INFO"}, {xoLogWarning, "WARNING"}, {xoLogCritical, "CRITICAL"}};
constexpr xoEnumEntry<xoLogFileFlag> kFileFlags[] = {{xoLogFileTruncate, "Truncate"},
                                                     {xoLogFileRotate, "Rotate"},
                                                     {xoLogFileEcho, "Echo"},
                                                     {xoLogFileKeepOpen, "KeepOpen"}};

}  // namespace

xoEnumList<xoLogType> xoEnumEntries(xoLogType) { return kLogTypes; }

xoEnumList<xoLogFileFlag> xoEnumEntries(xoLogFileFlag) { return {kFileFlags, /*areFlags=*/true}; }

}  // namespace xo
