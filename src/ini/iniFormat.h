// What the reading and the writing of INI files share.
#ifndef XO_INI_INIFORMAT_H
#define XO_INI_INIFORMAT_H

#include <string_view>

#include "variant/treeCursor.h"

namespace xo::ini {

using Map = variant::Map;

constexpr std::string_view kTopSection = "General";
constexpr char kIniSeparator = '/';

// Adds the entries of an INI file's text to the map; what is wrong with a line is logged.
void readIni(std::string_view text, Map& map);

}  // namespace xo::ini

#endif
