#include <algorithm>
#include <functional>
#include <set>

#include "files/filesFixture.h"
#include "support/allocationCount.h"
#include "support/importHook.h"

#include <gmock/gmock.h>
#include <winternl.h>

namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using xo::xoDirUtils;
using xo::tests::ImportHook;
using Texts = std::vector<std::string>;

// Notes each call with the folder cut down to what lies below the top.
class Recorder : public xoDirUtils::FileSystemVisitor {
public:
    explicit Recorder(std::string top) : mTop(std::move(top)) {}

    bool onEnterFolder(const std::string& folder) override { return note("+", folder); }
    bool onFile(const std::string& folder, const std::string& file) override { return note(file + " in ", folder); }
    bool onFolder(const std::string& folder, const std::string& sub) override { return note(sub + "/ in ", folder); }
    bool onLeaveFolder(const std::string& folder) override { return note("-", folder); }

    const Texts& walk(bool recursive = true, const Texts* extensions = nullptr) {
        calls.clear();
        result = visit(mTop, recursive, extensions);
        return calls;
    }

    std::function<bool(const std::string& folder)> onCall = [](const std::string&) { return true; };
    Texts calls;
    bool result = false;

private:
    bool note(const std::string& what, const std::string& folder) {
        EXPECT_EQ(folder.substr(0, mTop.size()), mTop);
        calls.push_back(what + folder.substr(mTop.size()));
        return onCall(folder);
    }

    const std::string mTop;
};

class FolderWalk : public xo::tests::FolderTest {
protected:
    FolderWalk() {
        xoDirUtils::MkpathUtf8(path("top/d \xC3\xA9/empty"));
        for (const char* name : {"top/a.JPG", "top/b.jpg", "top/cjpg", "top/d \xC3\xA9/\xE6\x97\xA5.txt"})
            xo::tests::makeFile(path(name));
    }

    const std::string mTop = path("top");
    const std::filesystem::path mWideTop = mFolder.widePath() / "top";
};

TEST_F(FolderWalk, GoesDownBeforeItGoesOn) {
    xo::tests::makeFile(path("top/e"));
    const std::string sub = "/d \xC3\xA9";
    const auto whole =
        ElementsAre("+", "a.JPG in ", "b.jpg in ", "cjpg in ", "d \xC3\xA9/ in ", "+" + sub, "empty/ in " + sub,
                    "+" + sub + "/empty", "-" + sub + "/empty", "\xE6\x97\xA5.txt in " + sub, "-" + sub, "e in ", "-");
    EXPECT_THAT(Recorder(mTop).walk(), whole);
    EXPECT_THAT(Recorder(mTop).walk(false),
                ElementsAre("+", "a.JPG in ", "b.jpg in ", "cjpg in ", "d \xC3\xA9/ in ", "e in ", "-"));
    const xo::tests::WorkingFolder here(path());
    EXPECT_THAT(Recorder("top").walk(), whole);
    for (const std::string& given : {mTop + "\\", mTop + "/", "\\\\?\\" + mTop + "\\"})
        EXPECT_EQ(Recorder(given).walk()[5], "+d \xC3\xA9");  // no separator twice
    for (const std::string& given : {"missing"s, mTop + "/a.JPG", mTop + "\0"s, mTop + "/*"s, "\xFF"s}) {
        Recorder none(given);
        EXPECT_TRUE(none.walk().empty() && none.result) << given;
    }
}

TEST_F(FolderWalk, LetsFilesPassByTheirEnds) {
    const std::pair<Texts, std::size_t> rows[] = {{{}, 4},   {{"jpg"}, 1},           {{".jpg", "", "JPG"}, 2},
                                                  {{""}, 0}, {{"\xA5.txt", "."}, 0}, {{".txt"}, 1}};
    for (const auto& [extensions, passing] : rows) {
        Texts files, folders;
        xoDirUtils::GlobFileAndFolderUtf8(mTop, &files, &folders, &extensions, xoDirUtils::GlobRecursive);
        EXPECT_EQ(files.size(), passing);
        EXPECT_THAT(folders, ElementsAre(mTop + "/d \xC3\xA9", mTop + "/d \xC3\xA9/empty"));
    }
}

TEST_F(FolderWalk, CollectsAsTheFlagsSay) {
    Texts files = {mTop}, folders = {"old"};
    xoDirUtils::GlobFileAndFolderUtf8(files[0], &files, &folders, nullptr,
                                      xoDirUtils::GlobAppend | xoDirUtils::GlobNamesOnly);
    EXPECT_THAT(files, ElementsAre(mTop, "a.JPG", "b.jpg", "cjpg"));
    EXPECT_THAT(folders, ElementsAre("old", "d \xC3\xA9"));
    xoDirUtils::GlobFileAndFolderUtf8(files[0], &files);  // which empties what it was given
    EXPECT_THAT(files, ElementsAre(mTop + "/a.JPG", mTop + "/b.jpg", mTop + "/cjpg"));
    xoDirUtils::GlobFileAndFolderUtf8("missing", nullptr, &folders);
    EXPECT_TRUE(folders.empty());
}

HANDLE freshHandle() { return xo::platform::KernelHandle(::CreateEventW(nullptr, FALSE, FALSE, nullptr)).get(); }

TEST_F(FolderWalk, StopsAtOnceAndLeavesNothingOpen) {
    Recorder recorder(mTop);
    const std::size_t all = recorder.walk().size();
    HANDLE before = nullptr;  // once the first exception has readied the runtime
    for (std::size_t last = 1; last <= all; ++last) {
        recorder.onCall = [&](const std::string&) { return recorder.calls.size() < last; };
        EXPECT_EQ(recorder.walk().size(), last);
        EXPECT_FALSE(recorder.result);
        recorder.onCall = [&](const std::string&) { return recorder.calls.size() < last ? true : throw last; };
        EXPECT_THROW(recorder.walk(), std::size_t);
        if (last == 1) before = freshHandle();
    }
    EXPECT_EQ(freshHandle(), before);
}

// Notes how much of stack and handles a walk takes.
class Deep : public xoDirUtils::FileSystemVisitor {
public:
    bool onEnterFolder(const std::string&) override {
        const auto frame = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
        const auto handle = reinterpret_cast<std::uintptr_t>(freshHandle());
        frames.insert(frame), handles.insert(handle), ++entered;
        return true;
    }
    bool onFile(const std::string& folder, const std::string& file) override {
        bottom = folder.size() > 32767 ? file : "";
        return true;
    }

    std::set<std::uintptr_t> frames, handles;
    int entered = 0;
    std::string bottom;
};

// A path longer than Windows takes any. The tree is put together and taken apart in parts, so that no call needs it
// whole.
TEST_F(FolderWalk, GoesToAnyDepthAtNoCostOfStackOrHandles) {
    constexpr int kParts = 13, kLevelsOfPart = 15;
    std::string below;
    for (int level = 1; level < kLevelsOfPart; ++level) below += "/" + std::string(200, 'x');
    const auto move = [&](const std::string& from, const std::string& to) {
        EXPECT_TRUE(xoDirUtils::RenameFileUtf8(path(from), path(to), &mError)) << mError;
    };
    xoDirUtils::MkpathUtf8(path("whole"));
    xo::tests::makeFile(path("whole/bottom"));
    for (int i = 0; i < kParts; ++i) {
        xoDirUtils::MkpathUtf8(path("part" + below));
        move("whole", "part" + below + "/rest");
        move("part", "whole");
    }
    Deep deep;
    EXPECT_TRUE(deep.visit(path("whole"), true));
    EXPECT_EQ(deep.entered, kParts * kLevelsOfPart + 1);
    EXPECT_EQ(deep.bottom, "bottom");
    EXPECT_LE(deep.frames.size(), 2u);  // one for the first folder, one for all others
    EXPECT_LT(deep.handles.size(), 60u);
    for (int i = 0; i < kParts; ++i) {
        move("whole" + below + "/rest", "rest");
        EXPECT_TRUE(xoDirUtils::ClearFolderUtf8(path("whole"), true));
        move("rest", "whole");
    }
}

TEST_F(FolderWalk, EntersNoFolderThroughALinkInside) {
    xoDirUtils::MkpathUtf8(path("target/inner"));
    xo::tests::makeLink(mFolder.widePath() / "target/inner/back", "../../target");
    xo::tests::makeLink(mWideTop / "l1", "../target");  // entered, but no second time
    xo::tests::makeLink(mWideTop / "l2", "../target");
    xo::tests::makeLink(mWideTop / "l3", "../top");
    if (!xo::tests::isLink(mWideTop / "l3")) GTEST_SKIP() << "no way to make a link here";
    xoDirUtils::ClearFolderUtf8(path("top/d \xC3\xA9"));
    EXPECT_THAT(Recorder(mTop).walk(),
                ElementsAre("+", "a.JPG in ", "b.jpg in ", "cjpg in ", "d \xC3\xA9/ in ", "+/d \xC3\xA9",
                            "-/d \xC3\xA9", "l1/ in ", "+/l1", "inner/ in /l1", "+/l1/inner", "back/ in /l1/inner",
                            "-/l1/inner", "-/l1", "l2/ in ", "l3/ in ", "-"));
    EXPECT_EQ(Recorder(path("top/l3")).walk().size(), 17u);  // a walk may begin at a link
    for (const char* link : {"target/inner/back", "top/l1", "top/l2", "top/l3"}) {
        const std::filesystem::path file = mFolder.widePath() / link;
        if (!::RemoveDirectoryW(file.c_str()))
            xo::tests::runUnix(file.parent_path(), L"rm " + file.filename().wstring());
    }
}

TEST_F(FolderWalk, BearsChangesOnItsWay) {
    Recorder recorder(mTop);
    const std::string sub = "/d \xC3\xA9";
    recorder.onCall = [&](const std::string& folder) {
        const std::string& call = recorder.calls.back();
        xo::tests::makeFile(folder + "/more " + std::to_string(recorder.calls.size()));
        if (call == "+" + sub) EXPECT_TRUE(xoDirUtils::ClearFolderUtf8(folder + "/empty", true));
        if (call[0] == '-') EXPECT_TRUE(xoDirUtils::ClearFolderUtf8(folder, true));
        return true;
    };
    EXPECT_THAT(recorder.walk(), ElementsAre("+", "a.JPG in ", "b.jpg in ", "cjpg in ", "d \xC3\xA9/ in ", "+" + sub,
                                             "empty/ in " + sub, "\xE6\x97\xA5.txt in " + sub, "-" + sub, "-"));
    EXPECT_FALSE(xoDirUtils::DirExistsUtf8(mTop));
}

// Shows a folder by a name that is no valid UTF-16, under which alone it can be opened.
BOOL WINAPI listBroken(HANDLE folder, FILE_INFO_BY_HANDLE_CLASS kind, void* room, DWORD size) {
    if (!::GetFileInformationByHandleEx(folder, kind, room, size)) return FALSE;
    for (auto* at = static_cast<std::byte*>(room);;) {
        auto& info = *reinterpret_cast<FILE_FULL_DIR_INFO*>(at);
        if (info.FileName[0] == L'd') info.FileName[2] = 0xD83D;
        if (info.NextEntryOffset == 0) return TRUE;
        at += info.NextEntryOffset;
    }
}

decltype(&::NtOpenFile) systemOpen;

// Denies the folder "empty".
NTSTATUS NTAPI openBroken(HANDLE* folder, ACCESS_MASK access, OBJECT_ATTRIBUTES* attributes, IO_STATUS_BLOCK* status,
                          ULONG share, ULONG options) {
    UNICODE_STRING& given = *attributes->ObjectName;
    std::wstring name(given.Buffer, given.Length / sizeof(wchar_t));
    if (name.substr(name.size() - 5) == L"empty") return static_cast<NTSTATUS>(0xC0000022);
    std::replace(name.begin(), name.end(), wchar_t{0xD83D}, L'\u00E9');
    given.Buffer = name.data();
    return systemOpen(folder, access, attributes, status, share, options);
}

TEST_F(FolderWalk, EntersFoldersOfAnyNameAndPassesLockedOnes) {
    const ImportHook listing("xoSystem.dll", "GetFileInformationByHandleEx", &listBroken);
    const ImportHook opening("xoSystem.dll", "NtOpenFile", &openBroken);
    systemOpen = opening.original<std::remove_pointer_t<decltype(systemOpen)>>();
    const std::string sub = "/d \xEF\xBF\xBD";
    EXPECT_THAT(Recorder(mTop).walk(),
                ElementsAre("+", "a.JPG in ", "b.jpg in ", "cjpg in ", sub.substr(1) + "/ in ", "+" + sub,
                            "empty/ in " + sub, "\xE6\x97\xA5.txt in " + sub, "-" + sub, "-"));
}

TEST_F(FolderWalk, AllocatesNothingPerEntry) {
    Texts made, files;
    for (int i = 0; i < 2000; ++i) {
        made.push_back("f" + std::to_string(10000 + i));
        const std::string folder = "many/" + std::to_string(10 + i / 100);
        if (i % 100 == 0) xoDirUtils::MkpathUtf8(path(folder));
        xo::tests::hold(path(folder + "/" + made.back()));
    }
    files.reserve(made.size());
    const xo::tests::AllocationCount allocations;
    xoDirUtils::GlobFileAndFolderUtf8(path("many"), &files, nullptr, nullptr,
                                      xoDirUtils::GlobRecursive | xoDirUtils::GlobNamesOnly);
    ASSERT_TRUE(allocations.isCounting());
    EXPECT_LT(allocations.count(), 50);
    EXPECT_EQ(files, made);
}

}  // namespace
