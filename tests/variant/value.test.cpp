#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <stdexcept>
#include <type_traits>

#include "variant/trees.h"

namespace {

using namespace std::string_literals;
using namespace xo::tests;
using xo::xoVariant;

const std::string kLong(100, 'x');  // too long for a string to hold in place

TEST(VariantValue, TypesKeepTheirNumbersNamesAndDefaults) {
    const Strings names = {"UNKNOWN", "INTEGER",    "REAL", "STRING", "BOOL",  "VEC2D", "VEC3D",       "VEC4D",
                           "UNKNOWN", "STRINGLIST", "MAP",  "LIST",   "MAT3D", "MAT4D", "NOT DEFINED", "NOT DEFINED"};
    const List defaults = list(xoVariant(), 0, 0.0, "", false, numbers(0, 0), numbers(0, 0, 0), numbers(0, 0, 0, 0),
                               xoVariant(), Strings{}, map(), list(), numbers(0, 0, 0, 0, 0, 0, 0, 0, 0),
                               numbers(0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0), xoVariant::DateTime(0),
                               xoVariant(std::unique_ptr<xoVariant::UserDataInterface>()));
    for (std::size_t number = 0; number < names.size(); ++number) {
        const auto type = static_cast<xoVariant::Type>(number);
        xoVariant set(kLong);
        for (const xoVariant& value : {xoVariant(type), set.setType(type)}) {
            const bool isUnknown = names[number] == "UNKNOWN";
            EXPECT_EQ(value, defaults[number]) << number;
            EXPECT_EQ(value.getType(), isUnknown ? xoVariant::UNKNOWN : type) << number;
            EXPECT_EQ(value.getTypeAsString(), names[number]) << number;
            EXPECT_EQ(value.isNull(), isUnknown) << number;
            EXPECT_EQ(value.isNumeric(), number == 1 || number == 2) << number;
        }
    }
    for (const int number : {16, 99, -1}) EXPECT_TRUE(xoVariant(static_cast<xoVariant::Type>(number)).isNull());
}

TEST(VariantValue, EachPayloadBuildsItsType) {
    const float floats[] = {1.5f, -2.0f, 0.25f};
    const List values =
        list(true, -7, 'a', static_cast<unsigned short>(65535), (std::numeric_limits<std::int64_t>::min)(),
             ~std::uint64_t{0}, 0.5f, 0.1, "text", static_cast<const char*>(nullptr), "a\0b"s, std::string_view("view"),
             Strings{"a", "b"}, list(1, "x"), map("k", 1), xoVariant::DateTime(5), numbers(1, 2), xoVariant(floats, 3),
             numbers(1, 2, 3, 4), numbers(1, 2, 3, 4, 5, 6, 7, 8, 9), numbers(1, 2, 3, 4, 5), numbers(),
             xoVariant(static_cast<const double*>(nullptr), 3), xoVariant(floats, static_cast<std::size_t>(-1)));
    std::string shown;
    for (const xoVariant& value : values) shown += value.getTypeAsString() + " " + value.toString() + "|";
    EXPECT_EQ(shown,
              "BOOL true|INTEGER -7|INTEGER 97|INTEGER 65535|INTEGER -9223372036854775808|INTEGER -1|REAL 0.5|REAL 0.1|"
              "STRING text|STRING |STRING a\0b|STRING view|STRINGLIST a b|LIST 1 x|MAP (k=1)|NOT DEFINED 5|"
              "VEC2D [1,2]|VEC3D [1.5,-2,0.25]|VEC4D [1,2,3,4]|MAT3D [1,2,3,4,5,6,7,8,9]|"
              "UNKNOWN |UNKNOWN |UNKNOWN |UNKNOWN |"s);
    EXPECT_EQ(numbers(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16).getMat4d()[15], 16);
    static_assert(!std::is_constructible_v<xoVariant, const int*> && !std::is_constructible_v<xoVariant, void*> &&
                      !std::is_constructible_v<xoVariant, const wchar_t*>,
                  "a pointer is no bool");
}

TEST(VariantValue, CopiesAreDeepAndMovesLeaveNothing) {
    xoVariant original = map("list", list(kLong, Strings{kLong}, numbers(1, 2, 3)), "text", kLong);
    const xoVariant same = original;
    xoVariant copy = original;
    copy.editMap()["list"].editList()[0] = "changed";
    EXPECT_TRUE(original == same && copy != same);
    const xoVariant taken = std::move(original);
    EXPECT_TRUE(original.isNull());  // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(taken, same);
    copy = xoVariant(5);
    copy.swap(original);
    EXPECT_TRUE(original == xoVariant(5) && copy.isNull());
    original.clear();
    EXPECT_TRUE(original.isNull());
}

TEST(VariantValue, TakesValuesFromInsideItself) {
    const auto fresh = [] { return xoVariant(map("a", list(kLong, 2), "b", kLong)); };

    xoVariant value = fresh();
    value = value.getMap().findPath("a")->getList()[0];
    EXPECT_EQ(value, xoVariant(kLong));

    value = fresh();
    value = std::move(value.editMap()["a"]);
    EXPECT_EQ(value, xoVariant(list(kLong, 2)));
    value.editList().push_back(value);
    EXPECT_EQ(value, xoVariant(list(kLong, 2, list(kLong, 2))));
    value.editList() = value.getList()[2].getList();
    EXPECT_EQ(value, xoVariant(list(kLong, 2)));
    for (int i = 0; i < 20; ++i) value.editList().push_back(value.getList()[0]);  // across growth
    EXPECT_EQ(value.getList().back(), xoVariant(kLong));
    EXPECT_TRUE(value.editList().erase(value.editList().end()) == value.editList().end());
    EXPECT_THROW(value.editList().reserve(static_cast<std::size_t>(-1)), std::length_error);
    value.editList().resize(100, value.getList()[1]);
    EXPECT_EQ(value.getList().back(), xoVariant(2));

    value = fresh();
    value.editMap()["self"] = value;
    EXPECT_EQ(value.getMap().findPath("self/b")->getString(), kLong);
    value.editMap() = value.getMap().findPath("self")->getMap();
    EXPECT_EQ(value.getMap().size(), 3u);
    xoVariant& alias = value;
    value = alias;
    value = std::move(alias);
    EXPECT_EQ(value.getMap().find("b")->second, xoVariant(kLong));
}

TEST(VariantValue, AccessToAnotherTypeIsHarmless) {
    xoVariant value = 7;
    EXPECT_TRUE(value.getString().empty() && value.getStringList().empty() && value.getList().empty());
    EXPECT_TRUE(value.getMap().empty() && value.getMat4d()[15] == 0.0 && value.getUserData() == nullptr);
    EXPECT_EQ(value, xoVariant(7));
    value.editString() += "text";
    EXPECT_EQ(value, xoVariant("text"));
    value.editStringList().push_back("a");
    EXPECT_EQ(value, xoVariant(Strings{"a"}));
    value.editList() << 1;
    EXPECT_EQ(value, xoVariant(list(1)));
    value.editMap()["k"] = 2;
    EXPECT_EQ(value, xoVariant(map("k", 2)));
}

struct Counts {
    int clones, destroyed, asked;
};

// A host's object, which may hold variants: it copies and empties them while the tree around it is copied or destroyed.
struct Counted : xoVariant::UserDataInterface {
    Counted(Counts& ofAll, int number) : counts(ofAll), value(number) {}
    ~Counted() override { ++counts.destroyed; }
    UserDataInterface* clone() const override {
        if (value < 0) throw std::domain_error("cannot be copied");
        if (value == 0) return nullptr;
        ++counts.clones;
        auto copy = std::make_unique<Counted>(*this);
        EXPECT_EQ(copy->held, held) << "must be whole by now";
        return copy.release();
    }
    bool equals(const UserDataInterface& other) const override {
        ++counts.asked;
        return dynamic_cast<const Counted&>(other).value == value;
    }

    Counts& counts;
    int value;
    xoVariant held = nest(100, false);
};

TEST(VariantValue, OwnsUserData) {
    Counts counts{};
    {
        xoVariant value = std::make_unique<Counted>(counts, 1);
        xoVariant copy = value;
        EXPECT_EQ(counts.clones, 1);
        EXPECT_NE(copy.getUserData(), value.getUserData());
        EXPECT_TRUE(copy == value);
        EXPECT_TRUE(copy < value || value < copy);  // by address
        EXPECT_FALSE(value == xoVariant(new Counted(counts, 2)));
        EXPECT_EQ(counts.asked, 2);
        const xoVariant moved = std::move(copy);
        EXPECT_TRUE(counts.clones == 1 && counts.destroyed == 1);
        value.clear();
        EXPECT_EQ(counts.destroyed, 2);
        const xoVariant none(xoVariant::USERDATA);
        EXPECT_EQ(none, xoVariant(std::unique_ptr<Counted>()));
        EXPECT_NE(none, moved);
        EXPECT_EQ(xoVariant(none).getUserData(), nullptr);
        EXPECT_EQ(counts.asked, 2);
        EXPECT_EQ(list(moved), list(moved));
        const xoVariant around = nest(100, true, std::make_unique<Counted>(counts, 3));
        EXPECT_EQ(xoVariant(around), around);
        const xoVariant noClone = std::make_unique<Counted>(counts, 0);
        EXPECT_EQ(xoVariant(noClone), none);
        List willThrow = list(kLong, moved);
        willThrow.push_back(std::make_unique<Counted>(counts, -1));
        const xoVariant outer = nest(40, true, std::move(willThrow));
        EXPECT_THROW(xoVariant{outer}, std::domain_error);
    }
    EXPECT_EQ(counts.destroyed, counts.clones + 5);
}

}  // namespace
