#include <gtest/gtest.h>

#include "support/allocationCount.h"
#include "variant/trees.h"

namespace {

using namespace std::string_literals;
using namespace xo::tests;
using xo::xoVariant;

TEST(VariantMultiInsert, GathersByType) {
    const struct {
        List values;
        xoVariant apart;   // with asList false
        xoVariant listed;  // with asList true
    } rows[] = {
        {list(1), 1, 1},
        {list("x", "y", "z"), Strings{"x", "y", "z"}, list("x", "y", "z")},
        {list(1, "x"), list(1, "x"), list(1, "x")},
        {list("x", 1), list("x", 1), list("x", 1)},
        {list("x", "y", 1), list(Strings{"x", "y"}, 1), list("x", "y", 1)},
        {list(Strings{"x"}, "y"), Strings{"x", "y"}, list(Strings{"x"}, "y")},
        {list("y", Strings{"x"}), list("y", Strings{"x"}), list("y", Strings{"x"})},
        {list(list(1), list(2), 3), list(1, list(2), 3), list(1, list(2), 3)},
        {list(1, list(2)), list(1, list(2)), list(1, list(2))},
        {list(xoVariant(), 1), list(xoVariant(), 1), list(xoVariant(), 1)},
        {list(map("a", 1, "m", map("x", "1")), map("a", 2, "b", 3, "m", map("x", "2", "y", 4))),
         map("a", list(1, 2), "b", 3, "m", map("x", Strings{"1", "2"}, "y", 4)),
         list(map("a", 1, "m", map("x", "1")), map("a", 2, "b", 3, "m", map("x", "2", "y", 4)))},
        {list(map("a", 1), 5), list(map("a", 1), 5), list(map("a", 1), 5)},
    };
    for (const auto& row : rows) {
        for (const bool asList : {false, true}) {
            Map copied, moved;
            for (const xoVariant& value : row.values) {
                copied.multiInsert("k", value, asList);
                xoVariant given = value;
                moved.multiInsertAndDestroy("k", given, asList);
                EXPECT_TRUE(given.isNull());
            }
            EXPECT_EQ(copied, map("k", asList ? row.listed : row.apart)) << asList;
            EXPECT_EQ(copied, moved);
        }
    }
    Map values = map("k", list(1));
    values.multiInsertAndDestroy("k", values["k"]);
    EXPECT_EQ(values, map("k", list(xoVariant(), list(1))));
    values = map("k", "x");
    values.multiInsert("k", values["k"]);
    EXPECT_EQ(values, map("k", Strings{"x", "x"}));
}

TEST(VariantMerge, KeepsBothSides) {
    const Map other = map("a", 2, "m", map("x", 1), "z", "new");
    Map values = map("a", 1, "m", map("x", 0, "y", 5));
    values.mergeWith(other);
    EXPECT_EQ(values, map("a", list(1, 2), "m", map("x", list(0, 1), "y", 5), "z", "new"));
    EXPECT_EQ(other.size(), 3u);
    values = map("m", map("x", 0));
    values.mergeWith(other, true);
    EXPECT_EQ(values, map("a", 2, "m", list(map("x", 0), map("x", 1)), "z", "new"));
    // The other map may be this one, or a part of it.
    values = map("a", "x", "m", map("b", "y"));
    values.mergeWith(values);
    EXPECT_EQ(values, map("a", Strings{"x", "x"}, "m", map("b", Strings{"y", "y"})));
    values = map("m", map("m", 1, "n", 2));
    values.mergeWith(values["m"].getMap());
    EXPECT_EQ(values, map("m", list(map("m", 1, "n", 2), 1), "n", 2));
}

TEST(VariantMerge, LosesNothingWhenMemoryRunsOut) {
    ASSERT_TRUE(ScarceMemory(SIZE_MAX).isInstalled());
    const std::string text = "a text that is longer than a short one";
    const Map rows[] = {map("k", 1), map("k", text), map("k", Strings{text}), map("k", list(text)),
                        map("k", map("k", text))};
    for (const Map& before : rows) {
        for (const Map& other : rows) {
            for (const bool asList : {false, true}) {
                Map expected = before;
                expected.mergeWith(other, asList);
                bool hasFailed = true;
                for (int blocks = 0; hasFailed; ++blocks) {
                    Map values = before;
                    try {
                        const ScarceMemory memory(SIZE_MAX, blocks);
                        hasFailed = false;
                        values.mergeWith(other, asList);
                    } catch (const std::bad_alloc&) {
                        hasFailed = true;
                    }
                    EXPECT_EQ(values, hasFailed ? before : expected) << blocks;
                }
            }
        }
    }
}

TEST(VariantFlatten, JoinsKeysDownToTheLeaves) {
    const std::pair<Map, Map> rows[] = {
        {map("a", 1, "b", map("c", 2, "", map("d", 3))), map("a", 1, "b/c", 2, "b//d", 3)},
        {map("a", map("b", map("c", 1), "d", 2), "e", 3), map("a/b/c", 1, "a/d", 2, "e", 3)},
        {map("empty", map(), "u", xoVariant()), map("u", xoVariant())},
        {map("l", list(1, 2), "e", list()), map("l", list(1, 2), "e", list())},
        {map("l", list(map("x", 1), map("x", 2, "y", 3))), map("l/x", list(1, 2), "l/y", 3)},
        {map("l", list(1, map("x", "a"), list(map("z", 0)), map("x", "b"))),
         map("l", list(1, list(map("z", 0))), "l/x", Strings{"a", "b"})},
        {map("a", map("b", "x"), "a/b", "y"), map("a/b", Strings{"x", "y"})},
    };
    for (const auto& [tree, leaves] : rows) {
        Map out;
        tree.toFlattenMap(out, '/');
        EXPECT_EQ(out, leaves);
    }
    Map values = map("a", map("b", 1), "a.b", 2);
    Map out = map("a.b", 0);
    values.toFlattenMap(out, '.');
    EXPECT_EQ(out, map("a.b", list(0, 1, 2)));
    values.toFlattenMap(values, '.');
    EXPECT_EQ(values, map("a", map("b", 1), "a.b", list(2, 1, 2)));
}

TEST(VariantErase, RemovesWhatTheWholePathMatches) {
    const Map a = map("x", 1, "y", 2);
    const List l = list(map("x", 1), list(map("x", 2, "z", 3)));
    const List lWithoutX = list(map(), list(map("z", 3)));
    const Map tree = map("a", a, "b", 3, "l", l);
    const struct {
        const char* pattern;
        bool caseInsensitive;
        std::uint64_t erased;
        Map left;
    } rows[] = {
        {"a/.*", false, 2, map("a", map(), "b", 3, "l", l)},
        {"a", false, 1, map("b", 3, "l", l)},
        {"A", false, 0, tree},
        {"A|B", true, 2, map("l", l)},
        {"x", false, 0, tree},
        {"l/x", false, 2, map("a", a, "b", 3, "l", lWithoutX)},
        {"(.*/)?x", false, 3, map("a", map("y", 2), "b", 3, "l", lWithoutX)},
        {".*", false, 3, map()},
        {"", false, 0, tree},
    };
    for (const auto& row : rows) {
        Map values = tree;
        EXPECT_EQ(values.erasePathRegEx(row.pattern, row.caseInsensitive), row.erased) << row.pattern;
        EXPECT_EQ(values, row.left) << row.pattern;
    }
    for (const std::string& bad : {"("s, std::string(32769, 'a'), "(a)\\1"s}) {  // sub-matches are not captured
        Map values = tree;
        EXPECT_THROW(values.erasePathRegEx(bad), std::regex_error);
        EXPECT_EQ(values, tree);
    }
}

std::string repeat(const std::string& text, int times) {
    std::string result;
    while (times-- > 0) result += text;
    return result;
}

// None of these fits the stack of a thread.
TEST(VariantErase, TakesExpressionsOfManyStates) {
    std::string paths = "x";
    for (int i = 0; i < 300; ++i) paths += "|some/path/" + std::to_string(i);
    const std::string lazy = "(k?\?){19000}";  // without the backslash a trigraph
    for (const std::string& pattern :
         {"(|k){16000}"s, lazy, paths + "|k*", repeat("(", 3000) + "k*" + repeat(")", 3000), repeat("k?", 16000)}) {
        Map values = map("kkk", 1, "other", 2);
        EXPECT_EQ(values.erasePathRegEx(pattern), 1u) << pattern.substr(0, 20);
    }
}

TEST(VariantErase, TakesACompiledExpressionAndAPrefix) {
    const auto erase = [](auto& from, const char* pattern, const char* prefix) {
        return xo::xoVariantUtils::ErasePathRegExImplRecurse(from, std::regex(pattern, std::regex::icase), prefix);
    };
    Map values = map("x", 1, "y", map("x", 2));
    EXPECT_EQ(erase(values, "root/y/x", "root/"), 1u);
    EXPECT_EQ(values, map("x", 1, "y", map()));
    List maps = list(map("x", 1), 5, list(map("x", 2)));
    EXPECT_EQ(erase(maps, "(r)oot/x", "root/"), 2u);
    EXPECT_EQ(maps, list(map(), 5, list(map())));

    // This expression is matched by a recursion for each character.
    values = map(std::string(20000, 'k'), 1);
    EXPECT_EQ(erase(values, "((k|l)*|x)*", ""), 1u);
    const Map tooLong = map("a", 1, std::string(400000, 'k'), 2);
    values = tooLong;
    EXPECT_THROW(erase(values, "((k|l)*|x)*|a", ""), std::regex_error);
    EXPECT_EQ(values, tooLong);
#if defined(_MSC_VER)  // Microsoft's library matches by recursion in any case
    EXPECT_THROW(values.erasePathRegEx("((k|l)*|x)*|a"), std::regex_error);
#else
    EXPECT_EQ(values.erasePathRegEx("((k|l)*|x)*|a"), 2u);
#endif
}

}  // namespace
