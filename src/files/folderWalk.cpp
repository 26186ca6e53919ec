// Walks a tree of folders without recursion, so that deep trees need no stack.
#include "files/folderWalk.h"

#include <algorithm>

#include <winternl.h>

namespace xo::files {
namespace {

constexpr OpenMode toList(bool followsLink) {
    return {FILE_LIST_DIRECTORY | FILE_READ_ATTRIBUTES, FILE_DIRECTORY_FILE, followsLink};
}

}  // namespace

void FolderWalk::Task::onListingFailed(FolderWalk&, DWORD) {}

FolderWalk::FolderWalk(Task& task, std::wstring_view extendedPath, bool keepsFolderOpen, bool listsSizes)
    : mTask(task), mKeepsFolderOpen(keepsFolderOpen), mPath(extendedPath), mNames(listsSizes) {}

bool FolderWalk::run() {
    // A top that cannot be listed was reported to the task, and is no reason to return false.
    if (!list(openFolder(toList(/*followsLink=*/true)))) return true;
    bool goesOn = enterListed();
    while (goesOn && !mLevels.empty()) goesOn = goOn();
    return goesOn;
}

bool FolderWalk::goOn() {
    Level& level = mLevels.back();
    if (level.position == mNames.size()) return leave();
    const FolderEntry entry = mNames.next(level.position);
    const Step step = mTask.onEntry(*this, entry);
    return step == Step::Enter ? enterBelow(entry) : step != Step::Stop;
}

// A folder that was listed without a reparse point is opened without following links: if it has been replaced by a link
// meanwhile, its target must not be walked, and deleted by a task.
bool FolderWalk::enterBelow(const FolderEntry& entry) {
    mPath.append(entry.name);
    Opened folder = openFolder(toList(/*followsLink=*/entry.isReparsePoint));
    const bool isCircle = entry.isLink && folder.handle && isInside(folder.handle.get());
    if (!isCircle && list(std::move(folder))) return enterListed();
    mPath.cut(mLevels.back().pathLength);
    return true;
}

// Lists the folder and enters it. False if it cannot be listed.
bool FolderWalk::list(Opened folder) {
    const std::size_t names = mNames.size();
    const FolderNames::Reading reading = folder.handle
                                             ? mNames.read(folder.handle.get())
                                             : FolderNames::Reading{/*isBegun=*/false, searchError(folder.error)};
    if (reading.error != ERROR_SUCCESS) mTask.onListingFailed(*this, reading.error);
    if (!reading.isBegun) return false;
    mLevels.push_back({mPath.length(), names, names, {}});
    mPath.hold(folder.handle);
    if (mKeepsFolderOpen) mFolder = std::move(folder.handle);
    return true;
}

bool FolderWalk::enterListed() {
    const bool goesOn = mTask.onEnter(*this);
    mFolder.reset();
    return goesOn;
}

bool FolderWalk::leave() {
    // Before onLeave, because the task may delete the folder, which an open handle could delay.
    mPath.release();
    if (!mTask.onLeave(*this)) return false;
    mNames.cut(mLevels.back().names);
    mLevels.pop_back();
    if (!mLevels.empty()) mPath.cut(mLevels.back().pathLength);
    return true;
}

Opened FolderWalk::openEntry(std::wstring_view name, const OpenMode& mode) {
    return mFolder ? openRelative(mFolder.get(), name, mode) : mPath.openEntry(name, mode);
}

// An index of 0 counts as unknown: some network redirectors report it for every file.
FolderWalk::Identity FolderWalk::identityOf(HANDLE folder) {
    BY_HANDLE_FILE_INFORMATION info;
    if (!::GetFileInformationByHandle(folder, &info)) return {};
    const std::uint64_t index = (std::uint64_t{info.nFileIndexHigh} << 32) | info.nFileIndexLow;
    if (index == 0) return {};
    return {{info.dwVolumeSerialNumber, index}};
}

// Whether the walk is in the folder to which a link leads, or this is unknown: not entering is safer than not ending. A
// second link to the same folder is not a circle; the folder is walked again under the path of that link.
bool FolderWalk::isInside(HANDLE folder) {
    const Identity identity = identityOf(folder);
    if (!identity) return true;
    return std::any_of(mLevels.begin(), mLevels.end(), [&](Level& level) {
        if (!level.identity) {
            const Opened above = mPath.open(level.pathLength, toList(/*followsLink=*/true));
            if (above.handle) level.identity = identityOf(above.handle.get());
        }
        return level.identity == identity;
    });
}

}  // namespace xo::files
