// Trees far deeper than the stack: each operation must come back.
#include <gtest/gtest.h>

#include "variant/trees.h"

namespace {

using namespace xo::tests;
using xo::xoVariant;

constexpr int kDepth = 100000;

TEST(VariantDeepTrees, AreCopiedComparedPrintedAndDestroyed) {
    for (const bool inMaps : {true, false}) {
        const xoVariant tree = nest(kDepth, inMaps, "x");
        xoVariant copy = tree;
        EXPECT_TRUE(copy == tree && !(copy < tree));
        const xoVariant greater = nest(kDepth, inMaps, "y");
        EXPECT_TRUE(copy != greater && copy < greater && !(greater < copy));
        EXPECT_TRUE(copy < nest(kDepth + 1, inMaps, "x"));
        copy.clear();
        const std::string text = tree.toString();
        EXPECT_EQ(text.size(), inMaps ? kDepth * 4u + 1u : 1u);
        EXPECT_EQ(text.substr(0, 6), inMaps ? "(k=(k=" : "x");
    }
}

// Wide enough at every level that the containers put off and those copied at once take turns.
TEST(VariantDeepTrees, AreCopiedWhole) {
    xoVariant tree = 1;
    for (int i = 0; i < 1000; ++i) {
        List inner = list("before", nest(40, true));
        inner.push_back(std::move(tree));
        inner << "after";
        Map outer = map("a", nest(40, false));
        outer["k"] = std::move(inner);
        tree = std::move(outer);
    }
    const xoVariant copy = tree;
    EXPECT_TRUE(copy == tree);
}

TEST(VariantDeepTrees, AreFlattenedMergedAndErasedFrom) {
    Map tree = nest(kDepth, true, "x").toMap();
    Map leaves;
    tree.toFlattenMap(leaves, '/');
    ASSERT_EQ(leaves.size(), 1u);
    const std::string path = leaves.begin()->first;
    EXPECT_EQ(path.size(), kDepth * 2u - 1u);
    EXPECT_EQ(*tree.findPath(path, '/'), xoVariant("x"));

    tree.mergeWith(tree);
    Map created;
    created.editValuePath(path, Strings{"x", "x"}, '/');
    EXPECT_TRUE(created == tree);
    EXPECT_EQ(tree.erasePathRegEx("other"), 0u);
    EXPECT_EQ(tree.erasePathRegEx("k/k/k"), 1u);
    EXPECT_EQ(tree, map("k", map("k", map())));
    Map lists = map("l", nest(kDepth, false, map("x", 1)));
    EXPECT_EQ(lists.erasePathRegEx("l/x"), 1u);
}

}  // namespace
