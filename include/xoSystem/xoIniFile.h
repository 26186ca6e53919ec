// INI files: a map of variants as sections of "key=value" lines, and back.
//
//     xo::xoVariant::xoVariantMapImpl settings;
//     xo::LoadIniFile("C:/data/app.ini", settings);
//     settings.editValuePath("window/width", 0, '/') = 800;
//     xo::SaveIniFile("C:/data/app.ini", settings, true);
//
// The section "General", and what stands before any section, is the top level of the map; another section is the map
// under its name. A key may hold "/" and then names a value of maps further inside. Lines that begin with ";" are
// comments, which saving does not keep.
//
// Any thread may call; one map belongs to one call at a time. Failures give false, and what is wrong inside a file is
// logged and skipped (WARNING for a line, CRITICAL for a failure to save).
#ifndef XOSYSTEM_XOINIFILE_H
#define XOSYSTEM_XOINIFILE_H

#include <string>

#include "xoSystem/xoExport.h"
#include "xoSystem/xoVariant.h"

namespace xo {

// Adds the file's entries to the map. Values come back as BOOL ("true", "FALSE"), INTEGER, REAL or STRING, quoted or
// not. A key that the map has already keeps its value, with a warning; a value that is in the way of a deeper key is
// replaced by a map. A NUL is a character like any other, a UTF-8 mark at the start of the file is skipped.
//
// False when the file cannot be opened or read; the map is then unchanged. Others may hold the file open.
XOSYSTEM_API bool LoadIniFile(const std::string& path, xoVariant::xoVariantMapImpl& map);

// Writes the map, in key order, in place of what the file held. The new file takes the old one's place all at once and
// with its permissions, so that others, and whoever comes after a crash, find one of the two, whole; the folder must
// take new files for that. Otherwise, and for a file that has hard links, is encrypted or compressed, or is kept open
// without shared deletion, the bytes are overwritten where they are. Moments in which others hold the file are waited
// for, an eighth of a second in all. With merge the file's own entries are kept, except those that the map has too; a
// map under the key "General", in the file or given, then counts as the top level.
//
// Only INTEGER, REAL, BOOL and STRING can be written, REAL with six significant digits. At the first other value false
// is returned and the file is left with what stood before it. Also false when the file cannot be written whole or, with
// merge, when it exists and cannot be read; in that last case it is left alone. Keys are written as they are: one that
// holds a line end or "=" does not come back as the same key, nor does a text that reads as another type.
XOSYSTEM_API bool SaveIniFile(const std::string& path, const xoVariant::xoVariantMapImpl& map, bool merge = false);

}  // namespace xo

#endif
