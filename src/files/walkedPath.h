// The path along which a tree is walked, and the means to open what lies on it however deep it is.
#ifndef XO_FILES_WALKEDPATH_H
#define XO_FILES_WALKEDPATH_H

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/handle.h"

namespace xo::files {

// How a file or folder is opened. Everyone else may go on reading, writing, renaming and deleting it.
struct OpenMode {
    ACCESS_MASK access;  // FILE_READ_ATTRIBUTES, DELETE, ...; SYNCHRONIZE is added
    ULONG kind;          // FILE_DIRECTORY_FILE, FILE_NON_DIRECTORY_FILE, or 0 for either
    bool followsLink;    // false opens a link itself, and the kind is the link's
};

struct Opened {
    platform::KernelHandle handle;
    DWORD error;  // the Win32 code when there is no handle
};

// Opens what the path leads to from an open folder; from null, a path as the kernel takes it.
Opened openRelative(HANDLE folder, std::wstring_view path, const OpenMode& mode);

// What becomes of a file or folder that is there.
enum class Existing : ULONG { Fails, IsOpened, IsEmptied };

struct Created {
    Opened opened;
    bool isNew;  // it was not there before
};

// Makes what the path leads to, as NtCreateFile does.
Created createRelative(HANDLE folder, std::wstring_view path, const OpenMode& mode, Existing existing);

// Windows takes 32,767 characters at once. So every now and then a folder on the path is held open, and what lies below
// is opened from there; that also saves the system the long way from the root each time.
class WalkedPath {
public:
    // Begins at a folder that is given by its extended path; an empty one names no folder.
    explicit WalkedPath(std::wstring_view extendedPath);

    std::size_t length() const noexcept { return mPath.size(); }

    // What has been appended, without a separator in front.
    std::wstring_view below() const noexcept;

    void append(std::wstring_view name);
    void cut(std::size_t length) { mPath.resize(length); }

    // Opens what the first `length` characters lead to.
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
