// Walking a tree of folders. The folders on the way wait on a list of their own, so that depth costs neither stack nor
// open handles.
#include <cstdint>
#include <optional>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "files/folderNames.h"
#include "files/pathParts.h"
#include "files/walkedPath.h"
#include "platform/handle.h"
#include "platform/wideText.h"
#include "xoSystem/xoDirUtils.h"

namespace xo {
namespace {

using FileSystemVisitor = xoDirUtils::FileSystemVisitor;

// Appends a name to a path as it is shown.
void appendName(std::string& path, std::string_view name) {
    if (!path.empty() && path.back() != '/' && path.back() != '\\') path += '/';
    path += name;
}

// The ends of file names that a walk accepts.
class NameFilter {
public:
    explicit NameFilter(const std::vector<std::string>* extensions)
        : mAcceptsAll(extensions == nullptr || extensions->empty()) {
        if (extensions == nullptr) return;
        for (const std::string& extension : *extensions)
            if (!extension.empty()) mEnds.push_back(extension.front() == '.' ? extension : '.' + extension);
    }

    bool accepts(std::string_view name) const noexcept {
        for (const std::string& end : mEnds)
            if (name.size() >= end.size() && name.substr(name.size() - end.size()) == end) return true;
        return mAcceptsAll;
    }

private:
    const bool mAcceptsAll;
    std::vector<std::string> mEnds;
};

// The same for two handles if they stand for the same folder. None where the file system does not tell.
using Identity = std::optional<std::pair<DWORD, std::uint64_t>>;

Identity identityOf(HANDLE folder) {
    BY_HANDLE_FILE_INFORMATION info;
    if (!::GetFileInformationByHandle(folder, &info)) return {};
    return {{info.dwVolumeSerialNumber, (std::uint64_t{info.nFileIndexHigh} << 32) | info.nFileIndexLow}};
}

class FolderWalk {
public:
    FolderWalk(FileSystemVisitor& visitor, const std::string& folder, bool recursive,
               const std::vector<std::string>* extensions)
        : mVisitor(visitor),
          mRecursive(recursive),
          mFilter(extensions),
          mPath(files::searchedFolder(folder.empty() ? "/" : folder)),
          mFolder(folder) {}

    bool run() {
        platform::FileHandle top = mPath.open(mPath.length());
        if (!top || !mNames.read(top.get())) return true;
        bool goesOn = enterFolder(std::move(top), 0);
        while (goesOn && !mLevels.empty()) {
            Level& level = mLevels.back();
            goesOn = level.position < mNames.size() ? report(mNames.next(level.position)) : leaveFolder();
        }
        return goesOn;
    }

private:
    // A folder that has been entered and not left yet.
    struct Level {
        std::size_t pathLength;
        std::size_t folderLength;
        std::size_t names;     // where they begin
        std::size_t position;  // of the next one
        Identity identity;     // known once a link was met below
    };

    bool report(const files::FolderEntry& entry) {
        mName.clear();
        platform::appendUtf8(mName, entry.name);
        if (!entry.isFolder) return !mFilter.accepts(mName) || mVisitor.onFile(mFolder, mName);
        if (!mVisitor.onFolder(mFolder, mName)) return false;
        return !mRecursive || descend(entry);
    }

    // What cannot be listed is passed over.
    bool descend(const files::FolderEntry& entry) {
        mPath.append(entry.name);
        platform::FileHandle folder = mPath.open(mPath.length());
        const bool isKnown = folder && entry.mayLeadAway && !leadsToNewFolder(folder.get());
        const std::size_t names = mNames.size();
        if (!folder || isKnown || !mNames.read(folder.get())) {
            mPath.cut(mLevels.back().pathLength);
            return true;
        }
        appendName(mFolder, mName);
        return enterFolder(std::move(folder), names);
    }

    bool enterFolder(platform::FileHandle folder, std::size_t names) {
        mPath.hold(std::move(folder));
        mLevels.push_back({mPath.length(), mFolder.size(), names, names, {}});
        return mVisitor.onEnterFolder(mFolder);
    }

    bool leaveFolder() {
        mPath.release();  // the visitor may want to remove the folder
        if (!mVisitor.onLeaveFolder(mFolder)) return false;
        mNames.cut(mLevels.back().names);
        mLevels.pop_back();
        if (mLevels.empty()) return true;
        mPath.cut(mLevels.back().pathLength);
        mFolder.resize(mLevels.back().folderLength);
        return true;
    }

    // Whether the walk is neither inside the folder that a link leads to, nor has entered it by a link before.
    bool leadsToNewFolder(HANDLE target) {
        const Identity identity = identityOf(target);
        if (!identity) return false;
        for (Level& level : mLevels) {
            if (!level.identity) level.identity = identityOf(mPath.open(level.pathLength).get());
            if (level.identity == identity) return false;
        }
        return mLinked.insert(*identity).second;
    }

    FileSystemVisitor& mVisitor;
    const bool mRecursive;
    const NameFilter mFilter;
    files::WalkedPath mPath;
    std::string mFolder;  // the same path as the visitor sees it
    std::string mName;    // of the entry being reported
    files::FolderNames mNames;
    std::vector<Level> mLevels;
    std::set<Identity::value_type> mLinked;  // the folders that were entered by a link
};

}  // namespace

xoDirUtils::FileSystemVisitor::~FileSystemVisitor() = default;

bool xoDirUtils::FileSystemVisitor::onEnterFolder(const std::string&) { return true; }

bool xoDirUtils::FileSystemVisitor::onFile(const std::string&, const std::string&) { return true; }

bool xoDirUtils::FileSystemVisitor::onFolder(const std::string&, const std::string&) { return true; }

bool xoDirUtils::FileSystemVisitor::onLeaveFolder(const std::string&) { return true; }

bool xoDirUtils::FileSystemVisitor::visit(const std::string& folder, bool recursive,
                                          const std::vector<std::string>* extensions) {
    return FolderWalk(*this, folder, recursive, extensions).run();
}

std::string xoDirUtils::FileSystemVisitor::concatPathAndFile(const std::string& folder, const std::string& file) {
    std::string path;
    path.reserve(folder.size() + 1 + file.size());
    path = folder;
    appendName(path, file);
    return path;
}

}  // namespace xo
