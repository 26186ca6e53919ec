// INI files: a map of variants as sections of "key=value" lines, and back.
//
//     xo::xoVariant::xoVariantMapImpl settings, changes;
//     xo::LoadIniFile("C:/data/app.ini", settings);
//     changes.editValuePath("window/width", 0, '/') = 800;
//     xo::UpdateIniFile("C:/data/app.ini", changes);
//
// The section "General", and what stands before any section, is the top level of the map; another section is the map
// under its name. A key may hold "/" and then names a value of maps further inside. Lines that begin with ";" are
// comments.
//
// Paths are UTF-8. An empty path, one with a NUL, and one that names a folder fail.
//
// Any thread may call; one map belongs to one call at a time. Two calls that change one file at the same time are safe,
// but the change of one may be lost: an xoLockFile keeps them apart. All functions return false when they fail.
// Failures of saving and updating also leave a CRITICAL line in the log, with the path and the system's error for a
// file that cannot be written; LoadIniFile only returns false. What is wrong inside a file is logged as a WARNING and
// skipped.
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
// False, without a line in the log, when the file cannot be opened or read; the map is then unchanged. Others may hold
// the file open.
XOSYSTEM_API bool LoadIniFile(const std::string& path, xoVariant::xoVariantMapImpl& map);

// Writes the map, in key order, in place of what the file held. With merge the file's own entries are kept, except
// those that the map has too; a map under the key "General", in the file or given, then counts as the top level.
// Merging writes the whole file anew nevertheless: comments, lines that are invalid or doubled, and the spelling of
// other keys' numbers (3.14159265, 0x1F, 010) are lost. UpdateIniFile keeps them.
//
// The new file takes the old one's place in one step and with its access list and attributes, so that others, and
// whoever comes after a crash, find one of the two, whole; whoever saves becomes its owner. The folder must take new
// files for that. Otherwise, and for a file that has hard links, is encrypted or compressed, or is kept open without
// shared deletion, the bytes are overwritten where they are. Moments in which others hold the file are waited for, an
// eighth of a second in all.
//
// Only INTEGER, REAL, BOOL and STRING can be written, REAL with six significant digits. At the first other value false
// is returned and the file is left with what stood before it. Also false when the file cannot be written whole (on a
// full disk it is left alone) or, with merge, when it exists and cannot be read; then it is left alone too. Keys are
// written as they are: one that holds a line end or "=" does not come back as the same key, nor does a text that reads
// as another type.
XOSYSTEM_API bool SaveIniFile(const std::string& path, const xoVariant::xoVariantMapImpl& map, bool merge = false);

// Lays the map's values over those of the file and leaves all else in the file as it is, byte for byte: comments, blank
// lines, order, spacing, line ends, the UTF-8 mark, the spelling of numbers, invalid and doubled lines. A key that the
// file has changes on its line (of several lines with one key on the first, which is the one that counts), and only
// where its value differs. A new key goes to the end of its section, a new section to the end of the file, both with
// the line end of the file's first line. A map under the key "General" counts as the top level. A value that takes the
// place of a map removes that map's lines; a value that is in the way of a deeper key keeps its line, which then counts
// no more.
//
// LoadIniFile then gives the old map with the map's values in it, as far as SaveIniFile's values come back. A missing
// file is made, a file that has all the values already is not touched, and any other is replaced as by SaveIniFile.
//
// False, with nothing changed, when a value cannot be written or a key would not come back as that key (it is empty,
// has
// "=" or a line end in it or white space at an end, or begins as a comment or a section does), and when the file cannot
// be read or written.
XOSYSTEM_API bool UpdateIniFile(const std::string& path, const xoVariant::xoVariantMapImpl& map);

}  // namespace xo

#endif
