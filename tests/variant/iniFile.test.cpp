#include "xoSystem/xoIniFile.h"

#include <gtest/gtest.h>

#include "platform/handle.h"
#include "support/temporaryFolder.h"
#include "variant/trees.h"
#include "xoSystem/xoLog.h"

namespace {

using namespace std::string_literals;
using namespace xo::tests;
using xo::LoadIniFile;
using xo::SaveIniFile;
using xo::xoVariant;

// A folder for the files, and the lines that the log got.
class IniFile : public testing::Test {
protected:
    IniFile() {
        xo::xoLog::createInstance(false);
        xo::xoLog::edit().setEchoToConsole(false);
        xo::xoLog::edit().installCustomHandler(
            [](const std::string& message, xo::xoLogType type, const std::string&, void* lines) {
                static_cast<Strings*>(lines)->push_back(std::to_string(type) + " " + message);
            },
            &mLines);
    }
    ~IniFile() override { xo::xoLog::destroyInstance(); }

    Map load(const std::string& bytes, Map values = {}) {
        mFolder.write("a.ini", bytes);
        EXPECT_TRUE(LoadIniFile(path(), values));
        return values;
    }
    std::string save(const Map& values, bool merge = false) {
        EXPECT_TRUE(SaveIniFile(path(), values, merge));
        return mFolder.read("a.ini");
    }
    std::string path() const { return mFolder.path("a.ini"); }
    Strings takeLines() { return std::exchange(mLines, {}); }

    TemporaryFolder mFolder;
    Strings mLines;
};

TEST_F(IniFile, ReadsSectionsAndKeys) {
    const struct {
        std::string bytes;
        Map values;
    } rows[] = {
        {"", {}},
        {"\xEF\xBB\xBF[General]\r\na = 1 \r\n\r\n[s]\r\nb= x y \r\n", map({{"a", 1}, {"s", map({{"b", "x y"}})}})},
        {"a=1\n[s]\nb=2\n[General]\nc=3", map({{"a", 1}, {"c", 3}, {"s", map({{"b", 2}})}})},
        {"; a=1\n  ; b=2\n#c=3\n", map({{"#c", 3}})},
        {"[ s ]\na=1\n [t] \nb=2\n[]\nc=3\n",
         map({{" s ", map({{"a", 1}})}, {"t", map({{"b", 2}})}, {"", map({{"c", 3}})}})},
        {"[general]\na=1\n", map({{"general", map({{"a", 1}})}})},
        {"[empty]\n[\n", {}},
        {"[x]y=1\n", map({{"[x]y", 1}})},
        {"[a=b]\nk=1\n", map({{"a=b", map({{"k", 1}})}})},
        {"[s/t]\na/b=1\n/c=2\nd/=3\n",
         map({{"s", map({{"t", map({{"a", map({{"b", 1}})}, {"", map({{"c", 2}})}, {"d", map({{"", 3}})}})}})}})},
        {"[s]\na=1\na/b=2\n[s/a]\nc=3\n", map({{"s", map({{"a", map({{"b", 2}, {"c", 3}})}})}})},
        {"a=b=c\n", map({{"a", "b=c"}})},
        {"k\0a=v\0b\n"s, map({{"k\0a"s, "v\0b"s}})},
        {"\xFF\xC3=\xE9\n", map({{"\xFF\xC3", "\xE9"}})},
    };
    for (const auto& row : rows) EXPECT_EQ(load(row.bytes), row.values) << row.bytes;
    EXPECT_EQ(takeLines(), Strings{"2 Invalid line (1) [ in Ini file"});
}

TEST_F(IniFile, TypesValues) {
    const struct {
        std::string text;
        xoVariant value;
    } rows[] = {
        {"", ""},
        {"\"\"", ""},
        {"\"", "\""},
        {"true", true},
        {"FaLSE", false},
        {"\"TRUE\"", true},
        {"12", 12},
        {"\"12\"", 12},
        {"\" 12\"", 12},
        {"\" a \"", " a "},
        {"-0x1F", -31},
        {"010", 8},
        {"0.5", 0.5},
        {"1e3", 1000.0},
        {"1,5", "1,5"},
        {"12abc", "12abc"},
        {"a\\tb\\rc\\nd", "a\tb\rc\nd"},
        {"\\\"q\\\"", "\"q\""},
        {"\"say \\\"hi\\\"\"", "say \"hi\""},
        {"a\\\\b", "a\\b"},
        {"a\\\\nb", "a\\\nb"},    // the line feed is found before the pair of backslashes
        {"\\\\\\\"", "\\\""},     // so is the quote: \ \ " is left, then \ "
        {"\\\\\\\\t", "\\\\\t"},  // three backslashes and a tab: one pair, then one alone
        {"x\\", "x\\"},
        {"\\x", "\\x"},
        {"\\\"t", "\"t"},
    };
    for (const auto& row : rows) EXPECT_EQ(load("k=" + row.text + "\n"), map({{"k", row.value}})) << row.text;
    EXPECT_TRUE(takeLines().empty());
}

TEST_F(IniFile, LogsBadLinesAndGoesOn) {
    EXPECT_EQ(load("\r\n =5\r\nabc \r\nk=1\n[s]\nk=1\nk=2\n[General]\nk=x\nold/k=9\nold=3\nlast=1",
                   map({{"old", map({{"k", 8}})}})),
              map({{"k", 1}, {"last", 1}, {"old", map({{"k", 8}})}, {"s", map({{"k", 1}})}}));
    EXPECT_EQ(takeLines(),
              (Strings{"2 Invalid key at line (1) =5 in Ini file", "2 Invalid line (2) abc in Ini file",
                       "2 Duplicated key at line (6) k=2 in Ini file", "2 Duplicated key at line (8) k=x in Ini file",
                       "2 Duplicated key at line (9) old/k=9 in Ini file",
                       "2 Duplicated key at line (10) old=3 in Ini file"}));
}

TEST_F(IniFile, LoadingFailsOnlyWithoutAFile) {
    Map values = map({{"a", 1}});
    EXPECT_FALSE(LoadIniFile(mFolder.path("missing.ini"), values));
    EXPECT_FALSE(LoadIniFile(mFolder.path(), values));
    EXPECT_FALSE(LoadIniFile("", values));
    EXPECT_FALSE(LoadIniFile(path() + "\0x"s, values));
    EXPECT_EQ(values, map({{"a", 1}}));

    mFolder.write("a.ini", "b=2\n");
    const xo::platform::FileHandle held(::CreateFileW((mFolder.widePath() / "a.ini").c_str(), GENERIC_WRITE,
                                                      FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(held);
    EXPECT_TRUE(LoadIniFile(path(), values));
    EXPECT_EQ(values, map({{"a", 1}, {"b", 2}}));
    EXPECT_FALSE(SaveIniFile(path(), values));
    EXPECT_EQ(mFolder.read("a.ini"), "b=2\n");
    EXPECT_TRUE(takeLines().empty());
}

TEST_F(IniFile, WritesTheTopLevelThenTheSections) {
    const struct {
        Map values;
        std::string bytes;
    } rows[] = {
        {{}, "[General]\n"},
        {map({{"a", 1}, {"s", map({{"b", "x"}, {"c", map({{"d", 2.5}})}})}}), "[General]\na=1\n\n[s]\nb=x\nc/d=2.5\n"},
        {map({{"A", true}, {"General", map({{"b", 1}, {"c", map({{"d", 2}})}})}, {"Z", -3}, {"e", map({})}}),
         "[General]\nA=true\nb=1\nc/d=2\nZ=-3\n\n[e]\n"},
        {map({{"General", 5}}), "[General]\nGeneral=5\n"},
        {map({{"s", map({{"l", list({map({{"x", 1}}), map({{"y", 2}})})}})}}), "[General]\n\n[s]\nl/x=1\nl/y=2\n"},
        {map({{"v", "hello \"world\""}}), "[General]\nv=\"hello \\\"world\\\"\"\n"},
        {map({{"v", "a\tb\\c\r\n"}}), "[General]\nv=a\\tb\\\\c\\r\\n\n"},
        {map({{"v", ""}, {"w", 1e20}, {"x", 0.1}}), "[General]\nv=\nw=1e+20\nx=0.1\n"},
        {map({{"k=\n", "\0"s}}), "[General]\nk=\n=\0\n"s},
    };
    for (const auto& row : rows) EXPECT_EQ(save(row.values), row.bytes);
    EXPECT_FALSE(SaveIniFile(mFolder.path("no folder/a.ini"), {}));
    EXPECT_FALSE(SaveIniFile("", {}));
    EXPECT_TRUE(takeLines().empty());
}

TEST_F(IniFile, ReadsBackWhatItWrote) {
    const Map values = map({{"a", 1},
                            {"General/x", "y"},
                            {"s", map({{"b", "\"quoted\" and \ttabbed\r"}, {"c", map({{"d", 2.5}, {"e", false}})}})},
                            {"t \xE6\x97\xA5", map({{"\xC3\xA9", "back\\slash"}})}});
    Map expected = values;
    expected.remove("General/x");
    expected.editValuePath("General/x", "y", '/');
    EXPECT_EQ(load(save(values)), expected);
    // Texts that look like another type, or begin with a blank, do not.
    EXPECT_EQ(load(save(map({{"a", "12"}, {"b", "TRUE"}, {"c", "  x"}}))), map({{"a", 12}, {"b", true}, {"c", "x"}}));
}

TEST_F(IniFile, SavingStopsAtWhatItCannotWrite) {
    const Map values =
        map({{"a", 1}, {"s", map({{"b", 2}, {"c", map({{"l", list({1})}})}, {"d", 3}})}, {"t", map({})}});
    mFolder.write("a.ini", "old=1\n");
    EXPECT_FALSE(SaveIniFile(path(), values, false));
    EXPECT_EQ(mFolder.read("a.ini"), "[General]\na=1\n\n[s]\nb=2\n");
    EXPECT_EQ(takeLines(), Strings{"3 saveVariantToIni unsupported variant type (11) for key c/l"});
    for (const auto& [value, number] : std::vector<std::pair<xoVariant, std::string>>{
             {xoVariant(), "0"}, {numbers({1, 2}), "5"}, {Strings{"a"}, "9"}, {xoVariant::DateTime(1), "14"}}) {
        EXPECT_FALSE(SaveIniFile(path(), map({{"k", value}})));
        EXPECT_EQ(takeLines(), Strings{"3 saveVariantToIni unsupported variant type (" + number + ") for key k"});
    }
    EXPECT_EQ(mFolder.read("a.ini"), "[General]\n");
}

TEST_F(IniFile, MergingKeepsWhatOnlyTheFileHas) {
    const struct {
        std::string file;
        Map values;
        std::string bytes;
    } rows[] = {
        {"a=1\nb=2\n[s]\nc=3\nd=4\n", map({{"b", "new"}, {"s", map({{"d", 5}, {"e", 6}})}}),
         "[General]\na=1\nb=new\n\n[s]\nc=3\nd=5\ne=6\n"},
        {"a=1\n", map({{"a", map({{"b", 2}})}}), "[General]\n\n[a]\nb=2\n"},
        {"[a]\nb=2\n", map({{"a", 1}}), "[General]\na=1\n"},
        {"[General]\na=1\nGeneral/b=2\n", map({{"General", map({{"a", 5}, {"c", 3}})}}), "[General]\na=5\nb=2\nc=3\n"},
        {"k\0a=1\nk\0b=2\n"s, {}, "[General]\nk\0a=1\nk\0b=2\n"s},
    };
    for (const auto& row : rows) {
        mFolder.write("a.ini", row.file);
        EXPECT_EQ(save(row.values, true), row.bytes);
    }
    EXPECT_TRUE(SaveIniFile(mFolder.path("new.ini"), map({{"a", 1}}), true));
    EXPECT_EQ(mFolder.read("new.ini"), "[General]\na=1\n");
    EXPECT_TRUE(takeLines().empty());

    const xo::platform::FileHandle held(
        ::CreateFileW((mFolder.widePath() / "a.ini").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(held);
    EXPECT_FALSE(SaveIniFile(path(), {}, true));
    EXPECT_EQ(takeLines(), Strings{"3 Fail to load " + path()});
}

// Each of these would take minutes if a line, a key or a section cost more than itself.
TEST_F(IniFile, LargeFilesCostWhatTheyHold) {
    constexpr int kMany = 100000;
    std::string flat, sections, bad;
    for (int i = 0; i < kMany; ++i) {
        const std::string n = std::to_string(i);
        flat += "key" + n + "=" + n + "\n";
        sections += "[section" + n + "]\nk=" + n + "\n";
        bad += "no key\n";
    }
    Map values = load(flat);
    EXPECT_EQ(values.size(), static_cast<std::size_t>(kMany));
    EXPECT_EQ(load(save(values)), values);
    values = load(sections);
    EXPECT_EQ(values.getValuePath("section99999/k", 0, '/'), xoVariant(99999));
    EXPECT_EQ(load(save(values, true)), values);
    EXPECT_TRUE(takeLines().empty());

    load(bad);
    EXPECT_EQ(takeLines().back(), "2 Invalid line (99999) no key in Ini file");
    const std::string longLine(1 << 20, 'x');
    load(longLine);
    EXPECT_EQ(takeLines(), Strings{"2 Invalid line (0) " + longLine + " in Ini file"});
    EXPECT_EQ(load("k=" + longLine)["k"], xoVariant(longLine));
    std::string escapes;
    for (int i = 0; i < kMany; ++i) escapes += "\\\\\\t";
    EXPECT_EQ(load("k=" + escapes)["k"].getString().size(), 2u * kMany);
}

TEST_F(IniFile, KeysMayBeDeeperThanTheStack) {
    const std::string slashes(1000000, '/');
    const Map values = load("[s" + slashes + "]\nk" + slashes + "=1\n");
    EXPECT_EQ(*values.findPath("s" + slashes + "/k" + slashes, '/'), xoVariant(1));
    EXPECT_EQ(save(values), "[General]\n\n[s]\n" + slashes + "k" + slashes + "=1\n");
    EXPECT_TRUE(load(save(values, true)) == values);
}

}  // namespace
