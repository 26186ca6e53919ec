// A file's new content, which takes the place of the old one all at once: a reader finds either, and so does whoever
// comes after a crash.
#ifndef XO_FILES_FILEREPLACEMENT_H
#define XO_FILES_FILEREPLACEMENT_H

#include <string>
#include <string_view>

#include "platform/handle.h"

namespace xo::files {

// The bytes go to a new file beside the old one, which then gets its name; it has the old one's access list, attributes
// and time of creation. Until then the new file is one that Windows deletes with its last handle, so that nothing stays
// behind, whatever ends the attempt.
//
// A symbolic link stays, and what it leads to is replaced. Where nothing can be, the file is written in place: where
// the folder takes no new file, where the old one has other hard links, is encrypted or compressed, and where somebody
// keeps it open without sharing its deletion.
class FileReplacement {
public:
    // False when there is no such folder, or when the file cannot be opened for writing.
    bool begin(const std::string& path);

    // Once, after a begin that succeeded. False when not all could be written; the old file is then untouched, unless
    // it is one that is written in place.
    bool commit(std::string_view bytes);

private:
    platform::FileHandle prepare();
    bool takePlace() const;

    std::string mPath;
    std::wstring mFullPath;
    platform::FileHandle mNew;      // none where the file is written in place
    platform::FileHandle mInPlace;  // the emptied file
};

}  // namespace xo::files

#endif
