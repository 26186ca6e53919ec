// What the catalogue tells about itself, its machine and its results. It writes lines to standard output as
// xoProgressConsole does, so that they do not tear the bar.
#ifndef CATALOGUE_REPORT_H
#define CATALOGUE_REPORT_H

#include <deque>
#include <string>
#include <vector>

#include "countryWorker.h"
#include "settings.h"
#include "xoSystem/xoAsciiTableBuilder.h"

namespace catalogue {

// The version of the library and the state of the power line, on standard output.
void showMachine();

// What is known of the machine, as a table on standard output: "./dev demo --system".
void showInventory();

// A step of the work, and what it has done.
struct Step {
    std::string name;
    std::size_t items;
    std::uint64_t bytes;
    double seconds;
};

// A table of the steps: what they did, how long they took and how fast they were.
void showSteps(const std::vector<Step>& steps, xo::AsciiTableBuilder::Style style);

// One log line of each severity, and how qualifiers choose among the DEBUG lines.
void tourOfTheLog(const Settings& settings);

// One row for each country, in as many files of at most maxRows rows as that takes. A failure is logged.
bool writeSummary(const std::string& folder, unsigned int maxRows, const std::deque<CountryJob>& jobs);

}  // namespace catalogue

#endif
