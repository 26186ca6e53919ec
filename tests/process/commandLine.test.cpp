#include "process/processFixture.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Texts = std::vector<std::string>;
using xo::xoProcess;

class CommandLine : public xo::tests::ProcessTest {};

TEST_F(CommandLine, KeepsEachArgumentThroughTheChildsOwnSplitter) {
    const Texts nasty = {"",         " ",      "\t a\n",
                         "\\",       "a\\\\",  "a b\\\\",
                         "\"",       "\\\"",   "\"\"\"",
                         "a\\\\\"b", "%PATH%", "^ & | < > ()",
                         "*.exe ?",  "-x='y'", "\xC3\xA9\xF0\x9F\x98\x80"};
    Texts arguments = nasty;
    arguments.insert(arguments.begin(), "arguments");
    EXPECT_EQ(run(arguments), 0);
    std::string expected;
    for (const std::string& argument : nasty) expected += argument + '\0';
    EXPECT_EQ(mFolder.read("told"), expected);
    EXPECT_EQ(mError, "untouched");
}

TEST_F(CommandLine, EndsAtWhatWindowsTakes) {
    const std::size_t room = 32766 - mHelper.size() - std::string("\"\" \"exit\" \"3\" \"\"").size();
    EXPECT_EQ(run({"exit", "3", std::string(room, 'x')}), 3);
    EXPECT_EQ(run({"exit", "3", std::string(room + 1, 'x')}), -1);
    EXPECT_THAT(takeLines(), ElementsAre("0()CreateProcessW return an error 206"));
    for (const std::string& bad : {std::string("a\0b", 3), std::string("\xFF")}) EXPECT_EQ(run({"exit", "3", bad}), -1);
}

TEST_F(CommandLine, PassesABatchFileOnlyWhatCannotBecomeACommand) {
    mFolder.write("b \xC3\xA9.BAT", "@echo [%1][%2][%3]> told\r\n@exit /b 5\r\n");
    const std::string batch = mFolder.path("b \xC3\xA9.BAT");
    const auto runBatch = [&](const std::string& path, const Texts& arguments) {
        return xoProcess::ExecUtf8(path, arguments, mFolder.path(), true, 60000);
    };
    EXPECT_EQ(runBatch(batch, {"a b&exit 9", "", "^|>x\\"}), 5);
    EXPECT_EQ(mFolder.read("told"), "[\"a b&exit 9\"][\"\"][\"^|>x\\\"]\r\n");
    for (const std::string bad : {"\"&exit 9", "%PATH%", "a\nb"}) EXPECT_EQ(runBatch(batch, {bad}), -1) << bad;
    EXPECT_EQ(runBatch(batch + ". ", {}), 5) << "Windows drops what stands behind the name";
    EXPECT_EQ(runBatch(mFolder.path("missing.cmd"), {}), -1);
    EXPECT_EQ(runBatch(batch, {std::string(8200, 'x')}), -1);
    EXPECT_EQ(runBatch("C:/windows/system32/cmd", {"/D", "/c", "echo x>told&", "exit 3"}), 3);
    EXPECT_EQ(mFolder.read("told"), "x\r\n");
}

TEST_F(CommandLine, IsSplitAsThePlatformDoes) {
    const std::pair<const char*, Texts> rows[] = {
        {R"("C:\a b\" "x\\" y\\\"z "" ""q"")", {"C:\\a b\\", "x\\", "y\\\"z", "", "q"}},
        {" a\tb", {"", "a", "b"}},
        {"p \"open end", {"p", "open end"}},
        {"\xC3\xA9 \xE6\x97\xA5", {"\xC3\xA9", "\xE6\x97\xA5"}},
    };
    Texts words;
    for (const auto& [line, expected] : rows) {
        EXPECT_TRUE(xoProcess::SplitCommandLine(line, words));
        EXPECT_EQ(words, expected) << line;
    }
    EXPECT_THAT(takeLines(), IsEmpty());
    for (const std::string& bad : {std::string(), std::string(" \t"), std::string("a\0b", 3), std::string("a \xFF")}) {
        EXPECT_FALSE(xoProcess::SplitCommandLine(bad, words));
        EXPECT_THAT(words, IsEmpty());
        EXPECT_THAT(takeLines(), ElementsAre("3()Invalid command line : " + bad));
    }
}

}  // namespace
