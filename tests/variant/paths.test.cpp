#include <gtest/gtest.h>

#include <thread>

#include "variant/trees.h"

namespace {

using namespace xo::tests;
using xo::xoVariant;

TEST(VariantMap, KeepsKeysInTheOrderOfTheirBytes) {
    EXPECT_EQ(map("b", 1, "\xC3\xA9", 2, "", 3, "a/b", 4, "B", 5, "a", 6).toString(),
              "(=3),(B=5),(a=6),(a/b=4),(b=1),(\xC3\xA9=2)");
    for (std::size_t size = 1; size <= 40; ++size) {
        const std::string key(size, '\x80');
        Map values = map(key, 0);
        for (std::size_t at = 0; at < size; ++at) {
            std::string less = key, greater = key;
            less[at] = '\x7F';
            greater[at] = '\x81';
            EXPECT_FALSE(values.contains(less) || values.contains(greater)) << size << ' ' << at;
            EXPECT_NE(map(less, 0), values) << size << ' ' << at;
            EXPECT_TRUE(map(less, 0) < values && values < map(greater, 0)) << size << ' ' << at;
            EXPECT_EQ(map(key, 0, less, 1, greater, 2).begin()->second, xoVariant(1));
        }
        EXPECT_TRUE(values.contains(key));
    }
}

TEST(VariantMap, InsertsOnlyWhatIsAbsent) {
    Map values = map("a", 1);
    EXPECT_EQ(values.getValue("a", 5), xoVariant(1));
    EXPECT_EQ(values.getValue("x", 5), xoVariant(5));
    EXPECT_FALSE(values.contains("x"));
    EXPECT_EQ(values.editValue("a", 5), xoVariant(1));
    EXPECT_EQ(values.editValue("x", 5), xoVariant(5));
    EXPECT_TRUE(values["y"].isNull());
    const auto again = values.insert({"a", 9});
    EXPECT_TRUE(!again.second && again.first->second == xoVariant(1) && values.insert({"b", 2}).second);
    EXPECT_EQ(values, map("a", 1, "b", 2, "x", 5, "y", xoVariant()));
    EXPECT_EQ(values.erase(values.find("a"))->first, "b");
    EXPECT_TRUE(values.erase(values.end()) == values.end());
    EXPECT_TRUE(values.remove("b") && !values.remove("b") && values.find("b") == values.end());
    EXPECT_EQ(values.editValue("copy", values["x"]), xoVariant(5));
    EXPECT_EQ(values.size(), 3u);
}

TEST(VariantPath, ResolvesThroughMapsAlone) {
    const Map tree = map("a", map("b", 1, "", map("b", 2, "", 3), "l", list(map("x", 4))), "i", 5, "a/b", 6);
    const struct {
        const char* path;
        char separator;
        xoVariant value;  // UNKNOWN where nothing is found
    } rows[] = {
        {"i", '/', 5},      {"a/b", '/', 1}, {"a.b", '.', 1},    {"a/b", '.', 6},        {"a/b", '\0', 6},
        {"a//b", '/', 2},   {"a//", '/', 3}, {"a/l/x", '/', {}}, {"a/l/0", '/', {}},     {"i/b", '/', {}},
        {"a/b/c", '/', {}}, {"", '/', {}},   {"/a", '/', {}},    {"a/missing", '/', {}}, {nullptr, '/', {}},
    };
    for (const auto& row : rows) {
        const char* const shown = row.path != nullptr ? row.path : "null";
        const xoVariant* found = tree.findPath(row.path, row.separator);
        EXPECT_EQ(found != nullptr, !row.value.isNull()) << shown;
        if (found != nullptr) EXPECT_EQ(*found, row.value) << shown;
        const xoVariant expected = row.value.isNull() ? xoVariant("default") : row.value;
        EXPECT_EQ(tree.getValuePath(row.path, "default", row.separator), expected) << shown;
    }
    EXPECT_EQ(*map("", 1).findPath("", '/'), xoVariant(1));
    EXPECT_EQ(tree.getValuePath(std::string("a/b"), 0, '/'), xoVariant(1));
}

TEST(VariantPath, EditingCreatesTheWay) {
    Map tree = map("i", 5);
    EXPECT_EQ(tree.editValuePath("a/b", 1, '/'), xoVariant(1));
    EXPECT_EQ(tree.editValuePath("a/b", 2, '/'), xoVariant(1));
    EXPECT_EQ(tree.editValuePath("i/x", 3, '/'), xoVariant(3));  // the scalar is lost
    tree.editValuePath("a/", 4, '/');
    tree.editValuePath("", 5, '/');
    EXPECT_EQ(tree.editValuePath(std::string("n"), xoVariant(), '/'), xoVariant());
    EXPECT_EQ(tree, map("", 5, "a", map("", 4, "b", 1), "i", map("x", 3), "n", xoVariant()));
}

TEST(VariantPath, NullPathsAndKeysTouchNoMap) {
    constexpr const char* kNull = nullptr;
    Map tree = map("", 1);
    xoVariant& scratch = tree.editValuePath(kNull, 7, '/');
    EXPECT_EQ(scratch, xoVariant(7));
    std::thread([&] { Map().editValuePath(kNull, list(1), '/'); }).join();
    EXPECT_EQ(scratch, xoVariant(7)) << "each thread has its own";
    EXPECT_EQ(tree.editValuePath(kNull, 8, '/'), xoVariant(8));
    EXPECT_TRUE(tree.editValue(kNull, 9) == xoVariant(9) && tree[kNull].isNull());
    EXPECT_TRUE(tree.getValue(kNull, 9) == xoVariant(9) && !tree.contains(kNull) && !tree.remove(kNull));
    EXPECT_TRUE(tree.find(kNull) == tree.end() && std::as_const(tree).find(kNull) == std::as_const(tree).end());
    tree.multiInsert(kNull, 2);
    tree.multiInsertAndDestroy(kNull, xoVariant(2));
    xoVariant taken = 2;
    tree.multiInsertAndDestroy(kNull, taken);
    EXPECT_TRUE(taken.isNull());
    EXPECT_EQ(tree, map("", 1));
}

TEST(VariantPath, DefaultAndPathMayBeWhatIsReplaced) {
    const std::string longPath = "a/" + std::string(100, 'x');
    Map tree = map("a", longPath);
    tree.editValuePath(tree["a"].getString(), tree["a"], '/');
    EXPECT_EQ(tree, map("a", map(longPath.substr(2), longPath)));
    tree = map("a", list(longPath));
    EXPECT_EQ(tree.editValuePath("a/b", tree["a"].getList()[0], '/'), xoVariant(longPath));
    tree = map("a", xoVariant());
    EXPECT_TRUE(tree.editValuePath("a/b", tree["a"], '/').isNull());
    xoVariant whole = map("a", 1);
    EXPECT_EQ(whole.editMap().editValuePath("a/b", whole, '/').getType(), xoVariant::MAP);
}

}  // namespace
