// A reference of a document, taken apart. It may come from anywhere, so that everything is checked here.
#ifndef XO_XREF_REFERENCE_H
#define XO_XREF_REFERENCE_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace xo::xref {

struct Reference {
    enum class Kind {
        Nowhere,   // names no file, or nothing that may be searched for
        Relative,  // begins with a name or ".."
        Rooted,    // begins with one separator, or with a drive and no separator: of a folder that is not known
        Drive,     // "D:/..."
        Share,     // "//server/share/..."
    };

    Kind kind = Kind::Nowhere;
    std::string root;                // "D:/" or "//server/share/"; empty for the other kinds
    std::size_t leavesFolders = 0;   // the ".." in front of a relative one
    std::vector<std::string> names;  // without "." and ".."; the last one is the file's. Empty only for Nowhere
};

// UTF-8 with either separator, or a "file:" URL.
Reference readReference(std::string_view text);

// The names with "/" between them.
std::string joinNames(const std::vector<std::string>& names);

}  // namespace xo::xref

#endif
