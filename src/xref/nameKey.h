// Names and paths in the form in which the file system compares them.
#ifndef XO_XREF_NAMEKEY_H
#define XO_XREF_NAMEKEY_H

#include <cstdint>
#include <string>
#include <string_view>

namespace xo::xref {

// The same text for all spellings that name one file: composed letters (NFC), upper case by the mapping that knows no
// language. For comparisons only, not for access to the file.
std::string nameKey(std::string_view utf8);

// For a hash table in memory.
std::uint32_t hashOf(std::string_view key);

// How many names of two paths with "/" are equal, counted from their ends.
unsigned countSharedNames(std::string_view a, std::string_view b);

// Whether the key of a path lies below that of a folder.
bool isBelow(std::string_view pathKey, std::string_view folderKey);

}  // namespace xo::xref

#endif
