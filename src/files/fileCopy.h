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

// Marks a file or folder for deletion, which happens when its last handle is closed, or takes the mark away. The handle
// needs the right DELETE.
DWORD setDeleteOnClose(HANDLE target, bool isDeleted = true);

// The attributes of an open file or folder; 0 when they cannot be read.
DWORD attributesOf(HANDLE file);

// Sets the attributes, and leaves the times as they are. A failure is ignored.
void setAttributes(HANDLE file, DWORD attributes);

// The path of an open file or folder, without links. Empty when Windows cannot determine it. The kind of names is
// FILE_NAME_NORMALIZED or FILE_NAME_OPENED.
std::wstring finalPath(HANDLE file, DWORD nameKind);

}  // namespace xo::files

#endif
