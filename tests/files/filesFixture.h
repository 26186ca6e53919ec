// What the tests of files share: names that are hard to handle, and files that are hard to delete.
#ifndef XO_TESTS_FILESFIXTURE_H
#define XO_TESTS_FILESFIXTURE_H

#include <gtest/gtest.h>

#include <string>

#include "platform/handle.h"
#include "platform/wideText.h"
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

inline platform::FileHandle open(const std::string& path, DWORD access, DWORD disposition, DWORD flags = 0) {
    return platform::FileHandle(
        ::CreateFileW(platform::toApiPath(path).c_str(), access, 0, nullptr, disposition, flags, nullptr));
}

// A new file that nobody else can open until the handle goes.
inline platform::FileHandle hold(const std::string& path) {
    return open(path, GENERIC_READ | GENERIC_WRITE, CREATE_ALWAYS);
}

inline void makeFile(const std::string& path, DWORD attributes = FILE_ATTRIBUTE_NORMAL) {
    EXPECT_TRUE(hold(path)) << path << " error " << ::GetLastError();
    EXPECT_TRUE(::SetFileAttributesW(platform::toApiPath(path).c_str(), attributes));
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
