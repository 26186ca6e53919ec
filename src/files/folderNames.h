// Lists folders, and stores their entries in little memory.
#ifndef XO_FILES_FOLDERNAMES_H
#define XO_FILES_FOLDERNAMES_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/windows.h"

namespace xo::files {

struct FolderEntry {
    std::wstring_view name;  // valid until the next read() or cut()
    bool isFolder;
    bool isLink;          // a folder that leads to another one: a junction, a symbolic link, a mounted volume
    bool isReparsePoint;  // a link, or a folder whose content a service provides on demand
    std::uint64_t size;   // of a file, in bytes, as listed by the folder; 0 unless sizes are kept
};

// The entries of some folders, one after the other, in the order in which the system lists them. They form a stack: the
// folder that was read last is removed first.
class FolderNames {
public:
    explicit FolderNames(bool keepsSizes);

    struct Reading {
        bool isBegun;  // at least the first entries could be read
        DWORD error;   // why nothing, or not everything, could be read; else ERROR_SUCCESS
    };

    // Adds the entries of the folder except "." and "..".
    Reading read(HANDLE folder);

    // The end of the stack: the position of the next entry that is added. cut() removes the entries from a position on.
    std::size_t size() const noexcept { return mEntries.size(); }
    void cut(std::size_t size) { mEntries.resize(size); }

    // Returns the entry at a position below size(), and advances the position.
    FolderEntry next(std::size_t& position) const noexcept;

private:
    // Adds the next entries that Windows returns. Returns its error if there are none.
    DWORD readSome(HANDLE folder);

    std::unique_ptr<std::byte[]> mBuffer;  // for the system's answers
    const bool mKeepsSizes;
    // One text instead of an object for each entry, which large folders would pay for. For each entry: its kind, the
    // length of its name, the name, and the size if sizes are kept.
    std::wstring mEntries;
};

}  // namespace xo::files

#endif
