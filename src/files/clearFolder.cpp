// Emptying a folder. Folders wait on a list of their own, so that depth costs neither stack nor open handles.
#include <vector>

#include "files/pathParts.h"
#include "platform/handle.h"
#include "platform/wideText.h"
#include "xoSystem/xoDirUtils.h"

namespace xo {
namespace {

bool isDots(const wchar_t* name) {
    return name[0] == L'.' && (name[1] == L'\0' || (name[1] == L'.' && name[2] == L'\0'));
}

// A folder that only leads to another one: a junction, a symbolic link, a mounted volume. Other reparse points are
// folders whose content a storage service keeps; a tag that is not told is better taken for a link.
bool isFolderLink(const WIN32_FIND_DATAW& found) {
    if ((found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) return false;
    return found.dwReserved0 == 0 || IsReparseTagNameSurrogate(found.dwReserved0);
}

// 0 for what does not exist.
DWORD attributesOf(const std::wstring& path) {
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    return attributes == INVALID_FILE_ATTRIBUTES ? 0 : attributes;
}

class FolderCleaner {
public:
    FolderCleaner(const std::string& folder, std::string* error, const bool* cancel)
        : mPath(files::searchedFolder(folder)),
          mTopLength(mPath.size()),
          mGiven(folder),
          mError(error),
          mCancel(cancel) {
        while (!mGiven.empty() && (mGiven.back() == '\\' || mGiven.back() == '/')) mGiven.pop_back();
    }

    bool run(bool removeFolderItself) {
        if (mPath.empty()) {
            ::SetLastError(ERROR_PATH_NOT_FOUND);
            return fail("FindFirstFileW");
        }
        if (removeFolderItself && isLink()) return !cancelled() && removeFolder(attributesOf(mPath));

        readFolder(mTopLength, attributesOf(mPath));
        while (!mLevels.empty() && !mCancelled) {
            if (!mLevels.back().folders.empty()) {
                enterNextFolder();
            } else {
                leaveFolder(removeFolderItself);
            }
        }
        return !mFailed && !mCancelled;
    }

private:
    struct Folder {
        std::wstring name;
        DWORD attributes;
    };

    // A folder being emptied: its files are gone, its folders are still to go.
    struct Level {
        std::size_t parentLength;  // of the path, to go back to
        DWORD attributes;
        std::vector<Folder> folders;
        bool emptied = true;  // so far
    };

    // Another thread writes the flag, so each look must be a read of its own.
    bool cancelled() {
        if (mCancelled || mCancel == nullptr || !*static_cast<const volatile bool*>(mCancel)) return mCancelled;
        mCancelled = true;
        if (mError != nullptr) *mError = "Canceled";
        return true;
    }

    // Keeps the first failure alone. Always false.
    bool fail(const char* call, const std::string& detail = {}) {
        const DWORD code = ::GetLastError();
        if (!mFailed && mError != nullptr) *mError = call + (" error " + std::to_string(code)) + detail;
        mFailed = true;
        return false;
    }

    bool isLink() const {
        WIN32_FIND_DATAW found;
        return platform::FindHandle(::FindFirstFileW(mPath.c_str(), &found)) && isFolderLink(found);
    }

    // The path as the caller would write it.
    std::string shownPath() const {
        std::wstring_view below = std::wstring_view(mPath).substr(mTopLength);
        if (!below.empty() && below.front() == L'\\') below.remove_prefix(1);
        return mGiven + "\\" + platform::toUtf8(below);
    }

    void appendName(const wchar_t* name) {
        if (mPath.back() != L'\\') mPath += L'\\';
        mPath += name;
    }

    void enterNextFolder() {
        Level& level = mLevels.back();
        const Folder folder = std::move(level.folders.back());
        level.folders.pop_back();
        const std::size_t parentLength = mPath.size();
        appendName(folder.name.c_str());
        readFolder(parentLength, folder.attributes);
    }

    void leaveFolder(bool removeTop) {
        const Level level = std::move(mLevels.back());
        mLevels.pop_back();
        const bool isTop = mLevels.empty();
        bool gone = level.emptied;
        if (gone && (!isTop || removeTop)) gone = !cancelled() && removeFolder(level.attributes);
        if (!isTop) {
            mLevels.back().emptied = mLevels.back().emptied && gone;
            mPath.resize(level.parentLength);
        }
    }

    // Deletes the files and links of the folder at mPath and makes it the level to work on.
    void readFolder(std::size_t parentLength, DWORD attributes) {
        mLevels.push_back({parentLength, attributes, {}});
        if (cancelled()) return;
        Level& level = mLevels.back();
        const std::size_t length = mPath.size();
        appendName(L"*");
        WIN32_FIND_DATAW found;
        const platform::FindHandle search(::FindFirstFileExW(
            mPath.c_str(), FindExInfoBasic, &found, FindExSearchNameMatch, nullptr, FIND_FIRST_EX_LARGE_FETCH));
        mPath.resize(length);
        if (!search) {
            // The root of an empty volume has not even the two dots.
            if (::GetLastError() != ERROR_FILE_NOT_FOUND) level.emptied = fail("FindFirstFileW");
            return;
        }
        do {
            if (isDots(found.cFileName)) continue;
            if (cancelled()) return;
            if (!deleteEntry(found, level)) level.emptied = false;
        } while (::FindNextFileW(search.get(), &found));
        if (::GetLastError() != ERROR_NO_MORE_FILES) level.emptied = fail("FindFirstFileW");
    }

    // A folder is only noted.
    bool deleteEntry(const WIN32_FIND_DATAW& found, Level& level) {
        const bool folder = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        if (folder && !isFolderLink(found)) {
            level.folders.push_back({found.cFileName, found.dwFileAttributes});
            return true;
        }
        const std::size_t length = mPath.size();
        appendName(found.cFileName);
        const bool deleted = folder ? removeFolder(found.dwFileAttributes) : removeFile(found.dwFileAttributes);
        mPath.resize(length);
        return deleted;
    }

    bool removeFile(DWORD attributes) {
        return deleteAtPath(::DeleteFileW, attributes) || fail("DeleteFileW", " for " + shownPath());
    }

    bool removeFolder(DWORD attributes) {
        return deleteAtPath(::RemoveDirectoryW, attributes) || fail("RemoveDirectoryW");
    }

    // Windows deletes nothing that is read-only. What cannot be deleted for another reason keeps the attribute.
    bool deleteAtPath(decltype(::DeleteFileW)& remove, DWORD attributes) const {
        const bool readOnly = (attributes & FILE_ATTRIBUTE_READONLY) != 0;
        if (readOnly) ::SetFileAttributesW(mPath.c_str(), attributes & ~DWORD{FILE_ATTRIBUTE_READONLY});
        if (remove(mPath.c_str())) return true;
        const DWORD code = ::GetLastError();
        if (readOnly) ::SetFileAttributesW(mPath.c_str(), attributes);
        ::SetLastError(code);
        return false;
    }

    std::wstring mPath;  // of the folder or entry at work, with the "\\?\" prefix
    const std::size_t mTopLength;
    std::string mGiven;  // the folder as the caller wrote it, without separators at the end
    std::vector<Level> mLevels;
    std::string* const mError;
    const bool* const mCancel;
    bool mFailed = false;
    bool mCancelled = false;
};

}  // namespace

bool xoDirUtils::ClearFolderUtf8(const std::string& folder, bool removeFolderItself, std::string* error,
                                 const bool* cancel) {
    return FolderCleaner(folder, error, cancel).run(removeFolderItself);
}

}  // namespace xo
