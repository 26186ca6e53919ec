// The table of regions, by country.
#ifndef CATALOGUE_COUNTRIES_H
#define CATALOGUE_COUNTRIES_H

#include <cstdint>
#include <string>
#include <vector>

#include "xoSystem/xoProgress.h"

namespace catalogue {

struct Region {
    std::int64_t id = 0;
    std::string code;  // "DE-BE": begins with its country
    std::string name;
};

struct Country {
    std::string code;
    std::vector<Region> regions;
};

// Reads a CSV table whose first line names the columns id, code and name, among others. A failure is logged.
bool readCountries(const std::string& path, std::vector<Country>& countries, xo::xoProgressNotifier* progress);

std::size_t countRegions(const std::vector<Country>& countries);

}  // namespace catalogue

#endif
