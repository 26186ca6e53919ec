// Walks through folders, copying and clearing them, against the standard library's and the bare search of Windows.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "families.h"
#include "platform/handle.h"
#include "xoSystem/xoDirUtils.h"
#include "xoSystem/xoXRefResolverSearchPath.h"

namespace bench {
namespace {

using Paths = std::vector<std::string>;

constexpr int kFolders = 100;
constexpr int kFilesPerFolder = 200;

void makeFile(const std::filesystem::path& path) {
    const xo::platform::FileHandle file(
        ::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
    require(static_cast<bool>(file), "a file could not be made");
}

// Folders beside each other with files in them; Wine takes long to fill larger ones.
class Tree {
public:
    Tree() : mTop(std::filesystem::temp_directory_path() / L"xoBench folders") {
        for (int i = 0; i < kFolders; ++i) {
            const std::filesystem::path folder = mTop / (L"folder " + std::to_wstring(i));
            std::filesystem::create_directories(folder);
            for (int j = 0; j < kFilesPerFolder; ++j) makeFile(folder / (L"picture " + std::to_wstring(j) + L".jpg"));
        }
    }
    ~Tree() {
        std::error_code ignored;
        std::filesystem::remove_all(mTop, ignored);
    }
    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;

    const std::filesystem::path& top() const { return mTop; }

private:
    const std::filesystem::path mTop;
};

Paths collectByOurs(const std::string& top) {
    Paths files;
    xo::xoDirUtils::GlobFileAndFolderUtf8(top, &files, nullptr, nullptr, xo::xoDirUtils::GlobRecursive);
    return files;
}

Paths collectByStandard(const std::filesystem::path& top) {
    Paths files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(top))
        if (!entry.is_directory()) files.push_back(entry.path().generic_u8string());
    return files;
}

// Only counts the files.
int countBySearch(const std::wstring& folder) {
    int files = 0;
    WIN32_FIND_DATAW found;
    const xo::platform::FindHandle search(::FindFirstFileW((folder + L"\\*").c_str(), &found));
    do {
        if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
            ++files;
        } else if (found.cFileName[0] != L'.') {
            files += countBySearch(folder + L"\\" + found.cFileName);
        }
    } while (::FindNextFileW(search.get(), &found));
    return files;
}

// Only counts the files.
class Counter : public xo::xoDirUtils::FileSystemVisitor {
public:
    bool onFile(const std::string&, const std::string&) override {
        ++files;
        return true;
    }
    int files = 0;
};

int countByVisitor(const std::string& top) {
    Counter counter;
    counter.visit(top);
    return counter.files;
}

// The hit is one file of 20000 whose name no other has.
void measureResolver(Suite& suite, const std::string& top) {
    xo::xoXRefResolverSearchPath resolver;
    resolver.addSearchPathUtf8(top);
    require(resolver.refresh() && resolver.getFileCount() == kFolders * kFilesPerFolder + 1, "the index is not whole");
    suite.compare("files", "index 20000 files for the resolver", kFolders * kFilesPerFolder,
                  [&] { keep(resolver.refresh()); },
                  {{"limit: FileSystemVisitor, count", [&] { keep(countByVisitor(top)); }}});
    const std::string reference = "Q:/elsewhere/unique name.png", path = resolver.resolveUtf8(reference);
    require(!path.empty(), "the file was not found");
    const auto wide = [](const std::string& name) { return std::filesystem::u8path(name).wstring(); };
    const std::wstring found = wide(path), tried = wide(reference), below = wide(top + "/elsewhere/unique name.png");
    constexpr int kTimes = 100;
    suite.compare("files", "resolve a reference by its name", kTimes,
                  [&] {
                      for (int i = 0; i < kTimes; ++i) keep(resolver.resolveUtf8(reference));
                  },
                  {{"limit: the existence checks", [&] {
                        for (int i = 0; i < kTimes; ++i)
                            for (const std::wstring* const each : {&tried, &below, &found})
                                keep(::GetFileAttributesW(each->c_str()));
                    }}});
}

// Small files, as documents and settings are; copied to a second folder and removed there.
void measureTreeCopies(Suite& suite) {
    namespace fs = std::filesystem;
    constexpr int kCopied = 200;
    const fs::path from = fs::temp_directory_path() / L"xoBench from", to = fs::temp_directory_path() / L"xoBench to";
    const auto clearStandard = [&] { fs::remove_all(to); };
    clearStandard();  // what an interrupted run has left
    for (int i = 0; i < kCopied; ++i) {
        const fs::path folder = from / (L"folder " + std::to_wstring(i % 20));
        fs::create_directories(folder);
        std::ofstream(folder / (L"document " + std::to_wstring(i)), std::ios::binary) << std::string(2000, 'x');
    }
    const std::string source = from.u8string(), target = to.u8string();
    const auto copyOurs = [&] { require(xo::xoDirUtils::CopyFolderUtf8(source, target), "no copy"); };
    const auto copyStandard = [&] { fs::copy(from, to, fs::copy_options::recursive); };
    const auto clearOurs = [&] { require(xo::xoDirUtils::ClearFolderUtf8(target, /*removeFolderItself=*/true), "no"); };
    copyOurs();
    require(collectByStandard(to).size() == kCopied, "not all files were copied");
    suite.compare("files", "copy a tree, a file of 2 KB", kCopied, copyOurs, {{"std::filesystem::copy", copyStandard}},
                  clearStandard);
    suite.compare("files", "clear a tree, a file", kCopied, clearOurs, {{"std::filesystem::remove_all", clearStandard}},
                  [&] {
                      clearStandard();
                      copyOurs();
                  });
    clearStandard();
    fs::remove_all(from);
}

}  // namespace

void measureFiles(Suite& suite) {
    if (!suite.wants("files")) return;
    measureTreeCopies(suite);
    const Tree tree;
    const std::string top = tree.top().generic_u8string();
    Paths ours = collectByOurs(top), standard = collectByStandard(tree.top());
    std::sort(ours.begin(), ours.end());
    std::sort(standard.begin(), standard.end());
    constexpr int kFiles = kFolders * kFilesPerFolder;
    require(ours == standard && ours.size() == kFiles && countBySearch(tree.top()) == kFiles,
            "the sides found different files");
    suite.compare("files", "collect the paths of 20000 files", kFiles, [&] { keep(collectByOurs(top)); },
                  {{"std::filesystem", [&] { keep(collectByStandard(tree.top())); }},
                   {"limit: FindFirstFileW, count", [&] { keep(countBySearch(tree.top())); }}});
    makeFile(tree.top() / L"unique name.png");
    measureResolver(suite, top);
}

}  // namespace bench
