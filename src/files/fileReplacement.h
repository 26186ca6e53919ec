// A file's new content, which takes the place of the old one in one step: a reader, and whoever opens the file after a
// crash, finds one of the two, whole.
#ifndef XO_FILES_FILEREPLACEMENT_H
#define XO_FILES_FILEREPLACEMENT_H

#include <string>
#include <string_view>
#include <utility>

#include "platform/handle.h"

namespace xo::files {

// Whether it is a file on a disk: no folder, volume, pipe, console or other device.
bool isDiskFile(const platform::FileHandle& file);

// The bytes go to a new file beside the old one, which then gets its name; it has the old one's access list, attributes
// and time of creation. Until then the new file is marked for deletion, so that Windows removes it with its last handle
// whatever ends the attempt.
//
// A symbolic link stays, and its target is replaced. The file is overwritten in place where a new one cannot take its
// place: where the folder takes no new file, where the old one has other hard links, is encrypted or compressed, and
// where another process keeps it open without sharing deletion.
//
// Both steps return the error of Windows, or ERROR_SUCCESS.
class FileReplacement {
public:
    // An absolute path, as toExtendedPath returns it: the working folder may change between the steps.
    explicit FileReplacement(std::wstring path) : mPath(std::move(path)) {}

    // Fails when there is no such folder, or when the file cannot be opened for writing.
    DWORD begin();

    // Once, after a begin that succeeded. After a failure the old file is as it was, unless it is overwritten in place
    // and the disk failed in the middle of that.
    DWORD commit(std::string_view bytes);

    // The same for content that comes piece by piece: between the two steps it is written to pieces(), which can be
    // read too. Only for files on a disk. Where the file is overwritten in place, the pieces are gathered in a
    // temporary file.
    DWORD beginInPieces();
    HANDLE pieces() const { return mNew.get(); }
    DWORD commitPieces();

private:
    platform::FileHandle createReplacement(DWORD flags);
    DWORD takePlace();
    DWORD openInPlace();
    template <class Attempt>
    DWORD whileBusy(DWORD busyError, Attempt attempt);

    std::wstring mPath;
    std::wstring mTarget;           // of the link that mPath may be; valid while mNew takes its place
    platform::FileHandle mNew;      // none where the file is overwritten in place, or the temporary file of its pieces
    platform::FileHandle mInPlace;  // the file itself, with its old bytes
    ULONGLONG mPatienceMs = 125;    // what is left of the time to wait for others, in all
};

}  // namespace xo::files

#endif
