#include <map>

#include "files/filesFixture.h"
#include "support/importHook.h"
#include "xoSystem/xoProgress.h"

#include <gmock/gmock.h>
#include <winioctl.h>

namespace {

using xo::xoDirUtils;
using xo::tests::ImportHook;
using xo::tests::makeFile;

// Cancels the work at the given fraction.
class Canceler : public xo::xoProgressNotifier {
public:
    explicit Canceler(double at) : xoProgressNotifier(0), mAt(at) {}
    double before = 0;
    double first = 0;  // above 0
    std::uint64_t total = 0;
    std::string texts;

private:
    void onProgress(const xo::xoProgressState& state) override {
        EXPECT_GE(state.fraction, before);
        before = state.fraction;
        if (first == 0) first = before;
        total = state.unit == xo::ProgressUnitBytes ? state.total : total;
        if (texts.find(state.text) == std::string::npos) texts += state.text + "|";
        if (state.fraction >= mAt) cancel();
    }

    const double mAt;
};

class CopyFolder : public xo::tests::FolderTest {
protected:
    CopyFolder() {
        xoDirUtils::MkpathUtf8(path("top/a \xC3\xA9/empty"));
        mFolder.write("top/\xE6\x97\xA5", "1234567890");
        mFolder.write("top/a \xC3\xA9/none", "");
        mFolder.write("top/a \xC3\xA9/x", std::string(30, 'x'));
        ::SetFileAttributesW(wide("top/a \xC3\xA9/x").c_str(), FILE_ATTRIBUTE_READONLY);
        for (const char* name : {"top/\xE6\x97\xA5", "top/a \xC3\xA9/x", "top/a \xC3\xA9", "top"}) age(name);
    }

    std::wstring wide(const std::string& name) const { return xo::platform::toApiPath(path(name)); }

    // Gives it a time of last change in the past.
    void age(const std::string& name) const {
        const auto opened =
            xo::tests::open(path(name), FILE_WRITE_ATTRIBUTES, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS,
                            FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE);
        const FILETIME old{0x4A000000u + static_cast<DWORD>(name.size()) * 0x1000000u, 0x01D00000};
        EXPECT_TRUE(::SetFileTime(opened.get(), nullptr, nullptr, &old)) << name;
    }

    // All below a folder: the path, the facts and the content of a file.
    using Tree = std::map<std::string, std::string>;
    Tree treeOf(const std::string& folder) const {
        Tree tree;
        for (const auto& entry :
             std::filesystem::recursive_directory_iterator(mFolder.widePath() / std::filesystem::u8path(folder))) {
            const std::string name = entry.path()
                                         .lexically_relative(mFolder.widePath() / std::filesystem::u8path(folder))
                                         .generic_u8string();
            tree[name] = facts(folder + "/" + name);
            if (!entry.is_directory()) tree[name] += " " + mFolder.read(folder + "/" + name);
        }
        return tree;
    }
    // The attributes, and the times of creation and of the last change.
    std::string facts(const std::string& name) const {
        WIN32_FILE_ATTRIBUTE_DATA data{};
        EXPECT_TRUE(::GetFileAttributesExW(wide(name).c_str(), GetFileExInfoStandard, &data)) << name;
        const DWORD kept = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY;
        std::string text = std::to_string(data.dwFileAttributes & kept);
        for (const FILETIME& time : {data.ftCreationTime, data.ftLastWriteTime})
            text += " " + std::to_string(time.dwHighDateTime) + " " + std::to_string(time.dwLowDateTime);
        return text;
    }

    bool copy(const std::string& to, bool failIfExists = true, xo::xoProgressNotifier* progress = nullptr) {
        return xoDirUtils::CopyFolderUtf8(path("top"), path(to), failIfExists, &mError, progress);
    }
};

TEST_F(CopyFolder, CopiesContentAttributesAndTimes) {
    const Tree source = treeOf("top");
    ASSERT_EQ(source.size(), 5u);
    EXPECT_TRUE(copy("new/folders/copy//"));
    EXPECT_TRUE(xoDirUtils::CopyFolderUtf8(path("top") + "\\", mDeep + "/copy/"));
    EXPECT_TRUE(xoDirUtils::CopyFolderUtf8(mDeep + "/copy", path("back"), true, &mError)) << mError;
    for (const char* name : {"new/folders/copy", "back"}) EXPECT_EQ(treeOf(name), source) << name;
    EXPECT_EQ(mError, "untouched");
    EXPECT_EQ(facts("new/folders/copy"), facts("top"));
    // The target has a name that other programs can open.
    EXPECT_TRUE(copy("named. /"));
    EXPECT_EQ(facts("named"), facts("top"));
}

// As Windows does, and not Wine: protected files are not replaced. Or no file at all is.
bool deniesAll = false;
BOOL WINAPI copyUnprotected(LPCWSTR from, LPCWSTR to, LPPROGRESS_ROUTINE progress, void* data, BOOL* cancel,
                            DWORD flags) {
    const DWORD there = ::GetFileAttributesW(to);
    const DWORD protecting = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;
    if (deniesAll || (there != INVALID_FILE_ATTRIBUTES && (there & protecting) != 0))
        return ::SetLastError(ERROR_ACCESS_DENIED), FALSE;
    return ImportHook::behind(&copyUnprotected)(from, to, progress, data, cancel, flags);
}

TEST_F(CopyFolder, ReportsWhatItCannotCopyAndCopiesTheRest) {
    xoDirUtils::MkpathUtf8(path("to/a \xC3\xA9"));
    mFolder.write("to/\xE6\x97\xA5", "old");
    mFolder.write("to/a \xC3\xA9/empty", "a file in the way");
    mFolder.write("to/other", "kept");
    auto held = xo::tests::hold(path("top/held"));
    const std::string top = path("top");
    EXPECT_FALSE(copy("to"));
    for (const std::string& line : {"CopyFileExW error 32 for " + top + "\\held",
                                    "CreateDirectoryW error 267 for " + top + "\\a \xC3\xA9\\empty"})
        EXPECT_NE(mError.find(line), std::string::npos) << mError;
    EXPECT_NE(mError.find("CopyFileExW error 80 for " + top + "\\\xE6\x97\xA5"), std::string::npos) << mError;
    EXPECT_EQ(mFolder.read("to/\xE6\x97\xA5") + mFolder.read("to/a \xC3\xA9/x"), "old" + std::string(30, 'x'));
    held.reset();
    Canceler whole(2);
    const std::wstring guarded = wide("to/a \xC3\xA9/x");
    ::SetFileAttributesW(guarded.c_str(), FILE_ATTRIBUTE_NORMAL);
    mFolder.write("to/a \xC3\xA9/x", "old");
    ::SetFileAttributesW(guarded.c_str(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN);
    const ImportHook hook("xoSystem.dll", "CopyFileExW", &copyUnprotected);
    deniesAll = true;
    EXPECT_FALSE(copy("to", /*failIfExists=*/false));
    EXPECT_EQ(::GetFileAttributesW(guarded.c_str()) & 3u, 3u) << "denied for another reason";
    deniesAll = false;
    EXPECT_FALSE(copy("to", /*failIfExists=*/false, &whole)) << "the file in the way";
    EXPECT_EQ(mError, "CreateDirectoryW error 267 for " + top + "\\a \xC3\xA9\\empty");
    EXPECT_EQ(mFolder.read("to/a \xC3\xA9/x"), std::string(30, 'x'));
    EXPECT_EQ(::GetFileAttributesW(guarded.c_str()) & FILE_ATTRIBUTE_HIDDEN, 0u);
    EXPECT_EQ(whole.getState().phase, xo::xoProgressState::PhaseStopped);
    EXPECT_EQ(mFolder.read("to/\xE6\x97\xA5") + mFolder.read("to/other"), "1234567890kept");

    for (const std::string& from : {path("missing"), path("top/held"), std::string()}) {
        EXPECT_FALSE(xoDirUtils::CopyFolderUtf8(from, path("none"), false, &mError));
        EXPECT_EQ(mError.find("FindFirstFileW error "), 0u) << mError;
        EXPECT_FALSE(mFolder.has("none"));
    }
}

TEST_F(CopyFolder, NeverCopiesAFolderIntoItself) {
    xoDirUtils::MkpathUtf8(path("top/empty"));
    const Tree source = treeOf("top");
    for (const char* to : {"top/A \xC3\x89/inside", "top/backup"}) {
        Canceler whole(2);
        EXPECT_TRUE(copy(to, /*failIfExists=*/false, &whole)) << mError;
        EXPECT_EQ(whole.total, 40u * (to[4] == 'A' ? 1 : 2)) << "an older copy counts, the one under way does not";
    }
    EXPECT_EQ(treeOf("top/a \xC3\xA9/inside").size(), source.size());
    EXPECT_EQ(treeOf("top/backup").size(), 2 * source.size() + 1);

    // Where paths do not tell: the top's sub-folder under another name.
    xo::tests::makeLink(mFolder.widePath() / "alias", "top/empty");
    const auto refuse = +[](HANDLE, wchar_t*, DWORD, DWORD) -> DWORD { return 0; };
    if (xo::tests::isLink(mFolder.widePath() / "alias")) {
        const ImportHook hook("xoSystem.dll", "GetFinalPathNameByHandleW", refuse);
        EXPECT_FALSE(copy("alias/inside", /*failIfExists=*/false));
        EXPECT_EQ(mError, path("top") + "\\empty\\inside is the target and is not copied");
        EXPECT_TRUE(mFolder.has("top/empty/inside/backup") && !mFolder.has("top/empty/inside/empty/inside"));
        if (!::RemoveDirectoryW((mFolder.widePath() / "alias").c_str()))
            xo::tests::runUnix(mFolder.widePath(), L"rm alias");
    }
    EXPECT_FALSE(xoDirUtils::CopyFolderUtf8(path("top"), path("TOP/a \xC3\xA9/.."), false, &mError));
    EXPECT_EQ(mError, path("top") + " cannot be copied to itself");
}

// Beyond 1000 characters, where files are copied by their handles.
TEST_F(CopyFolder, NeverEmptiesAFileThatIsItsOwnTarget) {
    std::string below;
    while (below.size() < 1000) below += "\\" + std::string(120, 'n');
    for (const char* const top : {"far", "far too"}) ASSERT_TRUE(xoDirUtils::MkpathUtf8(path(top) + below));
    const std::string from = path("far") + below + "\\x", to = path("far too") + below + "\\x";
    DWORD written = 0;
    ::WriteFile(xo::tests::hold(from).get(), "content", 7, &written, nullptr);
    if (!::CreateHardLinkW(xo::platform::toApiPath(to).c_str(), xo::platform::toApiPath(from).c_str(), nullptr))
        GTEST_SKIP() << "no hard links here";
    EXPECT_FALSE(xoDirUtils::CopyFolderUtf8(path("far"), path("far too"), /*failIfExists=*/false, &mError));
    EXPECT_EQ(mError, "CopyFileExW error 32 for " + from);
    xo::xoFileInfoUtf8 info;
    xoDirUtils::GetFileInfoUtf8(from, info);
    EXPECT_EQ(info.size, 7u);
}

TEST_F(CopyFolder, CountsBytesAndCanBeCanceled) {
    Canceler whole(2);
    EXPECT_TRUE(copy("whole", true, &whole));
    EXPECT_EQ(whole.getState().phase, xo::xoProgressState::PhaseDone);
    EXPECT_EQ(whole.total, 40u);
    EXPECT_GE(whole.first, 0.2) << "a file fills as many steps as it has bytes";
    EXPECT_NE(whole.texts.find("counting|"), std::string::npos);
    EXPECT_NE(whole.texts.find("a \xC3\xA9\\x|"), std::string::npos);

    for (const double at : {0.0, 0.1, 0.9}) {  // before, and behind the first file and the second
        const std::string to = "to " + std::to_string(at);
        Canceler canceler(at);
        EXPECT_EQ(copy(to, true, &canceler), at > 0.5) << "too late";
        EXPECT_EQ(mError, at > 0.5 ? "untouched" : "Canceled");
        EXPECT_EQ(mFolder.has(to + "/\xE6\x97\xA5") + mFolder.has(to + "/a \xC3\xA9/x"), at * 2 > 1 ? 2
                                                                                         : at > 0   ? 1
                                                                                                    : 0);
        mError = "untouched";
    }
}

std::string linkData;
std::string setData;
BOOL WINAPI answerForLinks(HANDLE, DWORD code, void* in, DWORD inSize, void* out, DWORD, DWORD* got, OVERLAPPED*) {
    if (code == FSCTL_SET_REPARSE_POINT) setData.assign(static_cast<char*>(in), inSize);
    if (code == FSCTL_GET_REPARSE_POINT)
        linkData.copy(static_cast<char*>(out), *got = static_cast<DWORD>(linkData.size()));
    return linkData.empty() ? ::SetLastError(ERROR_NOT_SUPPORTED), FALSE : TRUE;
}

// Wine neither tells nor makes what a link consists of.
TEST_F(CopyFolder, CopiesLinksAsLinks) {
    xoDirUtils::MkpathUtf8(path("target/inner"));
    const std::filesystem::path link = mFolder.widePath() / "top" / "link";
    xo::tests::makeLink(link, "../target");
    if (!xo::tests::isLink(link)) GTEST_SKIP() << "no way to make a link here";
    const ImportHook hook("xoSystem.dll", "DeviceIoControl", &answerForLinks);
    EXPECT_FALSE(copy("to"));
    EXPECT_EQ(mError, "DeviceIoControl error 50 for " + path("top") + "\\link");
    EXPECT_FALSE(mFolder.has("to/link"));
    EXPECT_TRUE(mFolder.has("to/a \xC3\xA9/x"));
    linkData = "what the link consists of";
    EXPECT_TRUE(copy("to2")) << mError;
    EXPECT_EQ(setData, linkData);
    EXPECT_TRUE(mFolder.has("to2/link"));
    EXPECT_FALSE(mFolder.has("to2/link/inner"));
    if (!::RemoveDirectoryW(link.c_str())) xo::tests::runUnix(link.parent_path(), L"rm link");
}

}  // namespace
