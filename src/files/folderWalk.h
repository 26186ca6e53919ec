// A depth-first walk through a tree of folders, for visiting, clearing and copying it.
#ifndef XO_FILES_FOLDERWALK_H
#define XO_FILES_FOLDERWALK_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "files/folderNames.h"
#include "files/walkedPath.h"

namespace xo::files {

// The error of FindFirstFileW for a folder that cannot be opened: a missing one is a missing path.
constexpr DWORD searchError(DWORD error) noexcept {
    return error == ERROR_FILE_NOT_FOUND ? ERROR_PATH_NOT_FOUND : error;
}

// The enclosing folders are stored in a list and not on the stack, so that the depth of a tree is not limited by the
// stack, nor by open handles. A folder is listed as a whole when it is entered: entries that are made or deleted later
// are not noticed. Links are entered like folders if the task asks for it, but not in a circle.
class FolderWalk {
public:
    // What to do with an entry. Only a folder can be entered.
    enum class Step { PassOver, Enter, Stop };

    // The operations of the walk's user, called in the order of the walk. A false result, or Stop, ends the walk at
    // once, without further calls.
    class Task {
    public:
        // Called when a folder has been listed. Its entries come next.
        virtual bool onEnter(FolderWalk& walk) = 0;
        // Called for each entry. The entry's name is valid until onEntry returns.
        virtual Step onEntry(FolderWalk& walk, const FolderEntry& entry) = 0;
        // Called when all entries of the folder have been visited. The walk no longer holds it open.
        virtual bool onLeave(FolderWalk& walk) = 0;

        // The folder at the path could not be listed and is not entered, or was not listed to its end.
        virtual void onListingFailed(FolderWalk& walk, DWORD error);

    protected:
        ~Task() = default;
    };

    // The path is an extended one. With keepsFolderOpen a folder stays open while onEnter runs: openEntry is then fast,
    // and safe against a folder that is replaced meanwhile, but nobody can remove the folder. The entries have their
    // sizes only with listsSizes.
    FolderWalk(Task& task, std::wstring_view extendedPath, bool keepsFolderOpen, bool listsSizes = false);

    // Walks the tree, in the caller's thread. False if the task has ended the walk; a folder that cannot be listed is
    // only reported to the task.
    bool run();

    // ---- for the operations ----

    // The number of folders that the walk is in, the top included.
    std::size_t depth() const noexcept { return mLevels.size(); }

    // The path of the folder, below the top one. Empty for the top one.
    std::wstring_view below() const noexcept { return mPath.below(); }

    // The extended path of an entry of the folder.
    std::wstring pathOf(std::wstring_view name) const { return mPath.extended(name); }

    // Calls visit(entry) for the entries of the folder that was entered last, until it returns false.
    template <class Visit>
    void forEachEntry(Visit&& visit) const {
        for (std::size_t position = mLevels.back().names; position < mNames.size();)
            if (!visit(mNames.next(position))) return;
    }

    // Open an entry of the folder, and the folder itself.
    Opened openEntry(std::wstring_view name, const OpenMode& mode);
    Opened openFolder(const OpenMode& mode) const { return mPath.open(mPath.length(), mode); }

    // The volume and number of a folder: equal for two handles of the same folder. None when the file system has none.
    using Identity = std::optional<std::pair<DWORD, std::uint64_t>>;
    static Identity identityOf(HANDLE folder);

private:
    // A folder that has been entered and not left yet.
    struct Level {
        std::size_t pathLength;
        std::size_t names;     // the position of its first entry in mNames
        std::size_t position;  // that of the next entry to visit
        Identity identity;     // determined when the first link below is entered
    };

    // Each does one step of the walk and returns whether the walk goes on.
    bool goOn();
    bool enterBelow(const FolderEntry& entry);
    bool list(Opened folder);
    bool enterListed();
    bool leave();
    // Whether entering the folder would make a circle.
    bool isInside(HANDLE folder);

    Task& mTask;
    const bool mKeepsFolderOpen;
    WalkedPath mPath;
    FolderNames mNames;
    std::vector<Level> mLevels;
    platform::KernelHandle mFolder;  // while onEnter runs, if it is kept open
};

}  // namespace xo::files

#endif
