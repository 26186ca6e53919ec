#include "report.h"

#include "xoSystem/xoCsvStream.h"
#include "xoSystem/xoLog.h"
#include "xoSystem/xoMathUtils.h"
#include "xoSystem/xoPowerStatus.h"
#include "xoSystem/xoProgressConsole.h"
#include "xoSystem/xoSystemUtils.h"
#include "xoSystem/xoVersion.h"

namespace catalogue {

void showMachine() {
    using xo::xoProgressConsole;
    xoProgressConsole::WriteLine(std::string("library:  xoSystem ") +
                                 xo::xoSystem::Version::GetDescStringMajorMinorReleaseRevisionDate());

    xo::xoPowerStatusReader reader;
    const xo::xoPowerStatus& power = reader.getPowerStatus();
    static const char* const kLines[] = {"on battery", "on mains", "unknown"};
    std::string line = std::string("power:    ") + kLines[power.mAcLine];
    if (power.mBatteryPercent != xo::xoPowerStatus::BatteryUnknown)
        line += ", battery at " + std::to_string(power.mBatteryPercent) + " %";
    xoProgressConsole::WriteLine(line);
}

void showInventory() {
    auto table = xo::AsciiTableBuilder::FromMap(xo::xoSystemUtils::GetReport());
    table.editColumn(1).maxWidth = 80;  // the features of the processor are many
    const std::string text = table.setMaxWidth(xo::AsciiTableBuilder::GetConsoleWidth()).build();
    xo::xoProgressConsole::WriteLine(text.substr(0, text.size() - 1));  // without the last line end
}

void showSteps(const std::vector<Step>& steps, xo::AsciiTableBuilder::Style style) {
    using xo::xoMathUtils;
    xo::AsciiTableBuilder table({"Step", "Items", "Size", "Time", "Speed"});
    table.editColumn(0).overflow = xo::AsciiTableBuilder::OverflowCutMiddle;
    for (std::size_t column = 1; column <= 4; ++column)
        table.editColumn(column).align = xo::AsciiTableBuilder::AlignRight;
    table.setStyle(style).setMaxWidth(xo::AsciiTableBuilder::GetConsoleWidth());
    double seconds = 0;
    for (const Step& step : steps) {
        const double speed = step.seconds > 0 ? static_cast<double>(step.bytes) / step.seconds : 0;
        table.addRow({step.name, xoMathUtils::CountToText(step.items), xoMathUtils::BytesToText(step.bytes),
                      xoMathUtils::DurationToText(step.seconds),
                      xoMathUtils::BytesToText(static_cast<std::uint64_t>(speed)) + "/s"});
        seconds += step.seconds;
    }
    table.addSeparator().addRow({"all", "", "", xoMathUtils::DurationToText(seconds)});
    std::string text = table.build();
    text.pop_back();  // the last line end
    xo::xoProgressConsole::WriteLine(text);
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
