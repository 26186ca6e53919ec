// The helper program of the catalogue, recordChecker, run to its end.
#ifndef CATALOGUE_HELPER_H
#define CATALOGUE_HELPER_H

#include <cstddef>
#include <string>

#include "xoSystem/xoProgress.h"

namespace catalogue {

// Lets the helper read the record files of a folder back, then the same records over a pipe, shows what it prints, and
// makes it overrun its time. True when all three end as they must.
bool checkRecords(const std::string& programFolder, const std::string& recordFolder, std::size_t expectedRegions,
                  xo::xoProgressNotifier* progress);

}  // namespace catalogue

#endif
