#include "xoSystem/xoXRefResolverSearchPath.h"

#include <algorithm>
#include <set>
#include <thread>

#include "files/filesFixture.h"
#include "log/logFixture.h"
#include "support/importHook.h"
#include "support/temporaryFolder.h"
#include "xoSystem/xoDirUtils.h"

#include <winternl.h>

namespace xo::tests {
namespace {

using Resolver = xoXRefResolverSearchPath;
using testing::ElementsAre;
using testing::IsEmpty;

struct XRef : LogTest {
    std::string path(const std::string& name) const { return slashes(mFolder.path(name)); }
    static std::string slashes(std::string text) {
        std::replace(text.begin(), text.end(), '\\', '/');
        return text;
    }
    void make(const std::string& name) const {
        const std::string whole = path(name);
        ASSERT_TRUE(xoDirUtils::MkpathUtf8(xoDirUtils::GetParentPathUtf8(whole)));
        mFolder.write(name, "x");
    }
    // "<how><shared>:path", without the folder of the test.
    std::vector<std::string> find(const Resolver& resolver, const std::string& reference,
                                  const std::string& document = {}) const {
        std::vector<std::string> found;
        for (const Resolver::Match& match : resolver.findAllUtf8(reference, document)) {
            EXPECT_TRUE(found.size() || match.path == resolver.resolveUtf8(reference, document));
            std::string shown = match.path;
            if (shown.compare(0, path("").size(), path("")) == 0) shown.erase(0, path("").size() + 1);
            found.push_back(std::to_string(match.how) + std::to_string(match.sharedNames) + ":" + shown);
        }
        if (found.empty()) EXPECT_EQ(resolver.resolveUtf8(reference, document), "");
        return found;
    }

    TemporaryFolder mFolder;
};

TEST_F(XRef, FindsByEachRuleInOrder) {
    for (const char* const name : {"doc/tex/a.png", "doc/b.png", "one/tex/a.png", "one/deep/er/tex/A.PNG", "two/a.png",
                                   "two/tex/c.png", "two/e\xCC\x81.png", "two/\xC3\xA4/b.png"})
        make(name);
    Resolver resolver;
    EXPECT_THAT(find(resolver, "tex/a.png"), IsEmpty()) << "no search path";
    resolver.addSearchPathUtf8(mFolder.path("one") + "\\");
    resolver.addSearchPathUtf8(path("two"));
    resolver.addSearchPathUtf8(path("ONE"), false);  // added before
    resolver.addSearchPathUtf8("");
    EXPECT_THAT(resolver.getSearchPaths(), ElementsAre(path("one"), path("two")));
    const std::string document = mFolder.path("doc/scene.xml"), absolute = mFolder.path("doc\\tex\\a.png");
    struct Row {
        std::string reference, document;
        std::vector<std::string> found;
    };
    const std::vector<std::string> byName = {"32:one/deep/er/tex/A.PNG", "31:two/a.png"};
    const auto after = [&](std::vector<std::string> first) {
        first.insert(first.end(), byName.begin(), byName.end());
        return first;
    };
    const Row rows[] = {
        {"tex/a.png", document, after({"12:doc/tex/a.png", "22:one/tex/a.png"})},
        {"tex\\A.png", "", after({"22:one/tex/A.png"})},
        {"../doc/tex/./a.png", document, after({"13:doc/tex/a.png", "32:one/tex/a.png"})},
        {"../one/tex/a.png", document, {"13:one/tex/a.png", "32:one/deep/er/tex/A.PNG", "31:two/a.png"}},
        {"Q:/old/TEX/a.png", document, {"32:one/tex/a.png", "32:one/deep/er/tex/A.PNG", "31:two/a.png"}},
        {"file:///C:/old/b.png", document, {"31:two/\xC3\xA4/b.png"}},
        {"/\xC3\x84/B.png", document, {"22:two/\xC3\x84/B.png"}},
        {"old/A\xCC\x88/B.png", document, {"32:two/\xC3\xA4/b.png"}},  // decomposed here, composed there
        {"\xC3\x89.PNG", "", {"31:two/e\xCC\x81.png"}},                // and the other way round
        {"two/tex", document, {}},                                     // a folder
        {"b.png", "doc/scene.xml", {"31:two/\xC3\xA4/b.png"}},         // a relative document is no place
        {"b.png", "\\\\?\\" + document, {"11:doc/b.png", "31:two/\xC3\xA4/b.png"}},
        {"NUL", document, {}},
        {"a.png:stream", document, {}},
        {"missing.png", document, {}}};
    for (const Row& row : rows) EXPECT_EQ(find(resolver, row.reference, row.document), row.found) << row.reference;
    const auto written = find(resolver, absolute, document);
    EXPECT_TRUE(written.size() == 4 && written[0].front() == '0' && written[1] == "32:one/tex/a.png");
    EXPECT_EQ(resolver.resolveUtf8("../../../../../../../../" + absolute.substr(3), document), slashes(absolute));
}

TEST_F(XRef, OrderDependsOnNothingButThePaths) {
    std::vector<std::string> names = {"p/x/1/a.png", "p/y/a.png", "q/a.png", "p/Z/a.png", "p/a/b/a.png", "q/x/a.png"};
    for (int round = 0; round != 3; ++round) {
        xoDirUtils::ClearFolderUtf8(mFolder.path());
        for (const std::string& name : names) make(name);
        Resolver resolver;
        for (const char* const folder : {"p", "q"}) resolver.addSearchPathUtf8(path(folder));
        EXPECT_THAT(find(resolver, "old/x/a.png"), ElementsAre("32:q/x/a.png", "31:p/y/a.png", "31:p/Z/a.png",
                                                               "31:p/a/b/a.png", "31:p/x/1/a.png", "31:q/a.png"));
        std::next_permutation(names.begin(), names.end());
        std::reverse(names.begin(), names.end());
    }
    Resolver other;
    for (const char* const folder : {"p/x", "q", "p"}) other.addSearchPathUtf8(path(folder));  // p/x lies below p
    EXPECT_THAT(find(other, "a.png"), ElementsAre("21:q/a.png", "31:p/x/1/a.png", "31:q/x/a.png", "31:p/y/a.png",
                                                  "31:p/Z/a.png", "31:p/a/b/a.png"));
    EXPECT_EQ(other.getFileCount(), names.size()) << "each file once";
    other.clearSearchPaths();
    other.addSearchPathUtf8(path("p"));
    other.addSearchPathUtf8(path("p/y"), false);
    EXPECT_TRUE(other.refresh() && other.getFileCount() == 4);
}

// Asks for no path of a computer that only the reference knows, and never lets the system ask the user for a medium.
std::set<std::string> asked;
DWORD WINAPI noteAttributes(LPCWSTR path) {
    const bool isQuiet = (::GetThreadErrorMode() & SEM_FAILCRITICALERRORS) != 0;
    asked.insert(isQuiet ? std::filesystem::path(path).u8string() : "a message box");
    return INVALID_FILE_ATTRIBUTES;
}

TEST_F(XRef, AsksNoForeignServer) {
    const ImportHook hook("xoSystem.dll", "GetFileAttributesW", &noteAttributes);
    ASSERT_TRUE(hook.isInstalled());
    struct Row {
        std::string reference, document;
        bool allowed;
        const char* asked;
    };
    const Row rows[] = {
        {"\\\\evil\\share\\a.png", "", false, ""},
        {"file://evil/share/a.png", "C:/d/x.doc", false, ""},
        {"//evil/share/a.png", "//good/share/x.doc", false, ""},
        {"//good/other/a.png", "//good/share/x.doc", false, ""},
        {"//GOOD/share/b/a.png", "//good/Share/d/x.doc", false, "//GOOD/share/b/a.png"},
        {"//good/share/a.png", "", true, "//good/share/a.png"},
        {"a.png", "//good/share/x.doc", false, "//good/share/a.png"},  // beside the document
        {"..\\..\\..\\evil\\share\\a.png", "//good/share/x.doc", false, "//good/share/evil/share/a.png"},
        // Where UTF-8 has more bytes than UTF-16 has units.
        {"..\\..\\evil\\a.png", "\\\\サーバー\\共有\\d\\x.doc", false, "//サーバー/共有/evil/a.png"},
        {"../../../evil/share/a.png", "\\\\サーバー\\共有\\d\\x.doc", false, "//サーバー/共有/evil/share/a.png"},
        {"a.png", "\\\\?\\Volume{1}\\x.doc", false, "//?/Volume{1}/a.png"},
        {"UNC/evil/share/a.png", "\\\\?\\", false, ""},
        {"a.png", "C:scene.xml", false, ""},  // the working folder says nothing about the document
        {"a.png", std::string("C:/d/x.doc\0", 11), false, ""},
        {"A:/a.png", "", false, "A:/a.png"}};
    for (const Row& row : rows) {
        Resolver resolver;
        resolver.setNetworkReferences(row.allowed);
        asked.clear();
        EXPECT_THAT(find(resolver, row.reference, row.document), IsEmpty());
        EXPECT_EQ(asked, *row.asked ? std::set<std::string>{row.asked} : std::set<std::string>()) << row.reference;
    }
    Resolver below;
    below.addSearchPathUtf8("//good/share/textures");
    for (const auto& [reference, asks] :
         {std::pair{"//good/share/textures/a.png", 2}, {"//good/share/texturesx/a", 1}}) {
        asked.clear();
        below.resolveUtf8(reference);  // the search path itself is asked in any case
        EXPECT_EQ(asked.size(), static_cast<std::size_t>(asks)) << reference;
    }
}

TEST_F(XRef, TheIndexHasItsLimitAndItsExtensions) {
    for (int i = 0; i != 11; ++i) make("f/" + std::to_string(i) + (i < 10 ? ".PNG" : ".jpg"));
    for (const std::size_t limit : {10U, 11U}) {
        Resolver resolver(limit);
        EXPECT_TRUE(!resolver.isComplete() && resolver.getFileCount() == 0);
        resolver.addSearchPathUtf8(path("f"));
        EXPECT_EQ(resolver.refresh(), limit == 11);
        EXPECT_EQ(resolver.isComplete(), limit == 11);
        EXPECT_EQ(resolver.getFileCount(), limit);
        const auto lines = takeLines();
        EXPECT_EQ(lines.size(), limit == 10 ? 1U : 0U);
        if (!lines.empty()) EXPECT_EQ(lines[0], "2()xoXRefResolverSearchPath too many files (more than 10)");
        resolver.setExtensions({".png", "jpeg"});
        EXPECT_THAT(find(resolver, "old/3.png"), ElementsAre("31:f/3.PNG"));
        EXPECT_TRUE(resolver.refresh() && resolver.getFileCount() == 10);
    }
    log().setLogTypeEnabled(xoLogDebug, true);
    Resolver resolver;
    resolver.addSearchPathUtf8(path("none"));
    EXPECT_TRUE(resolver.refresh());
    EXPECT_THAT(takeLines(),
                ElementsAre("0(XRefResolver)xoXRefResolverSearchPath cannot list \"" + path("none") + "\""));

    // The handler of a line may use the resolver: no lock is held while it runs.
    const auto resolve = +[](const std::string&, xoLogType, const std::string&, void* user) {
        auto& [used, calls] = *static_cast<std::pair<Resolver*, int>*>(user);
        if (++calls == 1) EXPECT_TRUE(used->refresh() && used->resolveUtf8("old/3.png").empty());
    };
    std::pair<Resolver*, int> use(&resolver, 0);
    log().installCustomHandler(resolve, &use);
    resolver.addSearchPathUtf8(path("none too"));
    EXPECT_EQ(resolver.resolveUtf8("old/3.png"), "");
    EXPECT_EQ(use.second, 4) << "two lines for each of the two walks";
}

// Cancels a walk while its second folder is opened.
std::atomic<bool> canceled{false};
int opened = 0;
NTSTATUS NTAPI cancelAtSecond(HANDLE* folder, ACCESS_MASK access, OBJECT_ATTRIBUTES* attributes,
                              IO_STATUS_BLOCK* status, ULONG share, ULONG options) {
    canceled = ++opened == 2;
    return ImportHook::behind(&cancelAtSecond)(folder, access, attributes, status, share, options);
}

TEST_F(XRef, TheIndexAgesAndIsMadeAnew) {
    make("f/d/a.png");
    make("f/d/b.png");
    Resolver resolver;
    resolver.addSearchPathUtf8(path("f"));
    EXPECT_THAT(find(resolver, "old/a.png"), ElementsAre("31:f/d/a.png"));
    xoDirUtils::RemoveFileUtf8(mFolder.path("f/d/a.png"));
    make("f/d/c.png");
    EXPECT_THAT(find(resolver, "old/a.png"), IsEmpty()) << "gone";
    EXPECT_THAT(find(resolver, "old/c.png"), IsEmpty()) << "not in the index yet";
    const std::atomic<bool> cancel{true};
    EXPECT_FALSE(resolver.refresh(&cancel));
    make("f/d/e/c.png");
    {
        const ImportHook hook("xoSystem.dll", "NtOpenFile", &cancelAtSecond);
        EXPECT_FALSE(resolver.refresh(&canceled));
        EXPECT_EQ(opened, 2) << "the walk ends with the folder";
    }
    EXPECT_EQ(resolver.getFileCount(), 2U) << "the old index";
    xoDirUtils::RemoveFileUtf8(mFolder.path("f/d/e/c.png"));
    EXPECT_TRUE(resolver.refresh());
    EXPECT_THAT(find(resolver, "old/c.png"), ElementsAre("31:f/d/c.png"));
    make("g/e.png");
    resolver.addSearchPathUtf8(path("g"), false);
    make("g/h/e.png");
    EXPECT_THAT(find(resolver, "old/e.png"), ElementsAre("31:g/e.png")) << "made anew, and g is not recursive";
    resolver.clearSearchPaths();
    EXPECT_THAT(find(resolver, "old/c.png"), IsEmpty());
}

TEST_F(XRef, FollowsLinksAndLongPaths) {
    const std::string longName(150, 'n');
    make("f/" + longName + "/" + longName + "/a.png");
    make("g/b.png");
    Resolver resolver;
    resolver.addSearchPathUtf8(path("f/" + longName));
    EXPECT_THAT(find(resolver, "old/a.png"), ElementsAre("31:f/" + longName + "/" + longName + "/a.png"));
    EXPECT_THAT(find(resolver, longName + "/a.png"), ElementsAre("22:f/" + longName + "/" + longName + "/a.png"));

    const auto link = mFolder.widePath() / L"g" / L"loop";
    makeLink(link, L"../g");
    if (!isLink(link)) GTEST_SKIP() << "no way to make a link here";
    Resolver loop;
    loop.addSearchPathUtf8(path("g"));
    EXPECT_THAT(find(loop, "old/b.png"), ElementsAre("31:g/b.png"));
}

TEST_F(XRef, AnswersManyThreadsDuringRefreshes) {
    for (int i = 0; i != 50; ++i) make("f/" + std::to_string(i % 7) + "/" + std::to_string(i) + ".png");
    Resolver resolver;
    resolver.addSearchPathUtf8(path("f"));
    std::atomic<int> found{0};
    std::vector<std::thread> threads;
    for (int t = 0; t != 8; ++t)
        threads.emplace_back([&, t] {
            for (int i = 0; i != 50; ++i) {
                if (t == 0 && i % 5 == 0) resolver.refresh();
                if (t == 1 && i % 10 == 0) resolver.setExtensions({i % 20 == 0 ? "png" : ".PNG"});
                if (resolver.resolveUtf8("old/" + std::to_string(i) + ".png").size() > 5) ++found;
            }
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(found, 8 * 50);
}

}  // namespace
}  // namespace xo::tests
