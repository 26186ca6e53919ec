#include <algorithm>
#include <functional>
#include <set>

#include "files/filesFixture.h"
#include "support/allocationCount.h"

#include <gmock/gmock.h>
#include <winternl.h>

namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using xo::xoDirUtils;
using xo::tests::ImportHook;
using xo::tests::makeFile;
using Texts = std::vector<std::string>;

constexpr DWORD kSharedByAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// Notes each call, with the folder cut down to what lies below the top.
class Recorder : public xoDirUtils::FileSystemVisitor {
public:
    explicit Recorder(std::string top) : mTop(std::move(top)) {}

    bool onEnterFolder(const std::string& folder) override { return note("+", folder); }
    bool onFile(const std::string& folder, const std::string& file) override { return note(file + " in ", folder); }
    bool onFolder(const std::string& folder, const std::string& sub) override { return note(sub + "/ in ", folder); }
    bool onLeaveFolder(const std::string& folder) override { return note("-", folder); }

    const Texts& walk(bool recursive = true) {
        calls.clear();
        result = visit(mTop, recursive);
        return calls;
    }

    std::function<bool(const std::string& folder)> onCall = [](const std::string&) { return true; };
    Texts calls;
    bool result = false;

private:
    bool note(const std::string& what, const std::string& folder) {
        calls.push_back(what + folder.substr(mTop.size()));
        return onCall(folder);
    }

    const std::string mTop;
};

class FolderWalk : public xo::tests::FolderTest {
protected:
    FolderWalk() {
        xoDirUtils::MkpathUtf8(path("top/d \xC3\xA9/empty"));
        for (const char* name : {"top/a.JPG", "top/bjpg", "top/d \xC3\xA9/\xE6\x97\xA5.jpg", "top/e.jpg"})
            makeFile(path(name));
    }

    // What a walk of the top calls, with the sub-folder by that name.
    static Texts wholeWalk(const std::string& sub = "d \xC3\xA9") {
        return {"+",
                "a.JPG in ",
                "bjpg in ",
                sub + "/ in ",
                "+/" + sub,
                "empty/ in /" + sub,
                "+/" + sub + "/empty",
                "-/" + sub + "/empty",
                "\xE6\x97\xA5.jpg in /" + sub,
                "-/" + sub,
                "e.jpg in ",
                "-"};
    }
    // The same when nothing can be listed of "empty".
    static Texts walkWithoutEmpty(const std::string& sub) {
        Texts calls = wholeWalk(sub);
        calls.erase(calls.begin() + 6, calls.begin() + 8);
        return calls;
    }

    const std::string mTop = path("top");
    const std::filesystem::path mWideTop = mFolder.widePath() / "top";
};

TEST_F(FolderWalk, GoesDownBeforeItGoesOn) {
    const xo::tests::WorkingFolder here(path());
    for (const std::string& given : {mTop, "top"s, "\\\\?\\" + mTop}) EXPECT_EQ(Recorder(given).walk(), wholeWalk());
    for (const std::string& given : {mTop + "\\", mTop + "/"}) EXPECT_EQ(Recorder(given).walk()[4], "+d \xC3\xA9");
    EXPECT_THAT(Recorder(mTop).walk(false),
                ElementsAre("+", "a.JPG in ", "bjpg in ", "d \xC3\xA9/ in ", "e.jpg in ", "-"));
    const std::string wraps = "\\\\?\\" + mTop + std::string(32768, 'x');  // to mTop, in 16 bits
    for (const std::string& given : {"missing"s, mTop + "/a.JPG", mTop + "\0"s, mTop + "/*"s, "\xFF"s, wraps}) {
        Recorder none(given);
        EXPECT_TRUE(none.walk().empty() && none.result) << given;
    }
}

TEST_F(FolderWalk, CollectsAsFilterAndFlagsSay) {
    const std::pair<Texts, std::size_t> rows[] = {{{}, 4},   {{"jpg"}, 2}, {{".jpg", "", "JPG"}, 3},
                                                  {{""}, 0}, {{"."}, 0},   {{"\xA5.jpg"}, 0}};
    for (const auto& [extensions, passing] : rows) {
        Texts files = {mTop}, folders = {"old"};
        xoDirUtils::GlobFileAndFolderUtf8(files[0], &files, &folders, &extensions, xoDirUtils::GlobRecursive);
        EXPECT_EQ(files.size(), passing);
        EXPECT_THAT(folders, ElementsAre(mTop + "/d \xC3\xA9", mTop + "/d \xC3\xA9/empty"));
        xoDirUtils::GlobFileAndFolderUtf8(mTop, nullptr, &folders, &extensions, 5);
        EXPECT_THAT(folders, ElementsAre(mTop + "/d \xC3\xA9", mTop + "/d \xC3\xA9/empty", "d \xC3\xA9"));
    }
    // More than the system lists at once.
    const std::string name(180, 'n');
    for (int i = 100; i < 400; ++i) makeFile(path("long/" + name + std::to_string(i)));
    Texts files;
    files.reserve(300);
    const xo::tests::AllocationCount allocations;
    xoDirUtils::GlobFileAndFolderUtf8(path("long"), &files, nullptr, nullptr, xoDirUtils::GlobNamesOnly);
    EXPECT_TRUE(allocations.isCounting() && allocations.count() < 300 + 50) << allocations.count();
    EXPECT_TRUE(files.size() == 300 && files[0] == name + "100" && files[299] == name + "399");

    // The extensions may be in a vector that is filled.
    files = {"jpg"};
    makeFile(path("top/.jpg"));
    xoDirUtils::GlobFileAndFolderUtf8(mTop, &files, nullptr, &files, xoDirUtils::GlobNamesOnly);
    EXPECT_THAT(files, ElementsAre(".jpg", "e.jpg"));
}

TEST_F(FolderWalk, StopsAtOnceAndLeavesNothingOpen) {
    int before = 0;  // once the first exception has readied the runtime
    for (std::size_t last = 1; last <= wholeWalk().size(); ++last) {
        Recorder recorder(mTop);
        recorder.onCall = [&](const std::string&) { return recorder.calls.size() < last; };
        EXPECT_EQ(recorder.walk().size(), last);
        EXPECT_FALSE(recorder.result);
        recorder.onCall = [&](const std::string&) { return recorder.calls.size() < last ? true : throw last; };
        EXPECT_THROW(recorder.walk(), std::size_t);
        if (last == 1) before = xo::tests::openHandles();
    }
    EXPECT_EQ(xo::tests::openHandles(), before);
}

// Wine itself deletes nothing whose path is longer than 4096 bytes.
int deletions = 0;
BOOL WINAPI noteDeletion(HANDLE, FILE_INFO_BY_HANDLE_CLASS, void*, DWORD) { return ++deletions, TRUE; }

// A path longer than Windows takes any. The tree is put together in parts: no call needs all of it.
TEST_F(FolderWalk, GoesToAnyDepthAtNoCostOfStackOrHandlesAndSoDoCopyingAndClearing) {
    constexpr int kParts = 13, kLevelsOfPart = 15;
    mFolder.write("top/e.jpg", "at the end");
    std::string below;
    for (int level = 1; level < kLevelsOfPart; ++level) below += "/" + std::string(200, 'x');
    for (int i = 0; i < kParts; ++i) {
        xoDirUtils::MkpathUtf8(path("part" + below));
        xoDirUtils::RenameFileUtf8(mTop, path("part" + below + "/rest"));
        xoDirUtils::RenameFileUtf8(path("part"), mTop);
    }
    Recorder recorder(mTop);
    std::set<const volatile void*> frames;
    int handles = 0;
    recorder.onCall = [&](const std::string& folder) {
        const volatile char frame = 0;
        frames.insert(&frame);
        if (recorder.calls.back()[0] == '+' && folder.size() > 33000) handles = xo::tests::openHandles();
        return true;
    };
    const int before = xo::tests::openHandles();
    EXPECT_EQ(recorder.walk().size(), 3 * kParts * kLevelsOfPart + wholeWalk().size());
    EXPECT_LE(frames.size(), 5u);  // the places that call an operation
    EXPECT_GT(handles, 0);
    EXPECT_LT(handles, before + 60);
    EXPECT_TRUE(xoDirUtils::CopyFolderUtf8(mTop, path("copy"), true, &mError)) << mError;
    Recorder copied(path("copy"));
    EXPECT_EQ(copied.walk(), recorder.calls);
    {
        const ImportHook hook("xoSystem.dll", "SetFileInformationByHandle", &noteDeletion);
        EXPECT_TRUE(xoDirUtils::ClearFolderUtf8(mTop, /*removeFolderItself=*/true, &mError)) << mError;
        EXPECT_EQ(deletions, kParts * kLevelsOfPart + 7);  // one for each folder, and the last one's seven
    }
    for (const std::string name : {"top", "copy"})
        for (int i = 0; i < kParts; ++i) {
            EXPECT_TRUE(xoDirUtils::RenameFileUtf8(path(name + below + "/rest"), path("rest")));
            EXPECT_TRUE(xoDirUtils::ClearFolderUtf8(path(name), true));
            xoDirUtils::RenameFileUtf8(path("rest"), path(name));
        }
    EXPECT_EQ(mFolder.read("copy/e.jpg"), "at the end");
}

// The folders on a long path are held open.
TEST_F(FolderWalk, KeepsLongSiblingsApartAndLetsOthersHaveThem) {
    std::string top = path("wide");
    for (int level = 0; level < 4; ++level) top += "/" + std::string(200, 'x');
    for (const char name : {'a', 'b'}) {
        const std::string folder = top + "/" + std::string(200, name) + "/sub";
        ASSERT_TRUE(xoDirUtils::MkpathUtf8(folder));
        makeFile(folder + "/of " + name);
    }
    Recorder recorder(top);
    recorder.onCall = [&](const std::string& folder) {
        const std::string parent = xoDirUtils::GetParentPathUtf8(folder);
        if (folder.substr(folder.size() - 4) == "/sub")
            EXPECT_TRUE(xo::tests::open(parent, DELETE, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, kSharedByAll));
        if (recorder.calls.back()[0] == '-' && folder != top) EXPECT_TRUE(xoDirUtils::ClearFolderUtf8(folder, true));
        return true;
    };
    const Texts calls = recorder.walk();
    for (const char name : {'a', 'b'})
        EXPECT_THAT(calls, testing::Contains("of "s + name + " in /" + std::string(200, name) + "/sub"));
    EXPECT_THAT(Recorder(top).walk(), ElementsAre("+", "-"));  // nothing is left of them
}

enum class Identities { Told, Refused, Zero } identities = Identities::Told;

BOOL WINAPI identify(HANDLE folder, BY_HANDLE_FILE_INFORMATION* info) {
    if (identities == Identities::Refused || !ImportHook::behind(&identify)(folder, info)) return FALSE;
    if (identities == Identities::Zero) info->nFileIndexHigh = info->nFileIndexLow = 0;
    return TRUE;
}

TEST_F(FolderWalk, FollowsEveryLinkButThoseToAFolderItIsInside) {
    xoDirUtils::MkpathUtf8(path("target/inner"));
    const std::pair<const char*, const char*> links[] = {
        {"target/inner/back", "../../target"}, {"top/l1", "../target"}, {"top/l2", "../target"}, {"top/l3", "../top"}};
    for (const auto& [link, target] : links) xo::tests::makeLink(mFolder.widePath() / link, target);
    if (!xo::tests::isLink(mWideTop / "l3")) GTEST_SKIP() << "no way to make a link here";
    const ImportHook hook("xoSystem.dll", "GetFileInformationByHandle", &identify);
    for (const Identities told : {Identities::Told, Identities::Refused, Identities::Zero}) {
        identities = told;
        Texts expected = wholeWalk();
        for (const std::string link : {"l1", "l2", "l3"}) {
            Texts calls = {link + "/ in "};
            if (told == Identities::Told && link != "l3")
                calls.insert(calls.end(), {"+/" + link, "inner/ in /" + link, "+/" + link + "/inner",
                                           "back/ in /" + link + "/inner", "-/" + link + "/inner", "-/" + link});
            expected.insert(expected.end() - 1, calls.begin(), calls.end());
        }
        for (const std::string& given : {mTop, path("top/l3")}) EXPECT_EQ(Recorder(given).walk(), expected);
    }
    identities = Identities::Told;
    for (const auto& [link, target] : links)
        if (!::RemoveDirectoryW((mFolder.widePath() / link).c_str()))
            xo::tests::runUnix(mFolder.widePath(), L"rm " + std::filesystem::path(link).wstring());
}

TEST_F(FolderWalk, BearsChangesOnItsWay) {
    Recorder recorder(mTop);
    recorder.onCall = [&](const std::string& folder) {
        const std::string& call = recorder.calls.back();
        makeFile(folder + "/more " + std::to_string(recorder.calls.size()));
        if (call == "+/d \xC3\xA9") EXPECT_TRUE(xoDirUtils::ClearFolderUtf8(folder + "/empty", true));
        if (call[0] == '-') EXPECT_TRUE(xoDirUtils::ClearFolderUtf8(folder, true));
        return true;
    };
    EXPECT_EQ(recorder.walk(), walkWithoutEmpty("d \xC3\xA9"));
    EXPECT_FALSE(xoDirUtils::DirExistsUtf8(mTop));
}

// Shows a folder by a name that is no valid UTF-16, under which alone it can be opened.
BOOL WINAPI listBroken(HANDLE folder, FILE_INFO_BY_HANDLE_CLASS kind, void* buffer, DWORD size) {
    if (!ImportHook::behind(&listBroken)(folder, kind, buffer, size)) return FALSE;
    for (auto* at = static_cast<std::byte*>(buffer);;) {
        auto& info = *reinterpret_cast<FILE_FULL_DIR_INFO*>(at);
        if (info.FileName[0] == L'd') info.FileName[2] = 0xD83D;
        if (info.NextEntryOffset == 0) return TRUE;
        at += info.NextEntryOffset;
    }
}

// Denies the folder "empty".
NTSTATUS NTAPI openBroken(HANDLE* folder, ACCESS_MASK access, OBJECT_ATTRIBUTES* attributes, IO_STATUS_BLOCK* status,
                          ULONG share, ULONG options) {
    UNICODE_STRING& given = *attributes->ObjectName;
    std::wstring name(given.Buffer, given.Length / sizeof(wchar_t));
    if (name.substr(name.size() - 5) == L"empty") return static_cast<NTSTATUS>(0xC0000022);
    std::replace(name.begin(), name.end(), wchar_t{0xD83D}, L'\u00E9');
    given.Buffer = name.data();
    return ImportHook::behind(&openBroken)(folder, access, attributes, status, share, options);
}

TEST_F(FolderWalk, EntersFoldersOfAnyNameAndPassesLockedOnes) {
    const ImportHook listing("xoSystem.dll", "GetFileInformationByHandleEx", &listBroken);
    const ImportHook opening("xoSystem.dll", "NtOpenFile", &openBroken);
    EXPECT_EQ(Recorder(mTop).walk(), walkWithoutEmpty("d \xEF\xBF\xBD"));
}

}  // namespace
