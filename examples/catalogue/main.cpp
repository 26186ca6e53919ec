// The catalogue: a small host of xoSystem to copy from, and its typical use from beginning to end. It starts the
// library, loads its settings, keeps a rotating log, walks its data folder, reads a table of regions, lets jobs write
// them as binary records and a helper program read those back, writes a summary, saves its settings, and ends. With
// --crash it shows how it survives a crash. Every failure is logged; the exit status tells whether all went well.
#include <cstring>
#include <deque>
#include <iostream>

#include "countryWorker.h"
#include "crash.h"
#include "helper.h"
#include "report.h"
#include "settings.h"
#include "xoSystem/xoSystem.h"

namespace {

using catalogue::Country;
using catalogue::CountryJob;
using catalogue::Settings;
using xo::xoLog;
using xo::xoLogObject;

// Where the program finds what is its own: everything lies beside the executable.
struct Places {
    std::string folder;
    std::string settings;
    std::string data;
    std::string output;
    std::string records;
};

bool findPlaces(Places& places, Settings& settings) {
    if (!xo::xoDirUtils::GetFolderOfCurrentProcessUtf8(places.folder)) {
        xoLogObject(xo::xoLogCritical) << "the program's own folder cannot be found";
        return false;
    }
    places.settings = places.folder + "/settings.ini";
    if (!settings.load(places.settings))
        xoLogObject(xo::xoLogWarning) << "no settings, defaults hold: " << places.settings;

    places.data = places.folder + "/" + settings.text("catalogue/data", "data");
    places.output = places.folder + "/" + settings.text("catalogue/output", "output");
    places.records = places.output + "/records";
    if (xo::xoDirUtils::DirExistsUtf8(places.output)) xo::xoDirUtils::ClearFolderUtf8(places.output);
    if (xo::xoDirUtils::MkpathUtf8(places.records)) return true;
    xoLogObject(xo::xoLogCritical) << "the folder cannot be made: " << places.records;
    return false;
}

// A log of limited size: when the file is full it becomes the newest backup.
void installLog(const Places& places, const Settings& settings) {
    const std::string path = places.folder + "/" + settings.text("log/file", "catalogue.log");
    constexpr std::int64_t kKilobyte = 1024;
    xoLog::edit().installFileHandlerExUtf8(path, xo::xoLogFileEcho, settings.number("log/maxKilobytes", 64) * kKilobyte,
                                           static_cast<int>(settings.number("log/backups", 3)));
    std::cout << "settings: " << places.settings << "\nlog:      " << path << '\n';
}

// Every table in the data folder and the folders below it.
std::vector<std::string> findTables(const Places& places) {
    std::vector<std::string> tables;
    const std::vector<std::string> extensions = {"csv"};
    xo::xoDirUtils::GlobFileAndFolderUtf8(places.data, &tables, nullptr, &extensions, xo::xoDirUtils::GlobRecursive);
    for (const std::string& table : tables) std::cout << "table:    " << table << '\n';
    return tables;
}

// A periodic updater calls this on its own thread: at once when it is added, then every second.
void tick(void* ticks) {
    xoLogObject(xo::xoLogInfo, "updater") << "tick";
    static_cast<xo::xoSemaphore*>(ticks)->release();
}

// One job for each country, all queued at once. The jobs stay ours while the worker has them.
bool writeRecords(const std::vector<Country>& countries, const Places& places, std::deque<CountryJob>& jobs) {
    catalogue::CountryWorker worker(places.records);
    worker.startThread("countries");
    worker.beginWake();
    for (const Country& country : countries) worker.addJob(&jobs.emplace_back(country));
    worker.endWake();
    worker.awaitJobs(jobs.size());

    bool good = true;
    std::uint64_t bytes = 0;
    for (const CountryJob& job : jobs) {
        good = good && job.good();
        bytes += job.bytes();
    }
    std::cout << "records:  " << jobs.size() << " files, " << bytes << " bytes\n";
    return good;
}

bool makeCatalogue(const Places& places, const Settings& settings) {
    xoHighResTimer timer;
    timer.start();
    std::vector<Country> countries;
    const std::vector<std::string> tables = findTables(places);
    if (tables.empty()) xoLogObject(xo::xoLogWarning) << "no table in " << places.data;
    for (const std::string& table : tables)
        if (!catalogue::readCountries(table, countries)) return false;
    const std::size_t regions = catalogue::countRegions(countries);
    std::cout << "read:     " << countries.size() << " countries, " << regions << " regions\n";

    std::deque<CountryJob> jobs;
    if (!writeRecords(countries, places, jobs)) return false;
    const auto maxRows = static_cast<unsigned int>(settings.number("catalogue/rowsPerFile", 100));
    if (!catalogue::writeSummary(places.output, maxRows, jobs)) return false;
    std::cout << "elapsed:  " << timer.getElapsedTimeInSec() << " s\n";

    return catalogue::checkRecords(places.folder, places.records, regions);
}

bool run(bool withCrash) {
    xo::xoTimer timer(/*snapNow=*/true);
    Places places;
    Settings settings;
    if (!findPlaces(places, settings)) return false;
    installLog(places, settings);
    catalogue::showMachine();

    const std::int64_t runs = settings.number("runs", 0) + 1;
    xoLogObject(xo::xoLogInfo) << "run " << runs << " begins";
    catalogue::tourOfTheLog(settings);

    xo::xoSemaphore ticks(0);
    xo::xoThreadPeriodicalUpdater updater(1);
    updater.addCallback(&tick, &ticks);
    bool good = makeCatalogue(places, settings);
    ticks.acquire();
    if (withCrash) good = catalogue::surviveCrash() && good;

    settings.change("runs", runs);
    settings.change("last/milliseconds", timer.getElapsedMs());
    if (!settings.save(places.settings)) {
        xoLogObject(xo::xoLogCritical) << "the settings cannot be saved: " << places.settings;
        good = false;
    }
    xoLogObject(xo::xoLogInfo) << "run " << runs << (good ? " ends well" : " ends with failures") << " after "
                               << timer.getElapsedMs() << " ms";
    return good;
}

}  // namespace

int main(int count, char** arguments) {
    xo::initializeXoSystem(2, false);
    const bool good = run(/*withCrash=*/count > 1 && std::strcmp(arguments[1], "--crash") == 0);
    xo::terminateXoSystem();
    std::cout << (good ? "all well\n" : "failed, see the log\n");
    return good ? 0 : 1;
}
