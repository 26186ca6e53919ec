// Empties a folder, and deletes it if asked.
#include "files/fileCopy.h"
#include "files/folderWalk.h"
#include "files/pathParts.h"
#include "files/walkProgress.h"
#include "platform/wideText.h"
#include "xoSystem/xoDirUtils.h"

#include <winternl.h>

namespace xo {
namespace {

using files::FolderWalk;
using files::Opened;
using files::OpenMode;

// FileDispositionInfoEx, which older headers lack.
constexpr auto kDispositionInfoEx = static_cast<FILE_INFO_BY_HANDLE_CLASS>(21);

constexpr ULONG kFile = FILE_NON_DIRECTORY_FILE;
constexpr ULONG kFolder = FILE_DIRECTORY_FILE;

// Deletes as DeleteFileW and RemoveDirectoryW do (POSIX semantics): the name is removed at once, even while another
// program has the file open, and read-only files are deleted too. Windows before version 1809 and some file systems do
// not support it.
// https://learn.microsoft.com/windows-hardware/drivers/ddi/ntddk/ns-ntddk-_file_disposition_information_ex
bool deleteAtOnce(HANDLE target) {
    FILE_DISPOSITION_INFO_EX info{};
    info.Flags = FILE_DISPOSITION_FLAG_DELETE | FILE_DISPOSITION_FLAG_POSIX_SEMANTICS |
                 FILE_DISPOSITION_FLAG_IGNORE_READONLY_ATTRIBUTE;
    return ::SetFileInformationByHandle(target, kDispositionInfoEx, &info, sizeof info) != FALSE;
}

// Deletes the file that open(access) opens, and returns the error. The read-only attribute belongs to the file, not to
// its name: if it has to be removed for the deletion, it is set again, because the file may have other hard links.
template <class Open>
DWORD deleteOpened(Open open) {
    const Opened target = open(DELETE | FILE_READ_ATTRIBUTES);
    if (!target.handle) return target.error;
    if (deleteAtOnce(target.handle.get())) return ERROR_SUCCESS;
    const DWORD attributes = files::attributesOf(target.handle.get());
    if ((attributes & FILE_ATTRIBUTE_READONLY) == 0) return files::setDeleteOnClose(target.handle.get());

    const Opened writable = open(FILE_WRITE_ATTRIBUTES);
    if (!writable.handle) return writable.error;
    files::setAttributes(writable.handle.get(), attributes & ~DWORD{FILE_ATTRIBUTE_READONLY});
    const DWORD error = files::setDeleteOnClose(target.handle.get());
    files::setAttributes(writable.handle.get(), attributes);
    return error;
}

// Whether the path is that of a link to a folder. A reparse point whose tag is unknown counts as a link, because
// deleting what it leads to would be worse than deleting the link.
bool isFolderLink(const std::wstring& path) {
    WIN32_FIND_DATAW found;
    const platform::FindHandle search(::FindFirstFileW(path.c_str(), &found));
    if (!search || (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) return false;
    return found.dwReserved0 == 0 || IsReparseTagNameSurrogate(found.dwReserved0);
}

// One call of ClearFolderUtf8. Continues after failures, so that as much as possible is deleted.
class FolderClearing : public FolderWalk::Task {
public:
    using Step = FolderWalk::Step;

    FolderClearing(const std::string& folder, bool removesTop, std::string* error, const bool* cancel,
                   xoProgressNotifier* progress)
        : mTop(files::searchedFolder(folder)),
          mGiven(folder),
          mRemovesTop(removesTop),
          mError(error),
          mCancel(cancel),
          mProgress(progress) {
        while (!mGiven.empty() && (mGiven.back() == '\\' || mGiven.back() == '/')) mGiven.pop_back();
    }

    bool run() {
        if (isCancelled(mProgress.goesOn())) return false;
        FolderWalk walk(*this, mTop, /*keepsFolderOpen=*/true);
        // Of a link only the link is removed, not the content of its target. Without mRemovesTop the target is emptied.
        if (mRemovesTop && isFolderLink(mTop)) {
            removeFolder(walk);
        } else {
            walk.run();
        }
        return !mHasFailed && !mIsCancelled;
    }

    // Deletes files and links at once, while the folder is open; sub-folders are deleted when they are left.
    bool onEnter(FolderWalk& walk) override {
        if (mProgress) mProgress.enter(countSteps(walk), platform::toUtf8(walk.below()));
        walk.forEachEntry([&](const files::FolderEntry& entry) {
            if (entry.isFolder && !entry.isLink) return true;
            if (isCancelled(mProgress.beginStep())) return false;
            removeEntry(walk, entry);
            return true;
        });
        return !mIsCancelled;
    }

    Step onEntry(FolderWalk&, const files::FolderEntry& entry) override {
        if (!entry.isFolder || entry.isLink) return Step::PassOver;
        return isCancelled(mProgress.beginStep()) ? Step::Stop : Step::Enter;
    }

    bool onLeave(FolderWalk& walk) override {
        if (walk.depth() > 1 || mRemovesTop) {
            if (isCancelled(mProgress.beginStep())) return false;
            removeFolder(walk);
        }
        // The top is complete only without failures, so that the work does not count as done otherwise.
        mProgress.leave(/*isComplete=*/walk.depth() > 1 || !mHasFailed);
        return true;
    }

    // The root of an empty volume has no entries at all, not even "." and "..".
    void onListingFailed(FolderWalk&, DWORD error) override {
        if (error != ERROR_FILE_NOT_FOUND) fail("FindFirstFileW", error);
    }

private:
    // Each entry is a step, and the folder itself is one.
    static std::uint64_t countSteps(const FolderWalk& walk) {
        std::uint64_t steps = 1;
        walk.forEachEntry([&](const files::FolderEntry&) { return ++steps != 0; });
        return steps;
    }

    // Another thread sets the flag, so it must be read anew each time.
    bool isCancelled(bool progressGoesOn) {
        if (mIsCancelled) return true;
        const bool isAsked = mCancel != nullptr && *static_cast<const volatile bool*>(mCancel);
        if (!isAsked && progressGoesOn) return false;
        mIsCancelled = true;
        if (mError != nullptr) *mError = "Canceled";
        return true;
    }

    // Only the first failure is kept.
    void fail(const char* call, DWORD error, const std::string& detail = {}) {
        if (!mHasFailed && mError != nullptr) *mError = call + (" error " + std::to_string(error)) + detail;
        mHasFailed = true;
    }

    void removeEntry(FolderWalk& walk, const files::FolderEntry& entry) {
        const ULONG kind = entry.isFolder ? kFolder : kFile;
        const DWORD error = deleteOpened([&](ACCESS_MASK access) {
            return walk.openEntry(entry.name, OpenMode{access, kind, /*followsLink=*/false});
        });
        if (error == ERROR_SUCCESS) return;
        if (entry.isFolder) return fail("RemoveDirectoryW", error);
        fail("DeleteFileW", error, " for " + shownFolder(walk) + "\\" + platform::toUtf8(entry.name));
    }

    void removeFolder(FolderWalk& walk) {
        const DWORD error = deleteOpened([&](ACCESS_MASK access) {
            return walk.openFolder(OpenMode{access, kFolder, /*followsLink=*/false});
        });
        if (error != ERROR_SUCCESS) fail("RemoveDirectoryW", error);
    }

    // The path as the caller would write it.
    std::string shownFolder(const FolderWalk& walk) const {
        const std::string below = platform::toUtf8(walk.below());
        return below.empty() ? mGiven : mGiven + "\\" + below;
    }

    const std::wstring mTop;  // the extended path of the folder
    std::string mGiven;       // the folder as the caller wrote it, without separators at the end
    const bool mRemovesTop;
    std::string* const mError;
    const bool* const mCancel;
    files::WalkProgress mProgress;
    bool mHasFailed = false;
    bool mIsCancelled = false;
};

}  // namespace

bool xoDirUtils::ClearFolderUtf8(const std::string& folder, bool removeFolderItself, std::string* error,
                                 const bool* cancel) {
    return ClearFolderUtf8(folder, removeFolderItself, error, cancel, /*progress=*/nullptr);
}

bool xoDirUtils::ClearFolderUtf8(const std::string& folder, bool removeFolderItself, std::string* error,
                                 const bool* cancel, xoProgressNotifier* progress) {
    return FolderClearing(folder, removeFolderItself, error, cancel, progress).run();
}

}  // namespace xo
