// The text of INI files: from and to maps of variants.
#ifndef XO_INI_INIFORMAT_H
#define XO_INI_INIFORMAT_H

#include <string>
#include <string_view>

#include "variant/treeCursor.h"

namespace xo::ini {

using Map = variant::Map;

constexpr std::string_view kTopSection = "General";
// Divides the keys of a path, in the names of sections and in those of keys alike.
constexpr char kIniSeparator = '/';

// Adds the entries of an INI file's text to the map; what is wrong with a line is logged.
void readIni(std::string_view text, Map& map);

// The typed value of the text behind the equals sign.
xoVariant readValue(std::string_view text, bool hasEscapes);

// Appends the value as it stands behind the equals sign. False, logged for the key, for a type that cannot be written.
bool appendValue(std::string& out, std::string_view key, const xoVariant& value);

// Appends the whole file's text. Stops at the first value that cannot be written; the lines before it are appended.
bool appendSections(std::string& out, const Map& map);

// Puts each leaf of the map in its place in the result, over the value there. Leaves below General belong to the top.
void overlay(Map& result, const Map& map);

// Makes the text that has the map's values laid over those of the given text, whose other lines stay byte for byte.
// False, logged, when a value or a key cannot be written.
bool updateIni(std::string_view text, const Map& map, std::string& updated);

}  // namespace xo::ini

#endif
