// What folders hold, read at once and looked at later.
#ifndef XO_FILES_FOLDERNAMES_H
#define XO_FILES_FOLDERNAMES_H

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "platform/windows.h"

namespace xo::files {

struct FolderEntry {
    std::wstring_view name;  // until the next reading
    bool isFolder;
    bool mayLeadAway;  // a junction, symbolic link or the like
};

// The entries of some folders, one after the other, in the order in which the system lists them. They are stacked: the
// folder read last is the first to be forgotten.
class FolderNames {
public:
    FolderNames();

    // Adds what the folder holds but "." and "..". False when the system does not even begin to list it.
    bool read(HANDLE folder);

    std::size_t size() const noexcept { return mEntries.size(); }
    void cut(std::size_t size) { mEntries.resize(size); }

    // The entry at a position below size(), which moves to the one behind.
    FolderEntry next(std::size_t& position) const noexcept;

private:
    bool readSome(HANDLE folder);

    std::unique_ptr<std::byte[]> mRoom;  // for the system's answers
    std::wstring mEntries;               // of each its kind, the length of its name, the name
};

}  // namespace xo::files

#endif
