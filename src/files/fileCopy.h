// Copies of single files that can be watched and canceled.
#ifndef XO_FILES_FILECOPY_H
#define XO_FILES_FILECOPY_H

#include <cstdint>
#include <string>

#include "platform/windows.h"

namespace xo {
class xoProgressNotifier;
}

namespace xo::files {

// The error of a copy that was canceled. The target is deleted then, also one that was there before.
constexpr DWORD kCopyCanceled = ERROR_REQUEST_ABORTED;

// Copies as CopyFileExW does with its flags. The size is the one expected of the source, for the progress only; the
// notifier may be null. Returns the error, as all functions here do.
DWORD copyFile(const std::wstring& from, const std::wstring& to, DWORD flags, std::uint64_t size,
               xoProgressNotifier* progress);

// Copies the content between two open files, from their positions on, for paths that are too long for CopyFileExW.
DWORD copyContent(HANDLE from, HANDLE to, std::uint64_t size, xoProgressNotifier* progress);

// Sets the times of a file or folder to those of another one, and its attributes too if asked. Failures are ignored:
// not every file system stores them.
void copyTimes(HANDLE from, HANDLE to, bool withAttributes);

// Turns an empty file or folder into the same link as another one.
DWORD copyReparsePoint(HANDLE from, HANDLE to);

// Marks a file or folder for deletion, which happens when its last handle is closed. The handle needs the right DELETE.
DWORD setDeleteOnClose(HANDLE target);

}  // namespace xo::files

#endif
