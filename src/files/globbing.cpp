// Collects the paths or names of the files and folders that a walk visits.
#include "xoSystem/xoDirUtils.h"

namespace xo {
namespace {

// Appends to the lists of the caller, each of which may be null.
class GlobFileAndFolderFunctor : public xoDirUtils::FileSystemVisitor {
public:
    GlobFileAndFolderFunctor(std::vector<std::string>* files, std::vector<std::string>* folders, bool fullPaths)
        : mFiles(files), mFolders(folders), mFullPaths(fullPaths) {}

    bool onEnterFolder(const std::string&) override { return true; }
    bool onFile(const std::string& folder, const std::string& file) override { return collect(mFiles, folder, file); }
    bool onFolder(const std::string& folder, const std::string& subFolder) override {
        return collect(mFolders, folder, subFolder);
    }
    bool onLeaveFolder(const std::string&) override { return true; }

private:
    bool collect(std::vector<std::string>* names, const std::string& folder, const std::string& name) const {
        if (names == nullptr) return true;
        if (mFullPaths) {
            names->push_back(concatPathAndFile(folder, name));
        } else {
            names->push_back(name);
        }
        return true;
    }

    std::vector<std::string>* const mFiles;
    std::vector<std::string>* const mFolders;
    const bool mFullPaths;
};

}  // namespace

void xoDirUtils::GlobFileAndFolderUtf8(const std::string& folder, std::vector<std::string>* files,
                                       std::vector<std::string>* folders, const std::vector<std::string>* extensions,
                                       int flags) {
    // Copies, because the folder may be an element of a list that is cleared, and the extensions may be such a list.
    const std::string start(folder.data(), folder.size());
    std::vector<std::string> ownExtensions;
    if (extensions != nullptr && (extensions == files || extensions == folders)) {
        ownExtensions = *extensions;
        extensions = &ownExtensions;
    }
    if ((flags & GlobAppend) == 0) {
        if (files != nullptr) files->clear();
        if (folders != nullptr) folders->clear();
    }
    GlobFileAndFolderFunctor(files, folders, (flags & GlobNamesOnly) == 0)
        .visit(start, (flags & GlobRecursive) != 0, extensions);
}

}  // namespace xo
