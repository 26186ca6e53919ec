// Copies a tree of folders.
#include <algorithm>

#include "files/fileCopy.h"
#include "files/folderWalk.h"
#include "files/pathParts.h"
#include "platform/ordinalText.h"
#include "platform/wideText.h"
#include "xoSystem/xoDirUtils.h"
#include "xoSystem/xoProgress.h"

#include <winternl.h>

namespace xo {
namespace {

using files::Created;
using files::Existing;
using files::FolderEntry;
using files::FolderWalk;
using files::Opened;
using files::OpenMode;
using files::WalkedPath;

constexpr ULONG kFile = FILE_NON_DIRECTORY_FILE;
constexpr ULONG kFolder = FILE_DIRECTORY_FILE;
constexpr OpenMode kToListFolder{FILE_LIST_DIRECTORY | FILE_TRAVERSE | FILE_READ_ATTRIBUTES, kFolder,
                                 /*followsLink=*/true};
constexpr std::size_t kLongPath = 1000;    // characters; from here on a system may refuse a path as a whole
constexpr std::size_t kMostReports = 100;  // lines of errors that are kept; further ones are only counted

// The path of an open folder, without links and short names; the fallback when Windows cannot determine it.
std::wstring finalPath(HANDLE folder, const std::wstring& fallback) {
    const std::wstring path = files::finalPath(folder, FILE_NAME_NORMALIZED);
    return path.empty() ? fallback : path;
}

// As the file system compares them by default: without regard to case, independent of the locale.
bool areSameNames(std::wstring_view a, std::wstring_view b) { return platform::equalsIgnoringCase(a, b); }

std::string withoutSeparatorsAtEnd(const std::string& path) {
    return path.substr(0, path.find_last_not_of("\\/") + 1);  // npos + 1 is 0
}

// A path below another one.
std::wstring joined(std::wstring_view below, std::wstring_view name) {
    return below.empty() ? std::wstring(name) : std::wstring(below).append(L"\\").append(name);
}

// The position of the target relative to the source, by their final paths.
struct Target {
    bool isSource = false;
    std::wstring below;  // its path below the source; empty when it lies elsewhere

    Target(const std::wstring& source, const std::wstring& target) {
        isSource = areSameNames(source, target);
        const std::wstring inside = source.back() == L'\\' ? source : source + L'\\';
        if (target.size() > inside.size() && areSameNames(inside, std::wstring_view(target).substr(0, inside.size())))
            below = target.substr(inside.size());
    }

    bool isAt(std::wstring_view folder, std::wstring_view name) const {
        return !below.empty() && areSameNames(below, joined(folder, name));
    }
};

// Adds up the sizes of the files to copy, before the copying, as the total of the progress.
class SizeCount final : public FolderWalk::Task {
public:
    SizeCount(xoProgressNotifier* progress, const Target& target)
        : mTarget(target), mScope(progress, /*total=*/0, "counting", ProgressUnitItems) {}

    // False when it was canceled.
    bool run(const std::wstring& top) {
        const bool isWhole =
            FolderWalk(*this, top, /*keepsFolderOpen=*/false, /*listsSizes=*/true).run() && mScope.advance(0);
        if (isWhole) mScope.finish();
        return isWhole;
    }
    std::uint64_t bytes() const { return mBytes; }

    bool onEnter(FolderWalk&) override { return true; }
    FolderWalk::Step onEntry(FolderWalk& walk, const FolderEntry& entry) override {
        mBytes += entry.size;
        if (!mScope.advance()) return FolderWalk::Step::Stop;
        const bool isEntered = entry.isFolder && !entry.isLink && !mTarget.isAt(walk.below(), entry.name);
        return isEntered ? FolderWalk::Step::Enter : FolderWalk::Step::PassOver;
    }
    bool onLeave(FolderWalk&) override { return true; }

private:
    const Target& mTarget;
    xoProgressScope mScope;
    std::uint64_t mBytes = 0;
};

// One call of CopyFolderUtf8. Walks the source while mTarget follows with the path of the copy. Continues after
// failures and reports each.
class FolderCopying final : public FolderWalk::Task {
public:
    using Step = FolderWalk::Step;

    FolderCopying(const std::string& from, const std::string& to, bool failIfExists, xoProgressNotifier* progress)
        : mGiven(withoutSeparatorsAtEnd(from)),
          mGivenTarget(withoutSeparatorsAtEnd(to)),
          mSourceTop(files::searchedFolder(from)),
          mTargetTop(files::madeFolder(to)),
          mFailsIfExists(failIfExists),
          mProgress(progress),
          mTarget(mTargetTop) {}

    bool run() {
        if (isCanceled()) return false;
        const WalkedPath path(mSourceTop);
        const Opened source = path.open(path.length(), kToListFolder);
        if (!source.handle) return fail("FindFirstFileW", files::searchError(source.error), mGiven);
        const Created top = makeTop();
        if (!top.opened.handle) return fail("CreateDirectoryW", top.opened.error, mGivenTarget);
        const Target target(finalPath(source.handle.get(), mSourceTop), finalPath(top.opened.handle.get(), mTargetTop));
        mTargetPlace = &target;
        mTargetIdentity = FolderWalk::identityOf(top.opened.handle.get());
        if (target.isSource || (!top.isNew && isTarget(source))) return report(mGiven + " cannot be copied to itself");
        mIsTopNew = top.isNew;
        copyAll();
        return !mHasFailed && !mIsCanceled;
    }

    // The files that could not be copied, one line each.
    std::string errors() const {
        if (mIsCanceled) return "Canceled";
        if (mReportCount <= kMostReports) return mErrors;
        return mErrors + "\nand " + std::to_string(mReportCount - kMostReports) + " more";
    }

    // A target inside the source is not entered: it would grow while it is copied, without end.
    bool onEnter(FolderWalk& walk) override {
        if (walk.depth() == 1) {
            mFolders.push_back({mTarget.length(), /*isThere=*/true, mIsTopNew});
            return true;
        }
        mTarget.append(mName);
        if (isTarget(walk.openFolder({FILE_READ_ATTRIBUTES, kFolder, /*followsLink=*/true}))) {
            mFolders.push_back({mTarget.length(), /*isThere=*/false, /*isNew=*/false});
            report(shown(walk.below()) + " is the target and is not copied");
            return true;
        }
        Created folder = mTarget.create(kToListFolder, Existing::IsOpened);
        mFolders.push_back({mTarget.length(), static_cast<bool>(folder.opened.handle), folder.isNew});
        if (folder.opened.handle)
            mTarget.hold(folder.opened.handle);
        else
            fail("CreateDirectoryW", folder.opened.error, shown(walk.below()));
        return true;
    }

    Step onEntry(FolderWalk& walk, const FolderEntry& entry) override {
        if (isCanceled()) return Step::Stop;
        if (!mFolders.back().isThere) return Step::PassOver;
        if (entry.isFolder && !entry.isLink) {
            mName = entry.name;
            return mTargetPlace->isAt(walk.below(), entry.name) ? Step::PassOver : Step::Enter;
        }
        const std::wstring below = joined(walk.below(), entry.name);
        if (entry.isFolder)
            copyLink(walk, entry, below);
        else
            copyFile(walk, entry, below);
        return mIsCanceled ? Step::Stop : Step::PassOver;
    }

    // Entries that are added change the times of a folder, so it gets them at the end.
    bool onLeave(FolderWalk& walk) override {
        mTarget.release();
        if (mFolders.back().isNew) copyTimesOfFolder(walk);
        mFolders.pop_back();
        if (!mFolders.empty()) mTarget.cut(mFolders.back().targetLength);
        return true;
    }

    void onListingFailed(FolderWalk& walk, DWORD error) override {
        if (error != ERROR_FILE_NOT_FOUND) fail("FindFirstFileW", error, shown(walk.below()));  // an empty volume
    }

private:
    // A folder that the walk is in.
    struct Folder {
        std::size_t targetLength;  // of the path of its copy
        bool isThere;              // the copy exists; otherwise the entries are passed over
        bool isNew;                // the copy was made
    };

    // A cancellation counts only if it is noticed before the end.
    bool isCanceled() { return mIsCanceled = mIsCanceled || (mProgress && mProgress->isCanceled()); }

    // Whether a folder of the source is the target, by identity. Target does not recognise it when it is reached by
    // another path, for instance over a share. The caller reports it as a failure, because two folders may have equal
    // identities by chance on a file system with identifiers of more than 64 bits.
    bool isTarget(const Opened& folder) const {
        return mTargetIdentity && folder.handle && FolderWalk::identityOf(folder.handle.get()) == mTargetIdentity;
    }

    Created makeTop() const {
        // The result is not needed: without the parents the next call fails, with the reason.
        xoDirUtils::MkpathUtf8(xoDirUtils::GetParentPathUtf8(mGivenTarget));
        return mTarget.create(kToListFolder, Existing::IsOpened);
    }

    // Weights of 0 and 1: counting takes an unknown but short time, so it does not move the bar.
    void copyAll() {
        xoProgressScope work(mProgress, {0, 1});
        if (mProgress) {
            SizeCount count(mProgress, *mTargetPlace);
            mIsCanceled = !count.run(mSourceTop);
            if (mIsCanceled) return;
            mTotal = count.bytes();
        }
        work.advance();
        xoProgressScope bytes(mProgress, mTotal, {}, ProgressUnitBytes);
        mBytes = &bytes;
        FolderWalk(*this, mSourceTop, /*keepsFolderOpen=*/false, /*listsSizes=*/mProgress != nullptr).run();
        if (mHasFailed)
            bytes.setTotal(mTotal + 1);  // so that the work does not count as done
        else if (!mIsCanceled)
            bytes.finish();
    }

    void copyFile(FolderWalk& walk, const FolderEntry& entry, const std::wstring& below) {
        xoProgressNotifier* const watched = entry.size != 0 ? mProgress : nullptr;  // an empty file is no step
        if (watched) {
            mBytes->setText(platform::toUtf8(below));
            mBytes->setStepSpan(entry.size);
        }
        DWORD error = copyAnyFile(walk, entry, watched);
        if (error == ERROR_ACCESS_DENIED && !mFailsIfExists) error = copyOverProtected(walk, entry, watched);
        if (error == files::kCopyCanceled && isCanceled()) return;
        if (error != ERROR_SUCCESS) fail("CopyFileExW", error, shown(below));
        mBytes->advance(entry.size);
    }

    DWORD copyAnyFile(FolderWalk& walk, const FolderEntry& entry, xoProgressNotifier* watched) {
        const DWORD flags = COPY_FILE_COPY_SYMLINK | (mFailsIfExists ? COPY_FILE_FAIL_IF_EXISTS : DWORD{0});
        const std::wstring from = walk.pathOf(entry.name);
        const std::wstring to = mTarget.extended(entry.name);
        const DWORD error = files::copyFile(from, to, flags, entry.size, watched);
        if (error == ERROR_SUCCESS)
            copyTimesOfFile(walk, entry);
        else if (error != files::kCopyCanceled && (std::max)(from.size(), to.size()) >= kLongPath)
            return copyFarFile(walk, entry, watched);
        return error;
    }

    // Windows does not replace a read-only file, nor a hidden or system file by one that is neither. The target loses
    // these attributes, and gets them back if that was not the reason.
    DWORD copyOverProtected(FolderWalk& walk, const FolderEntry& entry, xoProgressNotifier* watched) {
        constexpr DWORD kProtecting = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;
        const OpenMode toUnprotect{FILE_READ_ATTRIBUTES | FILE_WRITE_ATTRIBUTES, kFile, /*followsLink=*/true};
        const Opened target = mTarget.openEntry(entry.name, toUnprotect);
        const DWORD before = target.handle ? files::attributesOf(target.handle.get()) : DWORD{0};
        if ((before & kProtecting) == 0) return ERROR_ACCESS_DENIED;
        files::setAttributes(target.handle.get(), FILE_ATTRIBUTE_NORMAL);
        const DWORD error = copyAnyFile(walk, entry, watched);
        if (error != ERROR_SUCCESS) files::setAttributes(target.handle.get(), before);
        return error;
    }

    // Copies by handles, because CopyFileExW does not accept longer paths.
    DWORD copyFarFile(FolderWalk& walk, const FolderEntry& entry, xoProgressNotifier* watched) {
        // A target that may be emptied is opened for writing, and may be the source itself, by a link or a share. So
        // the source is not shared for writing then, and the target cannot be opened.
        const ULONG share = FILE_SHARE_READ | FILE_SHARE_DELETE | (mFailsIfExists ? FILE_SHARE_WRITE : ULONG{0});
        const OpenMode toRead{FILE_READ_DATA | FILE_READ_ATTRIBUTES, kFile, /*followsLink=*/false, share};
        const Opened from = walk.openEntry(entry.name, toRead);
        if (!from.handle) return from.error;
        FILE_ATTRIBUTE_TAG_INFO info{};
        const bool isLink =
            ::GetFileInformationByHandleEx(from.handle.get(), FileAttributeTagInfo, &info, sizeof info) &&
            (info.FileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 && IsReparseTagNameSurrogate(info.ReparseTag);
        if (isLink) return copyOpenedLink(from.handle.get(), entry.name, kFile);

        // DELETE is needed to remove an incomplete copy.
        const OpenMode toWrite{FILE_WRITE_DATA | FILE_WRITE_ATTRIBUTES | DELETE, kFile, /*followsLink=*/true};
        const Created to =
            mTarget.createEntry(entry.name, toWrite, mFailsIfExists ? Existing::Fails : Existing::IsEmptied);
        if (!to.opened.handle) return to.opened.error;
        const DWORD error = files::copyContent(from.handle.get(), to.opened.handle.get(), entry.size, watched);
        if (error == ERROR_SUCCESS)
            files::copyTimes(from.handle.get(), to.opened.handle.get(), /*withAttributes=*/true);
        else
            files::setDeleteOnClose(to.opened.handle.get());
        return error;
    }

    void copyLink(FolderWalk& walk, const FolderEntry& entry, const std::wstring& below) {
        const Opened from = walk.openEntry(entry.name, {FILE_READ_ATTRIBUTES, kFolder, /*followsLink=*/false});
        const DWORD error = from.handle ? copyOpenedLink(from.handle.get(), entry.name, kFolder) : from.error;
        if (error != ERROR_SUCCESS) fail("DeviceIoControl", error, shown(below));
    }

    // Copies a link itself, to a file or folder of the same name; nothing that it leads to is copied.
    DWORD copyOpenedLink(HANDLE from, std::wstring_view name, ULONG kind) {
        const OpenMode toChange{FILE_WRITE_ATTRIBUTES | DELETE, kind, /*followsLink=*/false};
        const Created to = mTarget.createEntry(name, toChange, mFailsIfExists ? Existing::Fails : Existing::IsOpened);
        if (!to.opened.handle) return to.opened.error;
        const DWORD error = files::copyReparsePoint(from, to.opened.handle.get());
        if (error == ERROR_SUCCESS)
            files::copyTimes(from, to.opened.handle.get(), /*withAttributes=*/false);
        else if (to.isNew)
            files::setDeleteOnClose(to.opened.handle.get());
        return error;
    }

    // CopyFileExW copies the attributes, but only one of the times, that of the last change.
    void copyTimesOfFile(FolderWalk& walk, const FolderEntry& entry) {
        const Opened from = walk.openEntry(entry.name, {FILE_READ_ATTRIBUTES, kFile, /*followsLink=*/false});
        const Opened to = mTarget.openEntry(entry.name, {FILE_WRITE_ATTRIBUTES, kFile, /*followsLink=*/false});
        if (from.handle && to.handle) files::copyTimes(from.handle.get(), to.handle.get(), /*withAttributes=*/false);
    }

    // The attributes of the root of a volume, hidden and system, are not copied to an ordinary folder.
    void copyTimesOfFolder(FolderWalk& walk) {
        const bool isRoot = walk.depth() == 1 && files::rootLength(mSourceTop) == mSourceTop.size();
        const Opened from = walk.openFolder({FILE_READ_ATTRIBUTES, kFolder, /*followsLink=*/true});
        const Opened to = mTarget.open(mTarget.length(), {FILE_WRITE_ATTRIBUTES, kFolder, /*followsLink=*/true});
        if (from.handle && to.handle) files::copyTimes(from.handle.get(), to.handle.get(), /*withAttributes=*/!isRoot);
    }

    // The path in the source as the caller would write it.
    std::string shown(std::wstring_view below) const {
        return below.empty() ? mGiven : mGiven + "\\" + platform::toUtf8(below);
    }

    bool fail(const char* call, DWORD error, const std::string& path) {
        return report(call + (" error " + std::to_string(error)) + " for " + path);
    }

    bool report(const std::string& line) {
        mHasFailed = true;
        if (mReportCount++ < kMostReports) mErrors += (mErrors.empty() ? "" : "\n") + line;
        return false;
    }

    std::string mGiven;  // the source as the caller wrote it, without separators at the end
    const std::string mGivenTarget;
    const std::wstring mSourceTop;  // the extended paths
    const std::wstring mTargetTop;
    const bool mFailsIfExists;
    xoProgressNotifier* const mProgress;
    WalkedPath mTarget;                    // the copy of the folder that the walk is in
    const Target* mTargetPlace = nullptr;  // these four are valid while the walk runs
    FolderWalk::Identity mTargetIdentity;
    bool mIsTopNew = false;
    xoProgressScope* mBytes = nullptr;  // the scope of the copying
    std::uint64_t mTotal = 0;           // bytes to copy; 0 without a notifier
    std::wstring mName;                 // of the folder that onEnter is called for next
    std::vector<Folder> mFolders;       // from the top to the folder of the walk
    bool mIsCanceled = false;
    bool mHasFailed = false;
    std::string mErrors;
    std::size_t mReportCount = 0;
};

}  // namespace

bool xoDirUtils::CopyFolderUtf8(const std::string& from, const std::string& to, bool failIfExists, std::string* error,
                                xoProgressNotifier* progress) {
    FolderCopying copying(from, to, failIfExists, progress);
    const bool isCopied = copying.run();
    if (!isCopied && error != nullptr) *error = copying.errors();
    return isCopied;
}

}  // namespace xo
