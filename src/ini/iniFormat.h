// The text of INI files: from and to maps of variants.
#ifndef XO_INI_INIFORMAT_H
#define XO_INI_INIFORMAT_H

#include <string>
#include <string_view>

#include "variant/treeCursor.h"

namespace xo::ini {

using Map = variant::Map;

constexpr std::string_view kTopSection = "General";
// Separates the keys of a path, both in the names of sections and in keys.
constexpr char kIniSeparator = '/';

// Adds the entries of an INI file's text to the map; what is wrong with a line is logged.
void readIni(std::string_view text, Map& map);

// The typed value of the trimmed text behind the equals sign. hasEscapes is whether it has a backslash: without one,
// the passes that replace escapes are left out.
xoVariant readValue(std::string_view text, bool hasEscapes);

// Appends the value as it is written behind the equals sign. For a type that cannot be written it logs the key and
// returns false, with nothing appended.
bool appendValue(std::string& out, std::string_view key, const xoVariant& value);

// Appends the whole file's text. Stops at the first value that cannot be written; the lines before it are appended.
bool appendSections(std::string& out, const Map& map);

// Assigns each leaf of the map to its path in the result, replacing a value that is there. Leaves below General belong
// to the top level.
void overlay(Map& result, const Map& map);

// Stores in updated the given text with the map's values in it; lines that they do not concern stay byte for byte.
// False, logged, when a value or a key cannot be written; updated is then unchanged.
bool updateIni(std::string_view text, const Map& map, std::string& updated);

}  // namespace xo::ini

#endif
