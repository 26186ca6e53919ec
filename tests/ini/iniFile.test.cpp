#include "xoSystem/xoIniFile.h"

#include "log/logFixture.h"
#include "platform/handle.h"
#include "support/importHook.h"
#include "support/temporaryFolder.h"
#include "variant/trees.h"
#include "xoSystem/xoSystemError.h"

namespace {

using namespace std::string_literals;
using namespace xo::tests;
using xo::LoadIniFile;
using xo::SaveIniFile;
using xo::UpdateIniFile;
using xo::xoVariant;

using Rows = std::vector<std::pair<std::string, Map>>;  // the bytes of a file, and its values

class IniFile : public LogTest {
protected:
    Map load(const std::string& bytes, Map values = {}) {
        mFolder.write("a.ini", bytes);
        EXPECT_TRUE(LoadIniFile(path(), values));
        return values;
    }
    std::string save(const Map& values, bool merge = false) {
        EXPECT_TRUE(SaveIniFile(path(), values, merge));
        return mFolder.read("a.ini");
    }
    xo::platform::FileHandle hold(DWORD access, DWORD shareMode) {
        xo::platform::FileHandle file(::CreateFileW((mFolder.widePath() / "a.ini").c_str(), access, shareMode, nullptr,
                                                    OPEN_EXISTING, 0, nullptr));
        EXPECT_TRUE(file);
        return file;
    }
    std::string path() const { return mFolder.path("a.ini"); }

    // What makes the file this one, and what it is beside its bytes.
    struct Nature {
        DWORD index, attributes;
        std::vector<char> access;
    };
    Nature nature() {
        const auto file = hold(READ_CONTROL | FILE_READ_ATTRIBUTES, kShareAll);
        BY_HANDLE_FILE_INFORMATION info{};
        EXPECT_TRUE(::GetFileInformationByHandle(file.get(), &info));
        std::vector<char> access(4096);
        DWORD size = 0;
        EXPECT_TRUE(::GetKernelObjectSecurity(file.get(), DACL_SECURITY_INFORMATION, access.data(), 4096, &size));
        return {info.nFileIndexLow, info.dwFileAttributes, access};
    }

    // Saves over the text "old=1"; whether a new file has taken the old one's place, and nothing else was left.
    bool replaces() {
        const DWORD index = nature().index;
        EXPECT_EQ(save(map("new", 2)), "[General]\nnew=2\n");
        return nature().index != index && isAlone();
    }
    bool isAlone() const {
        const auto files = std::filesystem::directory_iterator(mFolder.widePath());
        return std::distance(begin(files), end(files)) == 1;
    }

    static constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

    TemporaryFolder mFolder;
};

TEST_F(IniFile, ReadsSectionsAndKeys) {
    const Rows rows = {
        {"", {}},
        {"\xEF\xBB\xBF[General]\r\na = 1 \r\n\r\n[s]\r\nb= x y \r\n", map("a", 1, "s", map("b", "x y"))},
        {"a=1\n[s]\nb=2\n[General]\nc=3", map("a", 1, "c", 3, "s", map("b", 2))},
        {"; a=1\n  ; b=2\n#c=3\n", map("#c", 3)},
        {"[ s ]\na=1\n [t] \nb=2\n[]\nc=3\n", map(" s ", map("a", 1), "t", map("b", 2), "", map("c", 3))},
        {"[general]\na=1\n[a=b]\nk=1\n[x]y=1\n", map("general", map("a", 1), "a=b", map("k", 1, "[x]y", 1))},
        {"[empty]\n[\n", {}},
        {"[s/t]\na/b=1\n/c=2\nd/=3\n", map("s", map("t", map("a", map("b", 1), "", map("c", 2), "d", map("", 3))))},
        {"[s]\na=1\na/b=2\n[s/a]\nc=3\n", map("s", map("a", map("b", 2, "c", 3)))},
        {"a=b=c\nk\0a=v\0b\n\xFF\xC3=\xE9\n"s, map("a", "b=c", "k\0a"s, "v\0b"s, "\xFF\xC3", "\xE9")},
    };
    for (const auto& [bytes, values] : rows) EXPECT_EQ(load(bytes), values) << bytes;
    for (std::string x; x.size() < 40; x += 'x')  // lines that end anywhere in a block of bytes
        EXPECT_EQ(load(x + "k=" + x + "\\t\nb=\\n\n"), map(x + "k", x + "\t", "b", "\n"));
    EXPECT_EQ(takeLines(), Strings{"2()Invalid line (1) [ in Ini file"});
}

TEST_F(IniFile, TypesValues) {
    const auto reads = [this](const Map& rows) {
        for (const auto& [text, value] : rows) EXPECT_EQ(load("k=" + text + "\n"), map("k", value)) << text;
    };
    reads(map("true", true, "FaLSE", false, R"("TRUE")", true));
    reads(map("12", 12, R"("12")", 12, R"(" 12")", 12, "-0x1F", -31, "010", 8, "0.5", 0.5, "1e3", 1000.0));
    reads(map("", "", R"("")", "", R"(")", "\"", R"(" a ")", " a ", "1,5", "1,5", "12abc", "12abc"));
    reads(map(R"(a\tb\rc\nd)", "a\tb\rc\nd", R"(a\\b)", "a\\b", R"(x\)", "x\\", R"(\x)", "\\x"));
    reads(map(R"(\"q\")", "\"q\"", R"("say \"hi\"")", "say \"hi\"", R"(\"t)", "\"t"));
    // The line feed is found before the pair of backslashes; so is the quote, which leaves \ \ ". Three backslashes
    // and a tab are one pair, then one alone.
    reads(map(R"(a\\nb)", "a\\\nb", R"(\\\")", "\\\"", R"(\\\\t)", "\\\\\t"));
    EXPECT_TRUE(takeLines().empty());
}

TEST_F(IniFile, LogsBadLinesAndGoesOn) {
    EXPECT_EQ(
        load("\r\n =5\r\nabc \r\nk=1\n[s]\nk=1\nk=2\n[General]\nk=x\nold/k=9\nold=3\nlast=1", map("old", map("k", 8))),
        map("k", 1, "last", 1, "old", map("k", 8), "s", map("k", 1)));
    EXPECT_EQ(takeLines(),
              (Strings{"2()Invalid key at line (1) =5 in Ini file", "2()Invalid line (2) abc in Ini file",
                       "2()Duplicated key at line (6) k=2 in Ini file", "2()Duplicated key at line (8) k=x in Ini file",
                       "2()Duplicated key at line (9) old/k=9 in Ini file",
                       "2()Duplicated key at line (10) old=3 in Ini file"}));
}

TEST_F(IniFile, FailsOnlyWithoutItsFile) {
    Map values = map("a", 1);
    const auto line = [](const std::string& file, unsigned long error) {
        return "3()Fail to save " + file + ": " + xo::SystemError(error).toString();
    };
    const std::pair<std::string, unsigned long> rows[] = {{mFolder.path("no folder/a.ini"), ERROR_PATH_NOT_FOUND},
                                                          {mFolder.path(), ERROR_ACCESS_DENIED},
                                                          {"", ERROR_PATH_NOT_FOUND},
                                                          {path() + "\0x"s, ERROR_PATH_NOT_FOUND}};
    for (const auto& [bad, error] : rows) {
        EXPECT_FALSE(LoadIniFile(bad, values)) << bad;
        EXPECT_FALSE(SaveIniFile(bad, values)) << bad;
        EXPECT_EQ(takeLines(), Strings{line(bad, error)});
    }
    EXPECT_FALSE(LoadIniFile(path(), values)) << "no such file";
    EXPECT_EQ(values, map("a", 1));

    mFolder.write("a.ini", "b=2\n");
    {
        const auto writer = hold(GENERIC_WRITE, FILE_SHARE_READ);
        EXPECT_TRUE(LoadIniFile(path(), values));
        EXPECT_EQ(values, map("a", 1, "b", 2));
        EXPECT_FALSE(SaveIniFile(path(), values));
        EXPECT_EQ(mFolder.read("a.ini"), "b=2\n");
    }
    EXPECT_EQ(takeLines(), Strings{line(path(), ERROR_SHARING_VIOLATION)});
    const auto loner = hold(GENERIC_READ, 0);
    EXPECT_FALSE(SaveIniFile(path(), {}, true));
    EXPECT_EQ(takeLines(), Strings{"3()Fail to load " + path()});
}

TEST_F(IniFile, WritesTheTopLevelThenTheSections) {
    const Rows rows = {
        {"[General]\n", {}},
        {"[General]\na=1\n\n[s]\nb=x\nc/d=2.5\n", map("a", 1, "s", map("b", "x", "c", map("d", 2.5)))},
        {"[General]\nA=true\nb=1\nc/d=2\nZ=-3\n\n[e]\n",
         map("A", true, "General", map("b", 1, "c", map("d", 2)), "Z", -3, "e", map())},
        {"[General]\nGeneral=5\n", map("General", 5)},
        {"[General]\n\n[s]\nl/x=1\nl/y=2\n", map("s", map("l", list(map("x", 1), map("y", 2))))},
        {"[General]\na=\"hello \\\"world\\\"\"\nb=a\\tb\\\\c\\r\\n\n", map("a", "hello \"world\"", "b", "a\tb\\c\r\n")},
        {"[General]\nk=\n=\0\nv=\nw=1e+20\nx=0.1\n"s, map("k=\n", "\0"s, "v", "", "w", 1e20, "x", 0.1)},
    };
    for (const auto& [bytes, values] : rows) EXPECT_EQ(save(values), bytes);
    EXPECT_TRUE(takeLines().empty());
}

TEST_F(IniFile, SavingStopsAtWhatItCannotWrite) {
    const std::string line = "3()saveVariantToIni unsupported variant type (";
    mFolder.write("a.ini", "old=1\n");
    EXPECT_FALSE(SaveIniFile(path(), map("a", 1, "s", map("b", 2, "c", map("l", list(1)), "d", 3), "t", map())));
    EXPECT_EQ(mFolder.read("a.ini"), "[General]\na=1\n\n[s]\nb=2\n");
    EXPECT_EQ(takeLines(), Strings{line + "11) for key c/l"});
    for (const xoVariant& value : list(xoVariant(), numbers(1, 2), Strings{"a"}, xoVariant::DateTime(1))) {
        EXPECT_FALSE(SaveIniFile(path(), map("k", value)));
        EXPECT_EQ(takeLines(), Strings{line + std::to_string(value.getType()) + ") for key k"});
    }
    EXPECT_EQ(mFolder.read("a.ini"), "[General]\n");
}

TEST_F(IniFile, MergingKeepsWhatOnlyTheFileHas) {
    const struct {
        std::string file;
        Map values;
        std::string bytes;
    } rows[] = {
        {"a=1\nb=2\n[s]\nc=3\nd=4\n", map("b", "new", "s", map("d", 5, "e", 6)),
         "[General]\na=1\nb=new\n\n[s]\nc=3\nd=5\ne=6\n"},
        {"a=1\n", map("a", map("b", 2)), "[General]\n\n[a]\nb=2\n"},
        {"[a]\nb=2\n", map("a", 1), "[General]\na=1\n"},
        {"[General]\na=1\nGeneral/b=2\n", map("General", map("a", 5, "c", 3)), "[General]\na=5\nb=2\nc=3\n"},
        {"k\0a=1\nk\0b=2\n"s, {}, "[General]\nk\0a=1\nk\0b=2\n"s},
    };
    for (const auto& row : rows) {
        mFolder.write("a.ini", row.file);
        EXPECT_EQ(save(row.values, true), row.bytes);
    }
    EXPECT_TRUE(SaveIniFile(mFolder.path("new.ini"), map("a", 1, "e", map()), true));
    EXPECT_EQ(mFolder.read("new.ini"), "[General]\na=1\n\n[e]\n");
    EXPECT_TRUE(SaveIniFile(mFolder.path("top.ini"), map("General", map("a", 2, "b", 3), "a", 1), true));
    EXPECT_EQ(mFolder.read("top.ini"), "[General]\na=1\nb=3\n");
    EXPECT_TRUE(takeLines().empty());
}

TEST_F(IniFile, UpdatingChangesTheLinesOfItsKeysAlone) {
    const std::string mark = "\xEF\xBB\xBF";
    const struct {
        std::string file;
        Map values;
        std::string bytes;
    } rows[] = {
        {"; note\r\n\r\n [s] \r\n  k =  1\t\r\nbad\r\nk=2\r\n", map("s", map("k", 5)),
         "; note\r\n\r\n [s] \r\n  k =  5\t\r\nbad\r\nk=2\r\n"},
        {"k=", map("k", "x"), "k=x"},
        {"k=\nl = \r\nm", map("k", "x", "l", "\"y\""), "k=x\nl = \"\\\"y\\\"\"\r\nm"},
        {mark + "a=1\nb=0x1F\nc=010\nd=3.14159265\nr= 2\nt=\"12\"\n",
         map("a", 2, "b", 31, "c", 9, "d", 3.14159265, "r", 2.0, "t", 12),
         mark + "a=2\nb=0x1F\nc=9\nd=3.14159265\nr= 2\nt=\"12\"\n"},
        // New keys stand behind the last line of their section, before the comments and blank lines there.
        {"a=1\n\n; of s\n[s]\nb=2\n; x=1\n\n[t]\nc=3", map("a2", 1, "s", map("b2", 2), "t", map("c2", 3)),
         "a=1\na2=1\n\n; of s\n[s]\nb=2\nb2=2\n; x=1\n\n[t]\nc=3\nc2=3\n"},
        {"[s]\r\nb=2\r\n[General]\r\n[s]\r\nc=3\r\n[t]",
         map("General", map("a", 1), "s", map("d", 4), "t", map("e", 5)),
         "[s]\r\nb=2\r\n[General]\r\na=1\r\n[s]\r\nc=3\r\nd=4\r\n[t]\r\ne=5\r\n"},
        {"; only\n[s]\nb=2", map("a", 1, "u", map("c", map("d", 3))),
         "; only\n[s]\nb=2\n\n[General]\na=1\n\n[u]\nc/d=3\n"},
        {"", map("a", 1, "s", map("b", 2)), "[General]\na=1\n\n[s]\nb=2\n"},
        {mark, map("s", map("b", 2)), mark + "[s]\nb=2\n"},
        // A key may be part of a section's name, or a path.
        {"s/t/a=1\n[s/t]\nb=2\n[s]\nt/c=3\n", map("s", map("t", map("a", 4, "b", 5, "c", 6, "d", 7), "u", 8)),
         "s/t/a=4\n[s/t]\nb=5\nd=7\n[s]\nt/c=6\nu=8\n"},
        {"[]\na=1\n", map("", map("a", 2, "b", map("", 3))), "[]\na=2\nb/=3\n"},
        // A value takes the place of a map, and a map that of a value.
        {"[s]\na/b=1\nx=1\na=2\n[s/a]\nc=3", map("s", map("a", 4)), "[s]\nx=1\na=4\n[s/a]\n"},
        {"a=1\nb/c=1", map("a", map("b", 2), "b", 3), "a=1\nb=3\n\n[a]\nb=2\n"},
        {"k\0=\0\n"s, map("k\0"s, "a\0"s), "k\0=a\0\n"s},
        // White space at the ends of a value is not read back.
        {"k=\nl=y\nm=z\n", map("k", " x", "l", "a ", "m", " \v", "n", " "), "k= x\nl=a \nm= \v\nn= \n"},
        {"k=\nl=\tx\n", map("k", " ", "l", " x"), "k=\nl=\tx\n"},
        {"[x=1\n[General/y]\nz=1\n", map("[x", 2, "General", map("General", map("y", 5))),
         "[x=2\ny=5\n[General/y]\nz=1\n"},
    };
    for (const auto& row : rows) {
        mFolder.write("a.ini", row.file);
        EXPECT_TRUE(UpdateIniFile(path(), row.values));
        EXPECT_EQ(mFolder.read("a.ini"), row.bytes);
        EXPECT_TRUE(takeLines().empty());
        const DWORD index = nature().index;
        EXPECT_TRUE(UpdateIniFile(path(), row.values));
        EXPECT_EQ(nature().index, index) << "all is there already: not touched";
    }
}

TEST_F(IniFile, UpdatingFailsWithoutAChange) {
    EXPECT_TRUE(UpdateIniFile(path(), {}));
    EXPECT_EQ(mFolder.read("a.ini"), "");
    const Map unwritable = map("a", 2, "l", list(1)), lineFeed = map("s\nt", map("k", 1));
    const List rows = list(unwritable, lineFeed, map("s", map("t", xoVariant())), map("s", map("", 1)), map("", 1),
                           map("a=b", 1), map("a\nb", 1), map(";c", 1), map("k ", 1), map("[x", "y]"), map("[z", "y]"));
    for (const xoVariant& values : rows) {
        mFolder.write("a.ini", "a=1\n[z=0");
        EXPECT_FALSE(UpdateIniFile(path(), values.getMap()));
        EXPECT_EQ(mFolder.read("a.ini"), "a=1\n[z=0");
        EXPECT_EQ(takeLines().size(), 1u);
    }
    EXPECT_FALSE(UpdateIniFile(path(), unwritable));
    EXPECT_EQ(takeLines(), Strings{"3()saveVariantToIni unsupported variant type (11) for key l"});
    EXPECT_FALSE(UpdateIniFile(path(), lineFeed));
    EXPECT_EQ(takeLines(), Strings{"3()Key s\nt/k cannot be written to an Ini file"});
    EXPECT_FALSE(UpdateIniFile(mFolder.path(), map("a", 1)));
    EXPECT_EQ(takeLines(), Strings{"3()Fail to load " + mFolder.path()});
}

TEST_F(IniFile, SavingTakesThePlaceOfTheOldFileAllAtOnce) {
    mFolder.write("a.ini", "old=1\n");
    ASSERT_TRUE(xo::xoDirUtils::GrantAllFilePermissionsUtf8(path()));
    ASSERT_TRUE(::SetFileAttributesW((mFolder.widePath() / "a.ini").c_str(), FILE_ATTRIBUTE_HIDDEN));
    const Nature before = nature();
    EXPECT_TRUE(replaces());
    EXPECT_EQ(nature().attributes, before.attributes | FILE_ATTRIBUTE_ARCHIVE);
    EXPECT_EQ(nature().access, before.access);
}

// Renames, and reads at once what now has the name.
Map readInTheMoment;
BOOL WINAPI renameAndRead(HANDLE file, FILE_INFO_BY_HANDLE_CLASS kind, void* info, DWORD size) {
    const BOOL isDone = ImportHook::behind(&renameAndRead)(file, kind, info, size);
    if (isDone && size > sizeof(FILE_RENAME_INFO))
        LoadIniFile(std::filesystem::path(static_cast<FILE_RENAME_INFO*>(info)->FileName).u8string(), readInTheMoment);
    return isDone;
}

TEST_F(IniFile, SavingKeepsNobodyFromReading) {
    const ImportHook hook("xoSystem.dll", "SetFileInformationByHandle", &renameAndRead);
    ASSERT_TRUE(hook.isInstalled());
    save(map("new", 2));
    EXPECT_EQ(readInTheMoment, map("new", 2));
}

// A rename that Windows refuses, without a wait for others.
BOOL WINAPI refuseToRename(HANDLE file, FILE_INFO_BY_HANDLE_CLASS kind, void* info, DWORD size) {
    constexpr int kRenameInfoEx = 22;
    if (kind != FileRenameInfo && kind != kRenameInfoEx)
        return ImportHook::behind(&refuseToRename)(file, kind, info, size);
    ::SetCurrentDirectoryW(L"C:\\");  // as another thread may do at any time
    ::SetLastError(ERROR_NOT_SUPPORTED);
    return FALSE;
}

TEST_F(IniFile, SavingWritesInPlaceWhereItMust) {
    mFolder.write("a.ini", "old=1 and more than the new text\n");
    for (const DWORD access :
         {DWORD{GENERIC_READ}, DWORD{GENERIC_WRITE}}) {  // no deletion; a writer, who shares all but on Wine
        const auto other = hold(access, FILE_SHARE_READ | FILE_SHARE_WRITE);
        EXPECT_FALSE(replaces());
    }
    {
        const ImportHook noDeletion(
            "xoSystem.dll", "SetFileInformationByHandle",
            +[](HANDLE, FILE_INFO_BY_HANDLE_CLASS, void*, DWORD) { return FALSE; });
        ASSERT_TRUE(noDeletion.isInstalled());
        EXPECT_FALSE(replaces());
    }
    EXPECT_TRUE(isAlone());
    const auto other = mFolder.widePath() / "other.ini";
    ASSERT_TRUE(::CreateHardLinkW(other.c_str(), (mFolder.widePath() / "a.ini").c_str(), nullptr));
    ASSERT_TRUE(::SetFileAttributesW(other.c_str(), FILE_ATTRIBUTE_HIDDEN));
    EXPECT_FALSE(replaces());
    EXPECT_EQ(mFolder.read("other.ini"), mFolder.read("a.ini"));
}

TEST_F(IniFile, SavingMeansTheFileThatWasNamedAtItsBegin) {
    mFolder.write("a.ini", "old=1\n");
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(mFolder.widePath());
    {
        const ImportHook hook("xoSystem.dll", "SetFileInformationByHandle", &refuseToRename);
        ASSERT_TRUE(hook.isInstalled());
        EXPECT_TRUE(SaveIniFile("a.ini", map("new", 2)));
    }
    std::filesystem::current_path(before);
    EXPECT_EQ(mFolder.read("a.ini"), "[General]\nnew=2\n");
    EXPECT_TRUE(isAlone());
}

// A disk with space for one new file, and only while there is no other.
std::filesystem::path fullFolder;
int writesLeft = 0;
BOOL WINAPI writeToFullDisk(HANDLE file, const void* bytes, DWORD size, DWORD* written, OVERLAPPED* overlapped) {
    EXPECT_TRUE(writesLeft > 0 || std::filesystem::directory_iterator(fullFolder)->path().filename() == "a.ini");
    if (writesLeft-- > 0) return ImportHook::behind(&writeToFullDisk)(file, bytes, size, written, overlapped);
    ::SetLastError(ERROR_DISK_FULL);
    return FALSE;
}

TEST_F(IniFile, SavingKeepsTheOldFileUntilItHasANewOne) {
    fullFolder = mFolder.widePath();
    mFolder.write("a.ini", "old=1\n");
    const ImportHook full("xoSystem.dll", "WriteFile", &writeToFullDisk);
    const ImportHook rename("xoSystem.dll", "SetFileInformationByHandle", &refuseToRename);
    ASSERT_TRUE(full.isInstalled() && rename.isInstalled());
    for (const int writes : {0, 1}) {  // the new file itself; the old one in place
        writesLeft = writes;
        EXPECT_FALSE(SaveIniFile(path(), map("new", 2)));
        EXPECT_EQ(mFolder.read("a.ini"), "old=1\n");
        EXPECT_TRUE(isAlone());
        EXPECT_EQ(takeLines(),
                  Strings{"3()Fail to save " + path() + ": " + xo::SystemError(DWORD{ERROR_DISK_FULL}).toString()});
    }
}

// Each of these would take minutes if a line, a key or a section cost more than itself.
TEST_F(IniFile, LargeFilesCostWhatTheyHold) {
    constexpr int kMany = 100000;
    std::string flat, sections, bad, escapes;
    for (int i = 0; i < kMany; ++i) {
        const std::string n = std::to_string(i);
        flat += "key" + n + "=" + n + "\n";
        sections += "[section" + n + "]\nk=" + n + "\n";
        bad += "no key\n";
        escapes += "\\\\\\t";
    }
    Map values = load(flat);
    EXPECT_EQ(values.size(), static_cast<std::size_t>(kMany));
    EXPECT_EQ(load(save(values)), values);
    values = load(sections);
    EXPECT_EQ(values.getValuePath("section99999/k", 0, '/'), xoVariant(99999));
    EXPECT_EQ(load(save(values, true)), values);
    EXPECT_TRUE(takeLines().empty());

    load(bad);
    EXPECT_EQ(takeLines().back(), "2()Invalid line (99999) no key in Ini file");
    const std::string longLine(1 << 20, 'x');
    EXPECT_EQ(load(longLine + "\nk=" + longLine), map("k", longLine));
    EXPECT_EQ(takeLines(), Strings{"2()Invalid line (0) " + longLine + " in Ini file"});
    EXPECT_EQ(load("k=" + escapes)["k"].getString().size(), 2u * kMany);
}

TEST_F(IniFile, KeysMayBeDeeperThanTheStack) {
    const std::string slashes(50000, '/');
    const Map values = load("[s" + slashes + "]\nk" + slashes + "=1\n");
    EXPECT_EQ(*values.findPath("s" + slashes + "/k" + slashes, '/'), xoVariant(1));
    EXPECT_EQ(save(values), "[General]\n\n[s]\n" + slashes + "k" + slashes + "=1\n");
    EXPECT_TRUE(load(save(values, true)) == values);
}

}  // namespace
