// Replaces the content of a file atomically: a reader, also one after a crash, finds either the old or the new content,
// complete.
#ifndef XO_FILES_FILEREPLACEMENT_H
#define XO_FILES_FILEREPLACEMENT_H

#include <string>
#include <string_view>
#include <utility>

#include "platform/handle.h"

namespace xo::files {

// Whether the handle is that of a file on a disk, not of a folder, volume, pipe, console or other device.
bool isDiskFile(const platform::FileHandle& file);

// Renames the file, which was opened with the right DELETE, to an absolute path as toExtendedPath returns it. A file
// that has the name is replaced in the same step; after a failure it is still there. Returns the error of Windows, or
// ERROR_SUCCESS.
DWORD moveOver(const platform::FileHandle& file, const std::wstring& path);

// The bytes are written to a new file in the same folder, which gets the access list, attributes and creation time of
// the old file and is then renamed to its name. Until then the new file is marked for deletion, so that Windows deletes
// it with its last handle if the attempt ends for any reason.
//
// A symbolic link is kept, and its target is replaced. The file is overwritten in place if it cannot be replaced: if no
// file can be created in the folder, if the old file has other hard links, is encrypted or compressed, or if another
// process has it open without sharing deletion.
//
// Both steps return the error of Windows, or ERROR_SUCCESS. Without memory they throw std::bad_alloc; the old file is
// unchanged then, and the new one is deleted with this object.
class FileReplacement {
public:
    // An absolute path, as toExtendedPath returns it: the working folder may change between the steps.
    explicit FileReplacement(std::wstring path) : mPath(std::move(path)) {}

    // Fails when there is no such folder, or when the file cannot be opened for writing.
    DWORD begin();

    // Called once, after begin has succeeded. If it fails, the old file is unchanged, unless it was overwritten in
    // place and the disk failed during that.
    DWORD commit(std::string_view bytes);

    // The same for content that comes piece by piece: between the two steps it is written to pieces(), which can be
    // read too. Only for files on a disk. Where the file is overwritten in place, the pieces are gathered in a
    // temporary file.
    DWORD beginInPieces();
    HANDLE pieces() const { return mNew.get(); }
    DWORD commitPieces();

private:
    // Creates the new file beside the old one, with its properties. Returns no handle if the file must be overwritten
    // in place.
    platform::FileHandle createReplacement(DWORD flags);
    // Renames the new file to the name of the old one.
    DWORD takePlace();
    // Opens the file itself for overwriting; creates it if it does not exist.
    DWORD openInPlace();
    template <class Attempt>
    DWORD whileBusy(DWORD busyError, Attempt attempt);

    std::wstring mPath;
    std::wstring mTarget;           // mPath without links: the path that mNew is renamed to
    platform::FileHandle mNew;      // null if the file is overwritten in place, or the temporary file of its pieces
    platform::FileHandle mInPlace;  // the file itself, with its old bytes
    // The remaining time to wait for other processes: scanners hold a new file for milliseconds, and a caller that
    // saves from a window must not seem to hang where another program keeps the file.
    ULONGLONG mPatienceMs = 125;
};

}  // namespace xo::files

#endif
