// Which tables the catalogue is made of.
#ifndef CATALOGUE_TABLES_H
#define CATALOGUE_TABLES_H

#include <string>
#include <vector>

#include "settings.h"

namespace catalogue {

// The tables that the settings name, "catalogue/tables", separated by commas. They may be named as they were called on
// another machine: each is looked for beside the settings and in the data folder. Without any, every table in the data
// folder and below it. A table that is missing is logged.
std::vector<std::string> findTables(const Settings& settings, const std::string& settingsPath,
                                    const std::string& dataFolder);

}  // namespace catalogue

#endif
