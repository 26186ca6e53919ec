// What the tests of files share: names that are hard to handle, and files that are hard to delete.
#ifndef XO_TESTS_FILESFIXTURE_H
#define XO_TESTS_FILESFIXTURE_H

#include <gtest/gtest.h>

#include <string>

#include "platform/handle.h"
#include "platform/wideText.h"
#include "support/openHandles.h"
#include "support/temporaryFolder.h"
#include "xoSystem/xoDirUtils.h"

namespace xo::tests {

class FolderTest : public testing::Test {
protected:
    FolderTest() {
        while (mDeep.size() < 400) mDeep += "\\a folder with a name of some length \xC3\xA9";
        EXPECT_TRUE(xoDirUtils::MkpathUtf8(mDeep));
    }

    std::string path(const std::string& name = {}) const { return mFolder.path(name); }

    const TemporaryFolder mFolder;
    std::string mDeep = path("long");  // a folder beyond the length limit
    std::string mError = "untouched";
};

inline platform::FileHandle open(const std::string& path, DWORD access, DWORD disposition, DWORD flags = 0,
                                 DWORD share = 0) {
    return platform::FileHandle(
        ::CreateFileW(platform::toApiPath(path).c_str(), access, share, nullptr, disposition, flags, nullptr));
}

// A new file that nobody else can open until the handle goes.
inline platform::FileHandle hold(const std::string& path) {
    return open(path, GENERIC_READ | GENERIC_WRITE, CREATE_ALWAYS);
}

inline void makeFile(const std::string& path, DWORD attributes = FILE_ATTRIBUTE_NORMAL) {
    EXPECT_TRUE(hold(path)) << path << " error " << ::GetLastError();
    EXPECT_TRUE(::SetFileAttributesW(platform::toApiPath(path).c_str(), attributes));
}

inline bool isLink(const std::filesystem::path& path) {
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

// Makes or removes a link in the folder by a program of the system below Wine, whose handle does not tell its end.
inline void runUnix(const std::filesystem::path& folder, std::wstring command) {
    const std::filesystem::path link = folder / command.substr(command.rfind(L' ') + 1);
    const bool before = isLink(link);
    const std::wstring program = LR"(\\?\unix\bin\)" + command.substr(0, 2);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (!::CreateProcessW(program.c_str(), command.data(), nullptr, nullptr, FALSE, 0, nullptr, folder.c_str(),
                          &startup, &process))
        return;
    const platform::KernelHandle thread(process.hThread), child(process.hProcess);
    for (int waits = 0; waits < 500 && isLink(link) == before; ++waits) ::Sleep(10);
}

// A link to a folder, told from where the link lies: a junction, or under Wine, which makes none, a symbolic link.
inline void makeLink(const std::filesystem::path& link, const std::filesystem::path& target) {
    const std::wstring absolute = (link.parent_path() / target).lexically_normal().wstring();
    ::_wsystem((L"mklink /J \"" + link.wstring() + L"\" \"" + absolute + L"\" >nul 2>nul").c_str());
    if (!isLink(link))
        runUnix(link.parent_path(), L"ln -s " + target.generic_wstring() + L" " + link.filename().wstring());
}

// Makes the folder the working directory of the process while it lives.
class WorkingFolder {
public:
    explicit WorkingFolder(const std::string& path) { EXPECT_TRUE(xoDirUtils::SetCurrentWorkingDirUtf8(path)); }
    ~WorkingFolder() { EXPECT_TRUE(xoDirUtils::SetCurrentWorkingDirUtf8(mBefore)); }

private:
    const std::string mBefore = xoDirUtils::GetCurrentWorkingDirUtf8();
};

}  // namespace xo::tests

#endif
