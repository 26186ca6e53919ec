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

// Copies as CopyFileExW does with its flags; gives the error. The size is what the source is expected to have; the
// notifier may be null.
DWORD copyFile(const std::wstring& from, const std::wstring& to, DWORD flags, std::uint64_t size,
               xoProgressNotifier* progress);

// Copies the content between two open files, for paths that are too long for CopyFileExW.
DWORD copyContent(HANDLE from, HANDLE to, std::uint64_t size, xoProgressNotifier* progress);

// Gives a file or folder the times of another one, and its attributes if asked, as far as the file system has them.
void copyTimes(HANDLE from, HANDLE to, bool withAttributes);

// Makes an empty file or folder the same link as another one.
DWORD copyReparsePoint(HANDLE from, HANDLE to);

// Marks what the handle stands for as to be deleted when the handle is closed; gives the error.
DWORD setDeleteOnClose(HANDLE target);

}  // namespace xo::files

#endif
