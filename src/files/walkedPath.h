// The current path of a walk, which can be opened at any depth.
#ifndef XO_FILES_WALKEDPATH_H
#define XO_FILES_WALKEDPATH_H

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/handle.h"

namespace xo::files {

// The way to open a file or folder. It is shared for reading, writing and deletion.
struct OpenMode {
    ACCESS_MASK access;  // FILE_READ_ATTRIBUTES, DELETE, ...; SYNCHRONIZE is added
    ULONG kind;          // FILE_DIRECTORY_FILE, FILE_NON_DIRECTORY_FILE, or 0 for either
    bool followsLink;    // false opens a link itself, and the kind is the link's
};

struct Opened {
    platform::KernelHandle handle;
    DWORD error;  // the Win32 code when there is no handle
};

// Opens a path relative to an open folder, or for null a path in the form of the kernel.
Opened openRelative(HANDLE folder, std::wstring_view path, const OpenMode& mode);

// What becomes of a file or folder that is there.
enum class Existing : ULONG { Fails, IsOpened, IsEmptied };

struct Created {
    Opened opened;
    bool isNew;  // it was not there before
};

// Makes what the path leads to, as NtCreateFile does.
Created createRelative(HANDLE folder, std::wstring_view path, const OpenMode& mode, Existing existing);

// Windows accepts at most 32,767 characters. So from time to time a folder on the path is held open, and deeper files
// are opened relative to it, which is also faster than from the root.
class WalkedPath {
public:
    // Begins at a folder that is given by its extended path; an empty one names no folder.
    explicit WalkedPath(std::wstring_view extendedPath);

    std::size_t length() const noexcept { return mPath.size(); }

    // The appended part, without a leading separator.
    std::wstring_view below() const noexcept;

    void append(std::wstring_view name);
    void cut(std::size_t length) { mPath.resize(length); }

    // Opens the path of the first `length` characters.
    Opened open(std::size_t length, const OpenMode& mode) const;
    // Opens an entry of the folder to which the whole path leads.
    Opened openEntry(std::wstring_view name, const OpenMode& mode);

    // Makes the file or folder to which the whole path leads, or an entry in that folder.
    Created create(const OpenMode& mode, Existing existing) const;
    Created createEntry(std::wstring_view name, const OpenMode& mode, Existing existing);

    // The extended path of an entry in the folder to which the whole path leads.
    std::wstring extended(std::wstring_view name) const;

    // Takes the handle of the folder, to which the whole path leads, if the last folder held is far; else leaves it.
    void hold(platform::KernelHandle& folder);

    // Lets the folder go if it is held: nothing below is to be opened any more.
    void release() noexcept;

private:
    struct Held {
        std::size_t length;  // of its path
        platform::KernelHandle folder;
    };

    // Where to begin for the first `length` characters, and what of them lies below.
    std::pair<HANDLE, std::wstring_view> nearest(std::size_t length) const;

    std::wstring mPath;  // as the kernel takes it: with "\??\" in front
    std::size_t mTopLength;
    std::vector<Held> mHeld;
};

}  // namespace xo::files

#endif
