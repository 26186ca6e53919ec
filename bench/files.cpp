// Walks through folders, against the standard library's and the bare search of Windows.
#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "families.h"
#include "platform/handle.h"
#include "xoSystem/xoDirUtils.h"

namespace bench {
namespace {

using Paths = std::vector<std::string>;

constexpr int kFolders = 100;
constexpr int kFilesPerFolder = 200;

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
    static void makeFile(const std::filesystem::path& path) {
        const xo::platform::FileHandle file(
            ::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
        require(static_cast<bool>(file), "a file could not be made");
    }

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

}  // namespace

void measureFiles(Suite& suite) {
    if (!suite.wants("files")) return;
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
}

}  // namespace bench
