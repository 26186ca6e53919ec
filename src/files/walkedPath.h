// The current path of a walk, from which files can be opened at any depth.
#ifndef XO_FILES_WALKEDPATH_H
#define XO_FILES_WALKEDPATH_H

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/handle.h"

namespace xo::files {

// How a file or folder is opened. Unless said otherwise it is shared for reading, writing and deletion.
struct OpenMode {
    ACCESS_MASK access;  // FILE_READ_ATTRIBUTES, DELETE, ...; SYNCHRONIZE is added
    ULONG kind;          // FILE_DIRECTORY_FILE, FILE_NON_DIRECTORY_FILE, or 0 for either
    bool followsLink;    // false opens a link itself, and the kind is the link's
    ULONG share = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
};

// The result of opening. The handle is for synchronous operations.
struct Opened {
    platform::KernelHandle handle;
    DWORD error;  // the Win32 code when there is no handle
};

// Opens a path relative to an open folder. If the folder is null, the path is a full one with the kernel's prefix,
// "\??\".
Opened openRelative(HANDLE folder, std::wstring_view path, const OpenMode& mode);

// What happens if the file or folder exists already. The values are indexes of a table in the source.
enum class Existing : ULONG { Fails, IsOpened, IsEmptied };

struct Created {
    Opened opened;
    bool isNew;  // it did not exist before
};

// Creates the file or folder at a path; folder and path as above. mode.kind decides which.
Created createRelative(HANDLE folder, std::wstring_view path, const OpenMode& mode, Existing existing);

// A path may be longer than the 32,767 characters that Windows accepts: every kFar characters a folder on it is held
// open, and deeper files are opened relative to that folder, which is also faster. An object is used by one thread.
class WalkedPath {
public:
    // Begins at a folder, the top, that is given by its extended path ("\\?\..."). With an empty path nothing can be
    // opened, and nothing may be appended.
    explicit WalkedPath(std::wstring_view extendedPath);

    // The length of the whole path, which cut() takes to return to this folder.
    std::size_t length() const noexcept { return mPath.size(); }

    // The part below the top, without a separator in front.
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

    // Takes over the handle of the folder to which the whole path leads, if the last held folder is more than kFar
    // characters above it. Otherwise the handle stays with the caller.
    void hold(platform::KernelHandle& folder);

    // Closes the folder to which the whole path leads, if it is held. Called before the path is cut.
    void release() noexcept;

private:
    struct Held {
        std::size_t length;  // of the folder's path
        platform::KernelHandle folder;
    };

    // The deepest held folder above the path of the first `length` characters, and the rest of that path below it. Null
    // and the whole path when there is none. The view is into mPath.
    std::pair<HANDLE, std::wstring_view> nearest(std::size_t length) const;

    std::wstring mPath;       // as the kernel takes it: with "\??\" in front
    std::size_t mTopLength;   // the length of the path of the top
    std::vector<Held> mHeld;  // from the top down, by rising length
};

}  // namespace xo::files

#endif
