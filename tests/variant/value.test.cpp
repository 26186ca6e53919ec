#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <type_traits>

#include "variant/trees.h"

namespace {

using namespace std::string_literals;
using namespace xo::tests;
using xo::xoVariant;

const std::string kLong(100, 'x');  // too long for a string to hold in place

TEST(VariantValue, TypesKeepTheirNumbersNamesAndDefaults) {
    const struct {
        int number;
        xoVariant::Type type;
        const char* name;
        const char* text;
    } rows[] = {
        {0, xoVariant::UNKNOWN, "UNKNOWN", ""},
        {1, xoVariant::INTEGER, "INTEGER", "0"},
        {2, xoVariant::REAL, "REAL", "0"},
        {3, xoVariant::STRING, "STRING", ""},
        {4, xoVariant::BOOL, "BOOL", "false"},
        {5, xoVariant::VEC2D, "VEC2D", "[0,0]"},
        {6, xoVariant::VEC3D, "VEC3D", "[0,0,0]"},
        {7, xoVariant::VEC4D, "VEC4D", "[0,0,0,0]"},
        {8, xoVariant::UNKNOWN, "UNKNOWN", ""},
        {9, xoVariant::STRINGLIST, "STRINGLIST", ""},
        {10, xoVariant::MAP, "MAP", ""},
        {11, xoVariant::LIST, "LIST", ""},
        {12, xoVariant::MAT3D, "MAT3D", "[0,0,0,0,0,0,0,0,0]"},
        {13, xoVariant::MAT4D, "MAT4D", "[0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0]"},
        {14, xoVariant::DATETIME, "NOT DEFINED", "0"},
        {15, xoVariant::USERDATA, "NOT DEFINED", ""},
        {16, xoVariant::UNKNOWN, "UNKNOWN", ""},
        {99, xoVariant::UNKNOWN, "UNKNOWN", ""},
        {-1, xoVariant::UNKNOWN, "UNKNOWN", ""},
    };
    for (const auto& row : rows) {
        const xoVariant built(static_cast<xoVariant::Type>(row.number));
        xoVariant set(kLong);
        EXPECT_EQ(set.setType(static_cast<xoVariant::Type>(row.number)), built) << row.number;
        for (const xoVariant& value : {built, set}) {
            EXPECT_EQ(value.getType(), row.type) << row.number;
            EXPECT_EQ(value.getTypeAsString(), row.name) << row.number;
            EXPECT_EQ(value.toString(), row.text) << row.number;
            EXPECT_EQ(value.isNull(), row.type == xoVariant::UNKNOWN) << row.number;
            EXPECT_EQ(value.isNumeric(), row.number == 1 || row.number == 2) << row.number;
        }
    }
}

TEST(VariantValue, EachPayloadBuildsItsType) {
    const float floats[] = {1.5f, -2.0f, 0.25f};
    const struct {
        xoVariant value;
        xoVariant::Type type;
        std::string text;
    } rows[] = {
        {true, xoVariant::BOOL, "true"},
        {-7, xoVariant::INTEGER, "-7"},
        {'a', xoVariant::INTEGER, "97"},
        {static_cast<unsigned short>(65535), xoVariant::INTEGER, "65535"},
        {(std::numeric_limits<std::int64_t>::min)(), xoVariant::INTEGER, "-9223372036854775808"},
        {~std::uint64_t{0}, xoVariant::INTEGER, "-1"},
        {0.5f, xoVariant::REAL, "0.5"},
        {0.1, xoVariant::REAL, "0.1"},
        {"text", xoVariant::STRING, "text"},
        {static_cast<const char*>(nullptr), xoVariant::STRING, ""},
        {"a\0b"s, xoVariant::STRING, "a\0b"s},
        {std::string_view("view"), xoVariant::STRING, "view"},
        {Strings{"a", "b"}, xoVariant::STRINGLIST, "a b"},
        {list({1, "x"}), xoVariant::LIST, "1 x"},
        {map({{"k", 1}}), xoVariant::MAP, "(k=1)"},
        {xoVariant::DateTime(5), xoVariant::DATETIME, "5"},
        {numbers({1, 2}), xoVariant::VEC2D, "[1,2]"},
        {{floats, 3}, xoVariant::VEC3D, "[1.5,-2,0.25]"},
        {numbers({1, 2, 3, 4}), xoVariant::VEC4D, "[1,2,3,4]"},
        {numbers({1, 2, 3, 4, 5, 6, 7, 8, 9}), xoVariant::MAT3D, "[1,2,3,4,5,6,7,8,9]"},
        {numbers({1, 2, 3, 4, 5}), xoVariant::UNKNOWN, ""},
        {numbers({}), xoVariant::UNKNOWN, ""},
        {{static_cast<const double*>(nullptr), 3}, xoVariant::UNKNOWN, ""},
        {{floats, static_cast<std::size_t>(-1)}, xoVariant::UNKNOWN, ""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.value.getType(), row.type) << row.text;
        EXPECT_EQ(row.value.toString(), row.text);
    }
    EXPECT_EQ(numbers({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}).getMat4d()[15], 16);
    static_assert(!std::is_constructible_v<xoVariant, const int*> && !std::is_constructible_v<xoVariant, void*> &&
                      !std::is_constructible_v<xoVariant, const wchar_t*>,
                  "a pointer is no bool");
}

TEST(VariantValue, CopiesAreDeepAndMovesLeaveNothing) {
    xoVariant original = map({{"list", list({kLong, Strings{kLong}, numbers({1, 2, 3})})}, {"text", kLong}});
    const xoVariant same = original;
    xoVariant copy = original;
    copy.editMap()["list"].editList()[0] = "changed";
    EXPECT_EQ(original, same);
    EXPECT_NE(copy, same);
    const xoVariant taken = std::move(original);
    EXPECT_TRUE(original.isNull());  // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(taken, same);
    copy = xoVariant(5);
    EXPECT_EQ(copy, xoVariant(5));
    copy.swap(original);
    EXPECT_EQ(original, xoVariant(5));
    EXPECT_TRUE(copy.isNull());
    original.clear();
    EXPECT_TRUE(original.isNull());
}

TEST(VariantValue, TakesValuesFromInsideItself) {
    const auto fresh = [] { return xoVariant(map({{"a", list({kLong, 2})}, {"b", kLong}})); };

    xoVariant value = fresh();
    value = value.getMap().findPath("a")->getList()[0];
    EXPECT_EQ(value, xoVariant(kLong));

    value = fresh();
    value = std::move(value.editMap()["a"]);
    EXPECT_EQ(value, xoVariant(list({kLong, 2})));
    value.editList().push_back(value);
    EXPECT_EQ(value, xoVariant(list({kLong, 2, list({kLong, 2})})));
    value.editList() = value.getList()[2].getList();
    EXPECT_EQ(value, xoVariant(list({kLong, 2})));
    for (int i = 0; i < 20; ++i) value.editList().push_back(value.getList()[0]);  // across growth
    EXPECT_EQ(value.getList().back(), xoVariant(kLong));
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
    EXPECT_EQ(value.getString(), "");
    EXPECT_TRUE(value.getStringList().empty());
    EXPECT_TRUE(value.getList().empty());
    EXPECT_TRUE(value.getMap().empty());
    EXPECT_EQ(value.getMat4d()[15], 0.0);
    EXPECT_EQ(value.getUserData(), nullptr);
    EXPECT_EQ(value, xoVariant(7));
    value.editString() += "text";
    EXPECT_EQ(value, xoVariant("text"));
    value.editStringList().push_back("a");
    EXPECT_EQ(value, xoVariant(Strings{"a"}));
    value.editList() << 1;
    EXPECT_EQ(value, xoVariant(list({1})));
    value.editMap()["k"] = 2;
    EXPECT_EQ(value, xoVariant(map({{"k", 2}})));
}

struct Counts {
    int clones = 0;
    int destroyed = 0;
    int asked = 0;
};

class Counted : public xoVariant::UserDataInterface {
public:
    Counted(Counts& counts, int value) : mCounts(counts), mValue(value) {}
    ~Counted() override { ++mCounts.destroyed; }
    UserDataInterface* clone() const override {
        ++mCounts.clones;
        return new Counted(*this);
    }
    bool equals(const UserDataInterface& other) const override {
        ++mCounts.asked;
        return dynamic_cast<const Counted&>(other).mValue == mValue;
    }

private:
    Counts& mCounts;
    int mValue;
};

TEST(VariantValue, OwnsUserData) {
    Counts counts;
    {
        xoVariant value = std::make_unique<Counted>(counts, 1);
        xoVariant copy = value;
        EXPECT_EQ(counts.clones, 1);
        EXPECT_NE(copy.getUserData(), value.getUserData());
        EXPECT_TRUE(copy == value);
        EXPECT_TRUE(copy < value || value < copy);  // by address
        EXPECT_EQ(counts.asked, 1);
        EXPECT_FALSE(value == xoVariant(new Counted(counts, 2)));
        EXPECT_EQ(counts.asked, 2);
        const xoVariant moved = std::move(copy);
        EXPECT_EQ(counts.clones, 1);
        EXPECT_EQ(counts.destroyed, 1);
        value.clear();
        EXPECT_EQ(counts.destroyed, 2);
        const xoVariant none(xoVariant::USERDATA);
        EXPECT_EQ(none, xoVariant(std::unique_ptr<Counted>()));
        EXPECT_NE(none, moved);
        EXPECT_EQ(counts.asked, 2);
        EXPECT_EQ(xoVariant(none).getUserData(), nullptr);
        EXPECT_EQ(list({moved}), list({moved}));
    }
    EXPECT_EQ(counts.destroyed, counts.clones + 2);
}

// A host's object may hold variants, which it copies and empties while the tree around it is copied or destroyed.
class Holder : public xoVariant::UserDataInterface {
public:
    explicit Holder(xoVariant value) : mValue(std::move(value)) {}
    UserDataInterface* clone() const override {
        auto copy = std::make_unique<Holder>(mValue);
        return copy->mValue == mValue ? copy.release() : nullptr;
    }
    bool equals(const UserDataInterface&) const override { return true; }

private:
    xoVariant mValue;
};

TEST(VariantValue, UserDataMayHoldTreesOfItsOwn) {
    const xoVariant outer = nest(100, true, std::make_unique<Holder>(nest(100, false)));
    const xoVariant copy = outer;
    const xoVariant* inner = &copy;
    while (inner->getType() == xoVariant::MAP) inner = &inner->getMap().begin()->second;
    EXPECT_NE(inner->getUserData(), nullptr);
}

}  // namespace
