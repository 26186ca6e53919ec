#include "report.h"

#include <iostream>

#include "xoSystem/xoCsvStream.h"
#include "xoSystem/xoLog.h"
#include "xoSystem/xoPowerStatus.h"
#include "xoSystem/xoVersion.h"

namespace catalogue {

void showMachine() {
    std::cout << "library:  xoSystem " << xo::xoSystem::Version::GetDescStringMajorMinorReleaseRevisionDate() << '\n';

    xo::xoPowerStatusReader reader;
    const xo::xoPowerStatus& power = reader.getPowerStatus();
    static const char* const kLines[] = {"on battery", "on mains", "unknown"};
    std::cout << "power:    " << kLines[power.mAcLine];
    if (power.mBatteryPercent != xo::xoPowerStatus::BatteryUnknown)
        std::cout << ", battery at " << power.mBatteryPercent << " %";
    std::cout << '\n';
}

void tourOfTheLog(const Settings& settings) {
    using xo::xoLogObject;
    xo::xoLog& log = xo::xoLog::edit();
    const std::string quiet = settings.text("log/quiet", "");

    xoLogObject(xo::xoLogDebug) << "never seen: DEBUG lines are off until the host wants them";
    xoLogObject(xo::xoLogInfo) << "an INFO line takes text, numbers such as " << 42 << " and " << 0.5 << ", and "
                               << true;
    xoLogObject(xo::xoLogWarning, "disk") << "a WARNING with the qualifier disk";
    xoLogObject(xo::xoLogCritical) << "a CRITICAL line, for failures; this one is only shown";

    log.setLogTypeEnabled(xo::xoLogDebug, true);
    log.setDebugSubTypeEnabled(quiet.c_str(), false);
    xoLogObject(xo::xoLogDebug, "net") << "never seen: the settings keep net quiet";
    xoLogObject(xo::xoLogDebug, "disk") << "a DEBUG line whose qualifier is wanted";
    log.setDebugSubTypeEnabled("net", true);
    xoLogObject(xo::xoLogDebug, "net") << "a DEBUG line of net, switched on again";
    log.setLogTypeEnabled(xo::xoLogDebug, false);
}

bool writeSummary(const std::string& folder, unsigned int maxRows, const std::deque<CountryJob>& jobs) {
    using EndOfRow = xo::xoCsvStream::EndOfRow;
    xo::xoCsvFileWriter writer(folder, "summary", maxRows, ';', '"', "\r\n", /*writeByteOrderMark=*/false);
    for (const CountryJob& job : jobs) {
        // Asked for before each row: a full file is followed by the next one here.
        xo::xoCsvStream& row = writer.getStream();
        row << job.country().code << static_cast<std::uint64_t>(job.country().regions.size()) << job.bytes()
            << EndOfRow();
        if (row.isOk()) continue;
        xo::xoLogObject(xo::xoLogCritical) << "the summary cannot be written: " << folder;
        return false;
    }
    return true;
}

}  // namespace catalogue
