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

    // Whether there is a notifier. Without one the caller need not count steps.
    explicit operator bool() const { return mNotifier != nullptr; }

    // Called when a folder is entered; `steps` is the number of its steps. From a depth of 8 on a folder has no scope
    // of its own and is only one step of the folder above: deeper scopes would hardly move the bar.
    void enter(std::uint64_t steps, std::string_view text) {
        if (mNotifier && mDepth++ < kMostScopes) mFolders[mDepth - 1].emplace(mNotifier, steps, text);
    }

    // Begins the next step, which completes those before it. False once the walk is canceled.
    bool beginStep() {
        Folder* const folder = hasScope() ? current() : nullptr;
        return folder ? folder->scope.advanceTo(folder->begunSteps++) : goesOn();
    }

    // Called when the folder is left. isComplete completes its steps, also those that were not begun.
    void leave(bool isComplete) {
        if (!mNotifier) return;
        if (hasScope()) {
            Folder* const folder = current();
            if (isComplete && folder) folder->scope.finish();
            mFolders[mDepth - 1].reset();
        }
        --mDepth;
    }

    // False once the walk is canceled. Calls the notifier if that is due.
    bool goesOn() {
        if (!mNotifier) return true;
        Folder* const folder = current();
        return folder ? folder->scope.advance(0) : !mNotifier->isCanceled();
    }

private:
    static constexpr std::size_t kMostScopes = 8;  // deep enough for a smooth bar

    // A scope and the number of its steps that have begun; the last of them is under way.
    struct Folder {
        Folder(xoProgressNotifier* notifier, std::uint64_t steps, std::string_view text)
            : scope(notifier, steps, text) {}

        xoProgressScope scope;
        std::uint64_t begunSteps = 0;
    };

    // The innermost folder that has a scope; null outside of all folders.
    Folder* current() {
        if (mDepth == 0) return nullptr;
        std::optional<Folder>& folder = mFolders[(mDepth <= kMostScopes ? mDepth : kMostScopes) - 1];
        return folder ? &*folder : nullptr;
    }

    // Whether the innermost folder has a scope of its own.
    bool hasScope() const { return mDepth > 0 && mDepth <= kMostScopes; }

    xoProgressNotifier* const mNotifier;
    std::size_t mDepth = 0;  // the number of folders that were entered and not left; may exceed kMostScopes
    std::array<std::optional<Folder>, kMostScopes> mFolders;  // destroyed from the innermost on
};

}  // namespace xo::files

#endif
