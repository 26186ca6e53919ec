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

// The enclosing folders are stored in a list, so that the depth of a tree costs neither stack nor open handles.
class FolderWalk {
public:
    // What to do with an entry. Only a folder can be entered.
    enum class Step { PassOver, Enter, Stop };

    // What the walk is made for. The operations come in the order of the walk; a false result, or Stop, ends it at
    // once.
    class Task {
    public:
        // A folder has been listed. Its entries come next.
        virtual bool onEnter(FolderWalk& walk) = 0;
        virtual Step onEntry(FolderWalk& walk, const FolderEntry& entry) = 0;
        // All entries of the folder have been visited. The walk no longer holds it open.
        virtual bool onLeave(FolderWalk& walk) = 0;

        // The folder at the path could not be listed and is not entered, or was not listed to its end.
        virtual void onListingFailed(FolderWalk& walk, DWORD error);

    protected:
        ~Task() = default;
    };

    // The path is the extended one. With keepsFolderOpen a folder stays open while onEnter runs; openEntry is then as
    // fast and as safe as can be, but nobody can remove the folder meanwhile. The entries have their sizes only with
    // listsSizes.
    FolderWalk(Task& task, std::wstring_view extendedPath, bool keepsFolderOpen, bool listsSizes = false);

    // Walks the tree. False if the task has ended the walk.
    bool run();

    // ---- for the operations ----

    // How many folders the walk is inside of, the top one included.
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

    // The same for two handles if they stand for the same folder. None where the file system does not tell.
    using Identity = std::optional<std::pair<DWORD, std::uint64_t>>;
    static Identity identityOf(HANDLE folder);

private:
    // A folder that has been entered and not left yet.
    struct Level {
        std::size_t pathLength;
        std::size_t names;     // where they begin
        std::size_t position;  // of the next one
        Identity identity;     // known once a link was met below
    };

    bool goOn();
    bool enterBelow(const FolderEntry& entry);
    bool list(Opened folder);
    bool enterListed();
    bool leave();
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
