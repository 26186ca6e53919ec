// What the catalogue tells about itself, its machine and its results.
#ifndef CATALOGUE_REPORT_H
#define CATALOGUE_REPORT_H

#include <deque>
#include <string>

#include "countryWorker.h"
#include "settings.h"

namespace catalogue {

// The version of the library and the state of the power line, on standard output.
void showMachine();

// One log line of each severity, and how qualifiers choose among the DEBUG lines.
void tourOfTheLog(const Settings& settings);

// One row for each country, in as many files of at most maxRows rows as that takes. A failure is logged.
bool writeSummary(const std::string& folder, unsigned int maxRows, const std::deque<CountryJob>& jobs);

}  // namespace catalogue

#endif
