// Trees far deeper than the stack: each operation must come back, and in time that grows with the tree alone.
#include <gtest/gtest.h>

#include "variant/trees.h"

namespace {

using namespace xo::tests;
using xo::xoVariant;

constexpr int kDepth = 1000000;

TEST(VariantDeepTrees, AreCopiedComparedAndDestroyed) {
    for (const bool inMaps : {true, false}) {
        const xoVariant tree = nest(kDepth, inMaps, 1);
        xoVariant copy = tree;
        EXPECT_TRUE(copy == tree);
        EXPECT_FALSE(copy < tree);
        const xoVariant greater = nest(kDepth, inMaps, 2);
        EXPECT_FALSE(copy == greater);
        EXPECT_TRUE(copy < greater);
        EXPECT_FALSE(greater < copy);
        const xoVariant deeper = nest(kDepth + 1, inMaps, 1);
        EXPECT_TRUE(copy < deeper);
        copy.clear();
        EXPECT_TRUE(copy.isNull());
    }
}

TEST(VariantDeepTrees, AreCopiedWhole) {
    // Wide enough at every level that the containers put off and those copied at once take turns.
    xoVariant tree = 1;
    for (int i = 0; i < 20000; ++i) {
        xoVariant outer =
            i % 2 != 0 ? xoVariant(list({"before", nest(40, true)})) : xoVariant(map({{"a", nest(40, false)}}));
        if (i % 2 != 0) {
            outer.editList().push_back(std::move(tree));
            outer.editList().push_back("after");
        } else {
            outer.editMap()["k"] = std::move(tree);
        }
        tree = std::move(outer);
    }
    const xoVariant copy = tree;
    EXPECT_TRUE(copy == tree);
}

TEST(VariantDeepTrees, ArePrinted) {
    EXPECT_EQ(nest(kDepth, false, "x").toString(), "x");
    const std::string text = nest(kDepth, true, "x").toString();
    EXPECT_EQ(text.size(), kDepth * 4u + 1u);
    EXPECT_EQ(text.substr(0, 6), "(k=(k=");
    EXPECT_EQ(text.substr(text.size() - 3), ")))");
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
    EXPECT_EQ(*tree.findPath(path, '/'), xoVariant(Strings{"x", "x"}));
    EXPECT_EQ(tree.erasePathRegEx("other"), 0u);

    Map created;
    created.editValuePath(path, Strings{"x", "x"}, '/');
    EXPECT_TRUE(created == tree);
    EXPECT_EQ(tree.erasePathRegEx("k/k/k"), 1u);
    EXPECT_EQ(tree, map({{"k", map({{"k", map({})}})}}));

    Map lists = map({{"l", nest(kDepth, false, map({{"x", 1}}))}});
    EXPECT_EQ(lists.erasePathRegEx("l/x"), 1u);
}

}  // namespace
