// Makes the index by one walk over the search paths, and finds files in it by the hash of their name's key.
#include "xref/fileIndex.h"

#include <algorithm>

#include "xoSystem/xoDirUtils.h"
#include "xoSystem/xoLog.h"
#include "xref/nameKey.h"

namespace xo::xref {

// Puts each path into the index once, under the first search path that it is below.
class FileIndex::Builder : public xoDirUtils::FileSystemVisitor {
public:
    Builder(FileIndex& index, const IndexSettings& settings, const std::atomic<bool>* cancel)
        : mIndex(index), mSettings(settings), mCancel(cancel) {}

    // Appends the search paths that cannot be listed. False when it was cancelled.
    bool walkAll(std::vector<std::string>& missing) {
        for (mNumber = 0; mNumber < mSettings.searchPaths.size() && mIndex.mIsComplete; ++mNumber) {
            const SearchPath& path = mSettings.searchPaths[mNumber];
            if (isCovered(path.key)) continue;
            mHasEntered = false;
            mLevels.clear();
            visit(path.folder, path.isRecursive);
            if (mIsCanceled) return false;
            // A folder that cannot be listed is not entered.
            if (!mHasEntered && mIndex.mIsComplete) missing.push_back(path.folder);
        }
        return true;
    }

private:
    // Whether an earlier search path has the files of the folder already.
    bool isCovered(std::string_view folderKey) const {
        const auto end = mSettings.searchPaths.begin() + static_cast<std::ptrdiff_t>(mNumber);
        return std::any_of(mSettings.searchPaths.begin(), end, [&](const SearchPath& path) {
            return path.key == folderKey || (path.isRecursive && isBelow(folderKey, path.key));
        });
    }

    // The result false ends the whole walk. So a cancellation takes effect at the next folder.
    bool onEnterFolder(const std::string& folder) override {
        mIsCanceled = mCancel && mCancel->load(std::memory_order_relaxed);
        if (mIsCanceled) return false;
        mHasEntered = true;
        // Only its files are left out, not its subfolders: an earlier search path that is not recursive does not cover
        // those.
        const bool isSkipped = mNumber != 0 && isCovered(nameKey(folder));
        mLevels.push_back({kNone, isSkipped});
        return true;
    }

    bool onLeaveFolder(const std::string&) override {
        mLevels.pop_back();
        return true;
    }

    bool onFile(const std::string& folder, const std::string& file) override {
        Level& level = mLevels.back();
        if (level.isSkipped) return true;
        const std::string key = nameKey(file);
        if (!isWanted(key)) return true;
        if (isFull()) {
            mIndex.mIsComplete = false;
            return false;
        }
        // A folder gets a record in the index with its first wanted file.
        if (level.folder == kNone) level.folder = addFolder(folder);
        const auto name = static_cast<std::uint32_t>(mIndex.mNames.size());
        mIndex.mEntries.push_back({level.folder, name, hashOf(key), kNone});
        mIndex.mNames.append(file).push_back('\0');
        return true;
    }

    bool isFull() const {
        constexpr std::size_t kMostNameBytes = 0xFFFF0000;  // offsets have 32 bits
        return mIndex.mEntries.size() >= (std::min)(mSettings.maxFiles, std::size_t{kNone}) ||
               mIndex.mNames.size() > kMostNameBytes;
    }

    std::uint32_t addFolder(const std::string& path) {
        const auto depth = static_cast<unsigned>(mLevels.size() - 1);
        mIndex.mFolders.push_back({path, static_cast<unsigned>(mNumber), depth});
        return static_cast<std::uint32_t>(mIndex.mFolders.size() - 1);
    }

    bool isWanted(const std::string& key) const {
        const auto& extensions = mSettings.extensionKeys;
        return extensions.empty() || std::any_of(extensions.begin(), extensions.end(), [&](const std::string& end) {
                   return key.size() >= end.size() && key.compare(key.size() - end.size(), end.size(), end) == 0;
               });
    }

    // A folder that the walk is inside of.
    struct Level {
        std::uint32_t folder;  // in the index, kNone until it has a file
        bool isSkipped;        // its files are those of an earlier search path
    };

    FileIndex& mIndex;
    const IndexSettings& mSettings;
    const std::atomic<bool>* const mCancel;
    std::size_t mNumber = 0;  // of the search path
    std::vector<Level> mLevels;
    bool mHasEntered = false;
    bool mIsCanceled = false;
};

FileIndex::Built FileIndex::build(const IndexSettings& settings, const std::atomic<bool>* cancel) {
    Built built;
    built.maxFiles = settings.maxFiles;
    const auto index = std::make_shared<FileIndex>();
    index->mGeneration = settings.generation;
    if (!Builder(*index, settings, cancel).walkAll(built.missing)) return built;
    index->link();
    built.index = index;
    return built;
}

void FileIndex::Built::log() const {
    for (const std::string& folder : missing)
        xoLogObject(xoLogDebug, "XRefResolver", xoLog::editPtr(), nullptr)
            << "xoXRefResolverSearchPath cannot list \"" << std::string_view(folder) << "\"";
    if (index && !index->isComplete())
        xoLogObject(xoLogWarning, nullptr, xoLog::editPtr(), nullptr)
            << "xoXRefResolverSearchPath too many files (more than " << maxFiles << ")";
}

void FileIndex::link() {
    // The index does not grow any more, so what its vectors have reserved is freed.
    mFolders.shrink_to_fit();
    mEntries.shrink_to_fit();
    mNames.shrink_to_fit();
    std::size_t heads = 1;
    // A power of two, so that a mask of the hash replaces a division. An empty index has one head, so that find needs
    // no test.
    while (heads < mEntries.size()) heads *= 2;
    mHeads.assign(heads, kNone);
    for (std::size_t i = 0; i < mEntries.size(); ++i) {
        std::uint32_t& head = mHeads[mEntries[i].hash & (heads - 1)];
        mEntries[i].next = head;
        head = static_cast<std::uint32_t>(i);
    }
}

std::vector<FileIndex::Found> FileIndex::find(std::string_view key) const {
    std::vector<Found> found;
    const std::uint32_t hash = hashOf(key);
    for (std::uint32_t at = mHeads[hash & (mHeads.size() - 1)]; at != kNone; at = mEntries[at].next) {
        const Entry& entry = mEntries[at];
        const char* const name = mNames.c_str() + entry.name;
        // The keys are not stored: one is made again for each name whose hash matches, which are few.
        if (entry.hash != hash || nameKey(name) != key) continue;
        const Folder& folder = mFolders[entry.folder];
        std::string path = folder.path;
        if (path.back() != '/') path += '/';
        found.push_back({path + name, folder.searchPath, folder.depth});
    }
    return found;
}

}  // namespace xo::xref
