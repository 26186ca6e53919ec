#include "countries.h"

#include <algorithm>
#include <map>

#include "xoSystem/xoCsvFileReader.h"
#include "xoSystem/xoLog.h"

namespace catalogue {
namespace {

using Row = std::vector<xo::xoVariant>;

// Where the columns stand that are wanted.
struct Columns {
    std::size_t id, code, name;

    bool find(const Row& header) {
        return find(header, "id", id) && find(header, "code", code) && find(header, "name", name);
    }
    std::size_t last() const { return std::max({id, code, name}); }

private:
    static bool find(const Row& header, const char* title, std::size_t& column) {
        const auto place = std::find(header.begin(), header.end(), xo::xoVariant(title));
        column = static_cast<std::size_t>(place - header.begin());
        return place != header.end();
    }
};

}  // namespace

bool readCountries(const std::string& path, std::vector<Country>& countries, xo::xoProgressNotifier* progress) {
    // With its types guessed a cell of digits is an integer; without, all cells are texts.
    xo::xoCsvFileReader reader(/*enableTypeGuess=*/true);
    reader.setFileName(path);
    if (!reader.parseCsvFile(progress)) {
        xo::xoLogObject(xo::xoLogCritical) << "the table cannot be read: " << path << ": " << reader.getLastError();
        return false;
    }
    const auto& table = reader.getTable();
    Columns columns;
    if (table.empty() || !columns.find(table.front())) {
        xo::xoLogObject(xo::xoLogCritical) << "the table lacks a column: " << path;
        return false;
    }

    std::map<std::string, std::vector<Region>> byCountry;
    for (auto row = table.begin() + 1; row != table.end(); ++row) {
        if (row->size() <= columns.last()) continue;  // a short or empty line
        Region region{(*row)[columns.id].toInteger(), (*row)[columns.code].toString(), (*row)[columns.name].toString()};
        byCountry[region.code.substr(0, region.code.find('-'))].push_back(std::move(region));
    }
    for (auto& [code, regions] : byCountry) countries.push_back({code, std::move(regions)});
    return true;
}

std::size_t countRegions(const std::vector<Country>& countries) {
    std::size_t count = 0;
    for (const Country& country : countries) count += country.regions.size();
    return count;
}

}  // namespace catalogue
