#include <gtest/gtest.h>

#include "variant/trees.h"

namespace {

using namespace xo::tests;
using xo::xoVariant;

TEST(VariantMultiInsert, GathersByType) {
    const struct {
        std::vector<xoVariant> values;
        xoVariant apart;   // with asList false
        xoVariant listed;  // with asList true
    } rows[] = {
        {{1}, 1, 1},
        {{"x", "y"}, Strings{"x", "y"}, list({"x", "y"})},
        {{"x", "y", "z"}, Strings{"x", "y", "z"}, list({"x", "y", "z"})},
        {{1, "x"}, list({1, "x"}), list({1, "x"})},
        {{"x", 1}, list({"x", 1}), list({"x", 1})},
        {{"x", "y", 1}, list({Strings{"x", "y"}, 1}), list({"x", "y", 1})},
        {{Strings{"x"}, "y"}, Strings{"x", "y"}, list({Strings{"x"}, "y"})},
        {{"y", Strings{"x"}}, list({"y", Strings{"x"}}), list({"y", Strings{"x"}})},
        {{list({1}), 2}, list({1, 2}), list({1, 2})},
        {{list({1}), list({2})}, list({1, list({2})}), list({1, list({2})})},
        {{1, list({2})}, list({1, list({2})}), list({1, list({2})})},
        {{xoVariant(), 1}, list({xoVariant(), 1}), list({xoVariant(), 1})},
        {{map({{"a", 1}, {"m", map({{"x", "1"}})}}), map({{"a", 2}, {"b", 3}, {"m", map({{"x", "2"}, {"y", 4}})}})},
         map({{"a", list({1, 2})}, {"b", 3}, {"m", map({{"x", Strings{"1", "2"}}, {"y", 4}})}}),
         list({map({{"a", 1}, {"m", map({{"x", "1"}})}}),
               map({{"a", 2}, {"b", 3}, {"m", map({{"x", "2"}, {"y", 4}})}})})},
        {{map({{"a", 1}}), 5}, list({map({{"a", 1}}), 5}), list({map({{"a", 1}}), 5})},
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
            EXPECT_EQ(copied, map({{"k", asList ? row.listed : row.apart}})) << asList;
            EXPECT_EQ(copied, moved);
        }
    }
}

TEST(VariantMultiInsert, TakesWhatTheMapHoldsAlready) {
    Map values = map({{"k", list({1})}});
    values.multiInsertAndDestroy("k", values["k"]);
    EXPECT_EQ(values, map({{"k", list({xoVariant(), list({1})})}}));
    values = map({{"k", "x"}});
    values.multiInsert("k", values["k"]);
    EXPECT_EQ(values, map({{"k", Strings{"x", "x"}}}));
}

TEST(VariantMerge, KeepsBothSides) {
    const Map other = map({{"a", 2}, {"m", map({{"x", 1}})}, {"z", "new"}});
    Map values = map({{"a", 1}, {"m", map({{"x", 0}, {"y", 5}})}});
    values.mergeWith(other);
    EXPECT_EQ(values, map({{"a", list({1, 2})}, {"m", map({{"x", list({0, 1})}, {"y", 5}})}, {"z", "new"}}));
    EXPECT_EQ(other.size(), 3u);
    values = map({{"m", map({{"x", 0}})}});
    values.mergeWith(other, true);
    EXPECT_EQ(values, map({{"a", 2}, {"m", list({map({{"x", 0}}), map({{"x", 1}})})}, {"z", "new"}}));
}

TEST(VariantMerge, TakesItselfAndItsParts) {
    Map values = map({{"a", "x"}, {"m", map({{"b", "y"}})}});
    values.mergeWith(values);
    EXPECT_EQ(values, map({{"a", Strings{"x", "x"}}, {"m", map({{"b", Strings{"y", "y"}}})}}));
    values = map({{"m", map({{"m", 1}, {"n", 2}})}});
    values.mergeWith(values["m"].getMap());
    EXPECT_EQ(values, map({{"m", list({map({{"m", 1}, {"n", 2}}), 1})}, {"n", 2}}));
}

TEST(VariantFlatten, JoinsKeysDownToTheLeaves) {
    const struct {
        Map tree;
        Map leaves;
    } rows[] = {
        {map({{"a", 1}, {"b", map({{"c", 2}, {"", map({{"d", 3}})}})}}), map({{"a", 1}, {"b/c", 2}, {"b//d", 3}})},
        {map({{"empty", map({})}, {"u", xoVariant()}}), map({{"u", xoVariant()}})},
        {map({{"l", list({1, 2})}, {"e", list({})}}), map({{"l", list({1, 2})}, {"e", list({})}})},
        {map({{"l", list({map({{"x", 1}}), map({{"x", 2}, {"y", 3}})})}}), map({{"l/x", list({1, 2})}, {"l/y", 3}})},
        {map({{"l", list({1, map({{"x", "a"}}), list({map({{"z", 0}})}), map({{"x", "b"}})})}}),
         map({{"l", list({1, list({map({{"z", 0}})})})}, {"l/x", Strings{"a", "b"}}})},
        {map({{"a", map({{"b", "x"}})}, {"a/b", "y"}}), map({{"a/b", Strings{"x", "y"}}})},
        {map({{"a", map({{"b", map({{"c", 1}})}, {"d", 2}})}, {"e", 3}}), map({{"a/b/c", 1}, {"a/d", 2}, {"e", 3}})},
    };
    for (const auto& row : rows) {
        Map out;
        row.tree.toFlattenMap(out, '/');
        EXPECT_EQ(out, row.leaves);
    }
    Map values = map({{"a", map({{"b", 1}})}, {"a.b", 2}});
    Map out = map({{"a.b", 0}});
    values.toFlattenMap(out, '.');
    EXPECT_EQ(out, map({{"a.b", list({0, 1, 2})}}));
    values.toFlattenMap(values, '.');
    EXPECT_EQ(values, map({{"a", map({{"b", 1}})}, {"a.b", list({2, 1, 2})}}));
}

TEST(VariantErase, RemovesWhatTheWholePathMatches) {
    const Map tree = map({{"a", map({{"x", 1}, {"y", 2}})},
                          {"b", 3},
                          {"l", list({map({{"x", 1}}), list({map({{"x", 2}, {"z", 3}})})})}});
    const struct {
        const char* pattern;
        bool caseInsensitive;
        std::uint64_t erased;
        Map left;
    } rows[] = {
        {"a/.*", false, 2, map({{"a", map({})}, {"b", 3}, {"l", *tree.findPath("l")}})},
        {"a", false, 1, map({{"b", 3}, {"l", *tree.findPath("l")}})},
        {"A", false, 0, tree},
        {"A|B", true, 2, map({{"l", *tree.findPath("l")}})},
        {"x", false, 0, tree},
        {"l/x", false, 2, map({{"a", *tree.findPath("a")}, {"b", 3}, {"l", list({map({}), list({map({{"z", 3}})})})}})},
        {"(.*/)?x", false, 3, map({{"a", map({{"y", 2}})}, {"b", 3}, {"l", list({map({}), list({map({{"z", 3}})})})}})},
        {".*", false, 3, map({})},
        {"", false, 0, tree},
    };
    for (const auto& row : rows) {
        Map values = tree;
        EXPECT_EQ(values.erasePathRegEx(row.pattern, row.caseInsensitive), row.erased) << row.pattern;
        EXPECT_EQ(values, row.left) << row.pattern;
    }
    Map values = tree;
    EXPECT_THROW(values.erasePathRegEx("("), std::regex_error);
    EXPECT_THROW(values.erasePathRegEx(std::string(100000, '(')), std::regex_error);
    EXPECT_THROW(values.erasePathRegEx(std::string(100000, 'a')), std::regex_error);
    EXPECT_EQ(values.erasePathRegEx(std::string(600, '(') + "none" + std::string(600, ')')), 0u);
    EXPECT_THROW(values.erasePathRegEx("(a)\\1"), std::regex_error);  // sub-matches are not captured
    EXPECT_EQ(values, tree);
}

TEST(VariantErase, TakesACompiledExpressionAndAPrefix) {
    Map values = map({{"x", 1}, {"y", map({{"x", 2}})}});
    EXPECT_EQ(xo::xoVariantUtils::ErasePathRegExImplRecurse(values, std::regex("root/y/x"), "root/"), 1u);
    EXPECT_EQ(values, map({{"x", 1}, {"y", map({})}}));
    List maps = list({map({{"x", 1}}), 5, list({map({{"x", 2}})})});
    EXPECT_EQ(xo::xoVariantUtils::ErasePathRegExImplRecurse(maps, std::regex("(r)oot/x"), "root/"), 2u);
    EXPECT_EQ(maps, list({map({}), 5, list({map({})})}));
}

TEST(VariantErase, MatchesPathsOfAnyLength) {
    const std::string longKey(1000000, 'k');
    Map values = map({{longKey, 1}, {"a", 2}});
    EXPECT_THROW(xo::xoVariantUtils::ErasePathRegExImplRecurse(values, std::regex("k*"), ""), std::regex_error);
    EXPECT_EQ(values.erasePathRegEx("k*"), 1u);
    EXPECT_EQ(values, map({{"a", 2}}));
    Map nearLimit = map({{longKey.substr(0, 512), 1}});
    EXPECT_EQ(
        xo::xoVariantUtils::ErasePathRegExImplRecurse(nearLimit, std::regex("((k|l)*|x)*", std::regex::icase), ""), 1u);
}

}  // namespace
