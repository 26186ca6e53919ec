// The path along which a tree is walked, with the means to open the folders on it however deep they lie.
#ifndef XO_FILES_WALKEDPATH_H
#define XO_FILES_WALKEDPATH_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/handle.h"

namespace xo::files {

// Windows takes 32767 characters at once. So every now and then a folder on the path is held open, and what lies below
// is opened from there; that also saves the system the long way from the root each time.
class WalkedPath {
public:
    // Begins at a folder that is given by its extended path; an empty one names no folder.
    explicit WalkedPath(std::wstring_view extendedPath);

    std::size_t length() const noexcept { return mPath.size(); }

    void append(std::wstring_view name);
    void cut(std::size_t length) { mPath.resize(length); }

    // Opens the folder to which the first `length` characters lead, so that it can be listed; links are followed.
    platform::FileHandle open(std::size_t length) const;

    // Holds the folder, to which the whole path leads, if the last one held is far.
    void hold(platform::FileHandle folder);

    // Lets the folder go if it is held: nothing below is to be opened any more.
    void release() noexcept;

private:
    struct Held {
        std::size_t length;  // of its path
        platform::FileHandle folder;
    };

    std::wstring mPath;  // as the kernel takes it: with "\??\" in front
    std::vector<Held> mHeld;
};

}  // namespace xo::files

#endif
