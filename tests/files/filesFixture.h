// What the tests of files share: names that are hard to handle, and files that are hard to delete.
#ifndef XO_TESTS_FILESFIXTURE_H
#define XO_TESTS_FILESFIXTURE_H

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "platform/handle.h"
#include "platform/wideText.h"
#include "support/temporaryFolder.h"
#include "xoSystem/xoDirUtils.h"

namespace xo::tests {

// A folder path inside the given one, of 400 characters at least.
inline std::string longPath(const TemporaryFolder& folder) {
    std::string path = folder.path("long");
    while (path.size() < 400) path += "\\a folder with a name of some length \xC3\xA9";
    return path;
}

inline platform::FileHandle open(const std::string& path, DWORD access, DWORD sharing, DWORD disposition) {
    return platform::FileHandle(::CreateFileW(platform::toApiPath(path).c_str(), access, sharing, nullptr, disposition,
                                              FILE_ATTRIBUTE_NORMAL, nullptr));
}

// A new file that nobody else can open until the handle goes.
inline platform::FileHandle hold(const std::string& path) {
    return open(path, GENERIC_READ | GENERIC_WRITE, 0, CREATE_ALWAYS);
}

inline void makeFile(const std::string& path) { ASSERT_TRUE(hold(path)) << path << " error " << ::GetLastError(); }

inline void makeReadOnly(const std::string& path) {
    ASSERT_TRUE(::SetFileAttributesW(platform::toApiPath(path).c_str(), FILE_ATTRIBUTE_READONLY));
}

// A folder at path that only leads to target: a junction, or under Wine, which makes none, a link of the host system.
inline bool makeFolderLink(const TemporaryFolder& folder, const std::string& name, const std::string& target) {
    const std::wstring link = (folder.widePath() / name).wstring();
    const std::wstring leadsTo = (folder.widePath() / target).wstring();
    ::_wsystem((L"mklink /J \"" + link + L"\" \"" + leadsTo + L"\" >nul 2>nul").c_str());
    const auto isLink = [&] {
        const DWORD attributes = ::GetFileAttributesW(link.c_str());
        return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    };
    if (isLink()) return true;

    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    std::wstring command =
        L"ln -s " + std::wstring(target.begin(), target.end()) + L" " + std::wstring(name.begin(), name.end());
    if (!::CreateProcessW(LR"(\\?\unix\bin\ln)", command.data(), nullptr, nullptr, FALSE, 0, nullptr,
                          folder.widePath().c_str(), &startup, &process))
        return false;
    const platform::KernelHandle thread(process.hThread);
    const platform::KernelHandle child(process.hProcess);
    for (int waits = 0; waits < 500 && !isLink(); ++waits) ::Sleep(10);  // the handle of such a child tells nothing
    return isLink();
}

}  // namespace xo::tests

#endif
