// Walks a tree for a visitor, and converts the paths and names to UTF-8.
#include <string_view>
#include <vector>

#include "files/folderWalk.h"
#include "files/pathParts.h"
#include "files/walkProgress.h"
#include "platform/wideText.h"
#include "xoSystem/xoDirUtils.h"

namespace xo {
namespace {

using FileSystemVisitor = xoDirUtils::FileSystemVisitor;

// Appends a name to a path in the form that visitors get: with "/", and without a separator in front of the first name.
void appendName(std::string& path, std::string_view name) {
    if (!path.empty() && path.back() != '/' && path.back() != '\\') path += '/';
    path += name;
}

// The extensions of the files that are visited; null or an empty list accepts all files. Upper and lower case differ. A
// list of only empty extensions accepts no file.
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

// One call of visit().
class Visit : public files::FolderWalk::Task {
public:
    using FolderWalk = files::FolderWalk;
    using Step = FolderWalk::Step;

    Visit(FileSystemVisitor& visitor, const std::string& folder, bool recursive,
          const std::vector<std::string>* extensions, xoProgressNotifier* progress)
        : mVisitor(visitor), mIsRecursive(recursive), mFilter(extensions), mProgress(progress), mFolder(folder) {}

    bool onEnter(FolderWalk& walk) override {
        if (walk.depth() > 1) appendName(mFolder, mName);
        mFolderLengths.push_back(mFolder.size());
        if (mProgress) mProgress.enter(countSteps(walk), mFolder);
        return mProgress.goesOn() && mVisitor.onEnterFolder(mFolder);
    }

    Step onEntry(FolderWalk&, const files::FolderEntry& entry) override {
        const bool isStep = entry.isFolder && mIsRecursive;
        if (!(isStep ? mProgress.beginStep() : mProgress.goesOn())) return Step::Stop;
        mName.clear();
        platform::appendUtf8(mName, entry.name);
        const bool goesOn = entry.isFolder ? mVisitor.onFolder(mFolder, mName)
                                           : !mFilter.accepts(mName) || mVisitor.onFile(mFolder, mName);
        if (!goesOn) return Step::Stop;
        return isStep ? Step::Enter : Step::PassOver;
    }

    bool onLeave(FolderWalk&) override {
        // The scopes that are still open are closed by the destructor of mProgress, as incomplete.
        if (!mVisitor.onLeaveFolder(mFolder)) return false;
        mProgress.leave(/*isComplete=*/true);
        mFolderLengths.pop_back();
        if (!mFolderLengths.empty()) mFolder.resize(mFolderLengths.back());
        return true;
    }

private:
    // Each sub-folder that is walked is a step, and all other entries together are one.
    std::uint64_t countSteps(const FolderWalk& walk) const {
        std::uint64_t steps = 1;
        walk.forEachEntry([&](const files::FolderEntry& entry) {
            if (entry.isFolder && mIsRecursive) ++steps;
            return true;
        });
        return steps;
    }

    FileSystemVisitor& mVisitor;
    const bool mIsRecursive;
    const NameFilter mFilter;
    files::WalkProgress mProgress;
    std::string mFolder;                      // the path of the walk's folder as the visitor gets it
    std::string mName;                        // of the last entry; a buffer that is used again
    std::vector<std::size_t> mFolderLengths;  // the lengths of mFolder in the folders that the walk is in
};

}  // namespace

xoDirUtils::FileSystemVisitor::~FileSystemVisitor() = default;

bool xoDirUtils::FileSystemVisitor::onEnterFolder(const std::string&) { return true; }

bool xoDirUtils::FileSystemVisitor::onFile(const std::string&, const std::string&) { return true; }

bool xoDirUtils::FileSystemVisitor::onFolder(const std::string&, const std::string&) { return true; }

bool xoDirUtils::FileSystemVisitor::onLeaveFolder(const std::string&) { return true; }

bool xoDirUtils::FileSystemVisitor::visit(const std::string& folder, bool recursive,
                                          const std::vector<std::string>* extensions) {
    return visit(folder, recursive, extensions, /*progress=*/nullptr);
}

bool xoDirUtils::FileSystemVisitor::visit(const std::string& folder, bool recursive,
                                          const std::vector<std::string>* extensions, xoProgressNotifier* progress) {
    if (progress && progress->isCanceled()) return false;
    Visit visit(*this, folder, recursive, extensions, progress);
    // An empty path means the root of the current drive.
    const std::wstring top = files::searchedFolder(folder.empty() ? "/" : folder);
    return files::FolderWalk(visit, top, /*keepsFolderOpen=*/false).run();
}

std::string xoDirUtils::FileSystemVisitor::concatPathAndFile(const std::string& folder, const std::string& file) {
    std::string path;
    path.reserve(folder.size() + 1 + file.size());
    path = folder;
    appendName(path, file);
    return path;
}

}  // namespace xo
