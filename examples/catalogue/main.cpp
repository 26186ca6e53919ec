// The catalogue: a small host of xoSystem to copy from, and its typical use from beginning to end. It starts the
// library, loads its settings, keeps a rotating log, walks its data folder, reads a table of regions, lets jobs write
// them as binary records and a helper program read those back, writes a summary, saves its settings, and ends. On a
// console a bar shows how far it is; a table at the end shows what was done. With --crash it shows how it survives a
// crash, with --system it only shows what machine it runs on, with --style=name it chooses the table's style and keeps
// that in its settings. Every failure is logged; the exit status tells whether all went well.
#include <deque>
#include <string_view>

#include "countryWorker.h"
#include "crash.h"
#include "helper.h"
#include "report.h"
#include "settings.h"
#include "tables.h"
#include "xoSystem/xoSystem.h"

namespace {

using catalogue::Country;
using catalogue::CountryJob;
using catalogue::Settings;
using xo::xoLog;
using xo::xoLogObject;
using xo::xoProgressConsole;
using Styles = xo::EnumHelper<xo::AsciiTableBuilder::Style>;

struct Options {
    bool withCrash = false;
    bool withSystem = false;
    std::string style;
};

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
    xoProgressConsole::WriteLine("settings: " + places.settings);
    xoProgressConsole::WriteLine("log:      " + path);
}

// A periodic updater calls this on its own thread: at once when it is added, then every second.
void tick(void* ticks) {
    xoLogObject(xo::xoLogInfo, "updater") << "tick";
    static_cast<xo::xoSemaphore*>(ticks)->release();
}

// Measures a step, from its construction to done().
class Measured {
public:
    Measured(std::vector<catalogue::Step>& steps, std::string name) : mSteps(steps), mName(std::move(name)) {
        mTimer.start();
    }

    void done(std::size_t items, std::uint64_t bytes) {
        mSteps.push_back({mName, items, bytes, mTimer.getElapsedTimeInSec()});
    }

private:
    std::vector<catalogue::Step>& mSteps;
    const std::string mName;
    xoHighResTimer mTimer;
};

bool readTables(const std::vector<std::string>& tables, std::vector<Country>& countries,
                std::vector<catalogue::Step>& steps, xo::xoProgressNotifier* progress) {
    xo::xoProgressScope work(progress, tables.size(), "tables");
    for (const std::string& table : tables) {
        const std::string name = table.substr(table.find_last_of("/\\") + 1);
        Measured step(steps, "read " + name);
        work.setText(name);
        const std::size_t before = catalogue::countRegions(countries);
        if (!catalogue::readCountries(table, countries, progress)) return false;
        work.advance();
        xo::xoFileInfoUtf8 info;
        xo::xoDirUtils::GetFileInfoUtf8(table, info);
        step.done(catalogue::countRegions(countries) - before, info.size);
    }
    return true;
}

// One job for each country, all queued at once. The jobs stay ours while the worker has them.
bool writeRecords(const std::vector<Country>& countries, const Places& places, std::deque<CountryJob>& jobs,
                  std::vector<catalogue::Step>& steps, xo::xoProgressNotifier* progress) {
    Measured step(steps, "write records");
    catalogue::CountryWorker worker(places.records);
    worker.startThread("countries");
    worker.beginWake();
    for (const Country& country : countries) worker.addJob(&jobs.emplace_back(country));
    worker.endWake();
    worker.awaitJobs(jobs.size(), progress);

    bool good = true;
    std::uint64_t bytes = 0;
    for (const CountryJob& job : jobs) {
        good = good && job.good();
        bytes += job.bytes();
    }
    step.done(jobs.size(), bytes);
    return good;
}

bool makeCatalogue(const Places& places, const Settings& settings, std::vector<catalogue::Step>& steps,
                   xo::xoProgressNotifier* progress) {
    xo::xoProgressScope work(progress, {1, 4, 5}, "Catalogue");
    std::vector<Country> countries;
    const std::vector<std::string> tables = catalogue::findTables(settings, places.settings, places.data);
    if (tables.empty()) xoLogObject(xo::xoLogWarning) << "no table in " << places.data;
    if (!readTables(tables, countries, steps, progress)) return false;
    work.advance();

    std::deque<CountryJob> jobs;
    if (!writeRecords(countries, places, jobs, steps, progress)) return false;
    const auto maxRows = static_cast<unsigned int>(settings.number("catalogue/rowsPerFile", 100));
    if (!catalogue::writeSummary(places.output, maxRows, jobs)) return false;
    work.advance();

    Measured check(steps, "read back");
    if (!catalogue::checkRecords(places.folder, places.records, catalogue::countRegions(countries), progress))
        return false;
    check.done(jobs.size(), steps.back().bytes);
    return true;
}

// The style of the table: as asked for, else as the settings have it.
xo::AsciiTableBuilder::Style chooseStyle(const Options& options, Settings& settings) {
    auto style = Styles::FromVariantOr(settings.value("report/style"), xo::AsciiTableBuilder::StyleBox);
    if (!options.style.empty() && !Styles::FromText(options.style, style))
        xoLogObject(xo::xoLogWarning) << "no style of tables: " << options.style;
    settings.change("report/style", Styles::ToVariant(style));
    return style;
}

bool run(const Options& options) {
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
    std::vector<catalogue::Step> steps;
    bool good = false;
    {
        xoProgressConsole bar(/*flags=*/0, /*delayMs=*/100);
        good = makeCatalogue(places, settings, steps, &bar);
    }
    ticks.acquire();
    catalogue::showSteps(steps, chooseStyle(options, settings));
    if (options.withCrash) good = catalogue::surviveCrash() && good;

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
    constexpr std::string_view kStyle = "--style=";
    Options options;
    for (int i = 1; i < count; ++i) {
        const std::string_view argument = arguments[i];
        if (argument == "--crash") options.withCrash = true;
        if (argument == "--system") options.withSystem = true;
        if (argument.substr(0, kStyle.size()) == kStyle) options.style = argument.substr(kStyle.size());
    }
    xo::initializeXoSystem(2, false);
    if (options.withSystem) catalogue::showInventory();
    const bool good = options.withSystem || run(options);
    xo::terminateXoSystem();
    xoProgressConsole::WriteLine(good ? "all well" : "failed, see the log");
    return good ? 0 : 1;
}
