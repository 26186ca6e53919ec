// Trees far deeper than the stack: each operation must come back. And trees that a processor fault leaves half done.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>

#include "platform/handle.h"
#include "variant/trees.h"

#undef __try  // libstdc++ defines it as a macro; below it is the keyword of structured exception handling

namespace {

using namespace xo::tests;
using xo::xoVariant;

constexpr int kDepth = 100000;

void onSmallStack(std::function<void()> function) {
    const auto run = [](void* called) -> DWORD {
        (*static_cast<std::function<void()>*>(called))();
        return 0;
    };
    const xo::platform::KernelHandle thread(
        ::CreateThread(nullptr, 128 * 1024, run, &function, STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr));
    ASSERT_TRUE(thread);
    ::WaitForSingleObject(thread.get(), INFINITE);
}

// From here down through more than a block of the stack: where in it a copy or a destruction begins decides how it
// goes.
void atEveryPlaceOfTheStack(const std::function<void()>& function, int times = 36) {
    volatile char used[1024];
    used[0] = 0;
    function();
    if (times > 1) atEveryPlaceOfTheStack(function, times - 1);
    used[1] = 0;  // no tail call
}

TEST(VariantDeepTrees, AreCopiedComparedPrintedAndDestroyed) {
    onSmallStack([] {
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
    });
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

// Notes its name when it is destroyed.
struct Noting : xoVariant::UserDataInterface {
    Noting(Strings& ofAll, std::string called) : notes(ofAll), name(std::move(called)) {}
    ~Noting() override { notes.push_back(name); }
    UserDataInterface* clone() const override { return new Noting(notes, name); }
    bool equals(const UserDataInterface& other) const override {
        return dynamic_cast<const Noting&>(other).name == name;
    }

    Strings& notes;
    std::string name;
};

// Lists are destroyed from front to back, maps from back to front.
TEST(VariantDeepTrees, AreCopiedAndDestroyedAlikeAtEveryPlaceOfTheStack) {
    Strings notes;
    const auto note = [&notes](const char* name) { return std::make_unique<Noting>(notes, name); };
    const Map outer = map("x", list(xoVariant(note("5")), 1, map("a", xoVariant(note("7")), "b", xoVariant(note("6")))),
                          "y", map("k", list(), "l", list(xoVariant(note("3")), xoVariant(note("4")))), "z",
                          list(list(xoVariant(note("1"))), xoVariant(note("2"))));
    const xoVariant tree = nest(40, true, list(nest(200, false, outer), "behind"));
    notes.clear();
    atEveryPlaceOfTheStack([&] {
        xoVariant copy = tree;
        EXPECT_TRUE(copy == tree);
        EXPECT_EQ(notes, Strings());
        copy.clear();
        EXPECT_EQ(notes, (Strings{"1", "2", "3", "4", "5", "6", "7"}));
        notes.clear();
    });
}

// Notes its name after its members are destroyed.
struct Owner : Noting {
    using Noting::Noting;
    List members;
};

TEST(VariantDeepTrees, DestroyTheMembersOfUserDataWithIt) {
    atEveryPlaceOfTheStack([] {
        for (int depth = 28; depth < 36; ++depth) {
            Strings notes;
            auto owner = std::make_unique<Owner>(notes, "owner");
            owner->members.push_back(nest(2, true, std::make_unique<Noting>(notes, "member")));
            nest(depth, false, std::move(owner)).clear();
            EXPECT_EQ(notes, (Strings{"member", "owner"})) << depth;
        }
    });
}

// The host's own frame handles the fault, so that the library does not see it.
void callFaulting(const std::function<void()>& function) {
    bool hasFaulted = false;
    __try {
        function();
    } __except (EXCEPTION_EXECUTE_HANDLER) {
        hasFaulted = true;
    }
    EXPECT_TRUE(hasFaulted);
}

struct Faulting : Noting {
    using Noting::Noting;
    ~Faulting() override { *reinterpret_cast<volatile char*>(1) = 0; }
};

TEST(VariantDeepTrees, AreSoundAfterAFaultInTheMidstOfOthers) {
    Strings notes;
    const xoVariant tree = nest(100, true, list(nest(100, false, std::make_unique<Noting>(notes, "copy")), "x"));
    notes.clear();  // of the copies on the way into the tree
    const auto work = [&] {
        {
            const xoVariant copy = tree;
            EXPECT_TRUE(copy == tree);
        }
        EXPECT_EQ(notes, Strings{"copy"});
        notes.clear();
    };
    xoVariant unreadable = nest(3, true, list("before", "bad", "behind"));
    xoVariant& bad = unreadable.editMap()["k"].editMap()["k"].editMap()["k"].editList()[1];
    char sound[sizeof bad];
    std::memcpy(sound, &bad, sizeof bad);
    const std::uintptr_t noAddress = 1;
    std::memcpy(reinterpret_cast<char*>(&bad) + sizeof bad - sizeof noAddress, &noAddress, sizeof noAddress);
    atEveryPlaceOfTheStack([&] {
        callFaulting([&] { xoVariant(unreadable).clear(); });
        work();
        callFaulting([&] { nest(3, false, std::make_unique<Faulting>(notes, "")).clear(); });
        notes.clear();
        work();
    });
    std::memcpy(reinterpret_cast<char*>(&bad), sound, sizeof bad);
    work();
}

}  // namespace
