// The progress of a walk through a tree: a scope for each folder that the walk is inside of. Without a notifier all
// calls do nothing and goesOn() is true.
#ifndef XO_FILES_WALKPROGRESS_H
#define XO_FILES_WALKPROGRESS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "xoSystem/xoProgress.h"

namespace xo::files {

class WalkProgress {
public:
    explicit WalkProgress(xoProgressNotifier* notifier) : mNotifier(notifier) {}

    // Whether somebody looks: only then are steps to be counted.
    explicit operator bool() const { return mNotifier != nullptr; }

    // A folder is entered, which is that many steps. Below a depth of 8 a folder is only a step of the one above it.
    void enter(std::uint64_t steps, std::string_view text) {
        if (mNotifier && mDepth++ < kMostScopes) mFolders[mDepth - 1].emplace(mNotifier, steps, text);
    }

    // The next step begins: those before it are complete. False once the walk is canceled.
    bool beginStep() {
        if (!hasScope()) return goesOn();
        Folder& folder = *mFolders[mDepth - 1];
        return folder.scope.advanceTo(folder.begunSteps++);
    }

    // The folder is left. With success all of its steps are complete.
    void leave(bool isComplete) {
        if (!mNotifier) return;
        if (hasScope()) {
            if (isComplete) mFolders[mDepth - 1]->scope.finish();
            mFolders[mDepth - 1].reset();
        }
        --mDepth;
    }

    // False once the walk is canceled. The notifier is called when that is due.
    bool goesOn() {
        if (!mNotifier) return true;
        if (mDepth == 0) return !mNotifier->isCanceled();
        return mFolders[(mDepth <= kMostScopes ? mDepth : kMostScopes) - 1]->scope.advance(0);
    }

private:
    static constexpr std::size_t kMostScopes = 8;

    struct Folder {
        Folder(xoProgressNotifier* notifier, std::uint64_t steps, std::string_view text)
            : scope(notifier, steps, text) {}

        xoProgressScope scope;
        std::uint64_t begunSteps = 0;
    };

    bool hasScope() const { return mDepth > 0 && mDepth <= kMostScopes; }

    xoProgressNotifier* const mNotifier;
    std::size_t mDepth = 0;
    std::array<std::optional<Folder>, kMostScopes> mFolders;  // destroyed from the innermost on
};

}  // namespace xo::files

#endif
