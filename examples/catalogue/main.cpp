// The catalogue: a small host of xoSystem to copy from. It starts the library, loads its settings, keeps a rotating
// log, counts the regions of each country on a thread of its own, counts its runs, and ends cleanly. With --crash it
// shows how it survives a crash. The exit status tells whether all went well.
#include <cstdint>
#include <cstring>
#include <deque>
#include <iostream>
#include <string>

#include "countries.h"
#include "crash.h"
#include "xoSystem/xoSystem.h"

namespace {

using xo::xoLog;
using xo::xoLogObject;
using xo::xoVariant;

constexpr char kSeparator = '/';

// Where the program finds what is its own: everything lies beside the executable.
struct Places {
    std::string folder;
    std::string settings;
};

bool findPlaces(Places& places) {
    if (!xo::xoDirUtils::GetFolderOfCurrentProcessUtf8(places.folder)) return false;
    places.settings = places.folder + "/settings.ini";
    return true;
}

// Settings: a tree that is read by path, each value with the default that holds when the file does not have it.
class Settings {
public:
    bool load(const std::string& path) { return xo::LoadIniFile(path, mValues); }

    std::string text(const char* path, const char* otherwise) const {
        return mValues.getValuePath(path, otherwise, kSeparator).toString();
    }
    std::int64_t number(const char* path, std::int64_t otherwise) const {
        return mValues.getValuePath(path, otherwise, kSeparator).toInteger();
    }

private:
    xoVariant::xoVariantMapImpl mValues;
};

// A log of limited size: when the file is full it becomes the newest backup.
std::string installLog(const Places& places, const Settings& settings) {
    const std::string path = places.folder + "/" + settings.text("log/file", "catalogue.log");
    constexpr std::int64_t kKilobyte = 1024;
    xoLog::edit().installFileHandlerExUtf8(path, xo::xoLogFileEcho, settings.number("log/maxKilobytes", 64) * kKilobyte,
                                           static_cast<int>(settings.number("log/backups", 3)));
    return path;
}

// One line of each severity. A line is written when its xoLogObject goes, which for a temporary is at the semicolon.
void tourOfTheLog(const Settings& settings) {
    xoLog& log = xoLog::edit();
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

// Saves one value and keeps whatever else the file holds.
bool saveRuns(const std::string& path, std::int64_t runs) {
    xoVariant::xoVariantMapImpl changes;
    changes["runs"] = runs;
    return xo::SaveIniFile(path, changes, /*merge=*/true);
}

// A periodic updater calls this on its own thread: at once when it is added, then every second.
void tick(void* ticks) {
    xoLogObject(xo::xoLogInfo, "updater") << "tick";
    static_cast<xo::xoSemaphore*>(ticks)->release();
}

// One job for each country, all queued at once.
std::size_t countRegions(const catalogue::Regions& regions) {
    catalogue::CountryWorker worker;
    worker.startThread("countries");
    std::deque<catalogue::CountryJob> jobs;  // they stay ours while the worker has them
    worker.beginWake();
    for (const auto& [country, codes] : regions) worker.addJob(&jobs.emplace_back(country, codes));
    worker.endWake();
    worker.awaitJobs(static_cast<unsigned int>(jobs.size()));
    return worker.regionCount();
}

bool countCountries(const Places& places, const Settings& settings) {
    const std::string path = places.folder + "/" + settings.text("catalogue/data", "data") + "/" +
                             settings.text("catalogue/table", "regions.csv");
    catalogue::Regions regions;
    if (!catalogue::readRegions(path, regions)) {
        xoLogObject(xo::xoLogCritical) << "the table cannot be read: " << path;
        return false;
    }
    xo::xoSemaphore ticks(0);
    xo::xoThreadPeriodicalUpdater updater(1);
    updater.addCallback(&tick, &ticks);
    const std::size_t count = countRegions(regions);
    ticks.acquire(2);
    std::cout << "table:    " << path << ": " << regions.size() << " countries, " << count << " regions\n";
    return true;
}

bool run(bool withCrash) {
    Places places;
    if (!findPlaces(places)) {
        xoLogObject(xo::xoLogCritical) << "the program's own folder cannot be found";
        return false;
    }
    Settings settings;
    if (!settings.load(places.settings))
        xoLogObject(xo::xoLogWarning) << "no settings, defaults hold: " << places.settings;

    const std::string logPath = installLog(places, settings);
    const std::int64_t runs = settings.number("runs", 0) + 1;
    xoLogObject(xo::xoLogInfo) << "run " << runs << " begins";
    tourOfTheLog(settings);

    bool good = saveRuns(places.settings, runs);
    if (!good) xoLogObject(xo::xoLogCritical) << "the settings cannot be saved: " << places.settings;

    std::cout << "settings: " << places.settings << "\nlog:      " << logPath << '\n';
    good = countCountries(places, settings) && good;
    if (withCrash) good = catalogue::surviveCrash() && good;
    xoLogObject(xo::xoLogInfo) << "run " << runs << (good ? " ends well" : " ends with failures");
    return good;
}

}  // namespace

int main(int count, char** arguments) {
    xo::initializeXoSystem(2, false);
    const bool good = run(/*withCrash=*/count > 1 && std::strcmp(arguments[1], "--crash") == 0);
    xo::terminateXoSystem();
    return good ? 0 : 1;
}
