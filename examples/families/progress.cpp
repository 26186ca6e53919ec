// An import of two tables that can be watched and canceled. The program watches it twice: by a notifier that is called
// on the working thread, and by the line that a console would show.
#include <iostream>
#include <string>
#include <vector>

#include "xoSystem/xoProgress.h"
#include "xoSystem/xoProgressConsole.h"

namespace {

using Table = std::vector<std::string>;

bool readTable(const Table& table, const std::string& name, xo::xoProgressNotifier* progress) {
    xo::xoProgressScope rows(progress, table.size(), name, xo::ProgressUnitItems);
    for (const std::string& row : table) {
        if (row.empty()) return false;
        if (!rows.advance()) return false;  // canceled
    }
    return true;
}

// The big table is three quarters of the work.
bool import(const Table& small, const Table& big, xo::xoProgressNotifier* progress) {
    xo::xoProgressScope work(progress, {1, 3}, "Import");
    if (!readTable(small, "countries", progress)) return false;
    work.advance();
    return readTable(big, "regions", progress);
}

const char* wordFor(xo::xoProgressState::Phase phase) {
    switch (phase) {
        case xo::xoProgressState::PhaseDone: return "done";
        case xo::xoProgressState::PhaseStopped: return "stopped";
        case xo::xoProgressState::PhaseCanceled: return "canceled";
        default: return "running";
    }
}

// Prints each tenth, and cancels at a given fraction.
class Printer final : public xo::xoProgressNotifier {
public:
    explicit Printer(double cancelAt = 2) : xoProgressNotifier(/*intervalMs=*/0), mCancelAt(cancelAt) {}

private:
    void onProgress(const xo::xoProgressState& state) override {
        if (state.phase != xo::xoProgressState::PhaseRunning) {
            std::cout << wordFor(state.phase) << " at " << static_cast<int>(state.fraction * 100) << " %\n";
            return;
        }
        if (state.fraction >= mNext) {
            std::cout << state.title << ": " << state.text << ' ' << static_cast<int>(state.fraction * 100 + 0.5)
                      << " %\n";
            mNext += 0.25;
        }
        if (state.fraction >= mCancelAt) cancel();
    }

    double mNext = 0.25;
    double mCancelAt;
};

}  // namespace

int main() {
    const Table countries(8, "country"), regions(12, "region");

    Printer whole;
    std::cout << (import(countries, regions, &whole) ? "imported" : "not imported") << "\n\n";

    Printer impatient(0.5);
    std::cout << (import(countries, regions, &impatient) ? "imported" : "not imported") << "\n\n";

    // What xo::xoProgressConsole shows while a work runs, for windows of three widths.
    xo::xoProgressNotifier watched;
    xo::xoProgressScope work(&watched, 5000, "Import", xo::ProgressUnitItems);
    work.advance(1234);
    for (const unsigned columns : {60u, 40u, 20u})
        std::cout << xo::xoProgressConsole::FormatLine(watched.getState(), columns) << '\n';

    return import(countries, regions, nullptr) ? 0 : 1;  // nobody looks
}
