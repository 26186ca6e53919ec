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

// The standard library removes neither read-only files nor what lies beyond 260 characters.
class TestFolder : public TemporaryFolder {
public:
    ~TestFolder() { xoDirUtils::ClearFolderUtf8(path()); }
};

// A folder path inside the given one, of 400 characters at least.
inline std::string longPath(const TestFolder& folder) {
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

// A folder "name" inside the given one that only leads to another: a junction, or under Wine, which makes none, a
// symbolic link of the host system. Gone with the object.
class FolderLink {
public:
    FolderLink(const TestFolder& folder, const std::string& name, const std::string& target)
        : mFolder(folder.widePath().wstring()), mName(std::filesystem::u8path(name).wstring()) {
        const std::wstring wideTarget = std::filesystem::u8path(target).wstring();
        ::_wsystem((L"mklink /J \"" + path() + L"\" \"" + mFolder + L"\\" + wideTarget + L"\" >nul 2>nul").c_str());
        if (!isMade()) runUnix(L"ln -s \"" + unixPath(wideTarget) + L"\" " + mName);
    }
    ~FolderLink() {
        if (isMade()) runUnix(L"rm " + mName);
        if (isMade()) ::RemoveDirectoryW(path().c_str());
    }
    FolderLink(const FolderLink&) = delete;
    FolderLink& operator=(const FolderLink&) = delete;

    bool isMade() const {
        const DWORD attributes = ::GetFileAttributesW(path().c_str());
        return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    }

private:
    std::wstring path() const { return mFolder + L"\\" + mName; }

    // As seen from the folder of the link.
    std::wstring unixPath(const std::wstring& target) const {
        std::wstring up;
        for (const wchar_t c : mName)
            if (c == L'/') up += L"../";
        return up + target;
    }

    // Waits for what is to become of the link: the handle of such a child tells nothing.
    void runUnix(std::wstring command) const {
        const bool before = isMade();
        const std::wstring program = LR"(\\?\unix\bin\)" + command.substr(0, command.find(L' '));
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        PROCESS_INFORMATION process{};
        if (!::CreateProcessW(program.c_str(), command.data(), nullptr, nullptr, FALSE, 0, nullptr, mFolder.c_str(),
                              &startup, &process))
            return;
        const platform::KernelHandle thread(process.hThread);
        const platform::KernelHandle child(process.hProcess);
        for (int waits = 0; waits < 500 && isMade() == before; ++waits) ::Sleep(10);
    }

    std::wstring mFolder;
    std::wstring mName;  // with "/" between its parts
};

}  // namespace xo::tests

#endif
