// Equality and order of variants, lists and maps, on a stack of constant size whatever the depth of the trees.
#include <cstring>
#include <tuple>

#include "variant/treeCursor.h"

namespace xo {
namespace {

using variant::Map;
using variant::TreeCursor;

// 0 also if one of the two is a NaN, which is neither less nor greater.
template <class T>
int order(const T& a, const T& b) {
    return a < b ? -1 : b < a ? 1 : 0;
}

// A list that is the beginning of the other one is less. std::string compares unsigned bytes, whatever the sign of
// char.
int orderOfStrings(const std::vector<std::string>& a, const std::vector<std::string>& b) {
    for (std::size_t i = 0; i < a.size() && i < b.size(); ++i)
        if (const int result = a[i].compare(b[i])) return result;
    return order(a.size(), b.size());
}

// The bytes are compared, not the values: a NaN is equal to itself, so that the order stays strict and weak, and -0.0
// differs from 0.0. The order is reproducible but not the numeric one.
int orderOfBytes(const double* a, const double* b, std::size_t count) {
    return std::memcmp(a, b, count * sizeof(double));
}

// Of two vectors or matrices of one type; 0 for types without a value.
int orderOfNumbers(const xoVariant& a, const xoVariant& b) {
    switch (a.getType()) {
        case xoVariant::VEC2D: return orderOfBytes(a.getVec2d(), b.getVec2d(), 2);
        case xoVariant::VEC3D: return orderOfBytes(a.getVec3d(), b.getVec3d(), 3);
        case xoVariant::VEC4D: return orderOfBytes(a.getVec4d(), b.getVec4d(), 4);
        case xoVariant::MAT3D: return orderOfBytes(a.getMat3d(), b.getMat3d(), 9);
        case xoVariant::MAT4D: return orderOfBytes(a.getMat4d(), b.getMat4d(), 16);
        default: return 0;
    }
}

// Both rules compare keys, and values of one type that are not containers; 0 means no difference. EqualityRule may
// return any other number for a difference, OrderRule returns its sign.

struct EqualityRule {
    // Containers of different sizes are unequal, so their elements need not be compared.
    static bool mayMatch(std::size_t a, std::size_t b) { return a == b; }
    static int keys(const xoVariant&, const xoVariant&) { return 0; }
    static int keys(const Map::value_type& a, const Map::value_type& b) {
        return variant::isSameKey(a.first, b.first) ? 0 : 1;
    }

    static int leaves(const xoVariant& a, const xoVariant& b) {
        switch (a.getType()) {
            case xoVariant::INTEGER:
            case xoVariant::DATETIME: return a.toInteger() == b.toInteger() ? 0 : 1;
            case xoVariant::BOOL: return a.toBool() == b.toBool() ? 0 : 1;
            case xoVariant::REAL: return a.toReal() == b.toReal() ? 0 : 1;
            case xoVariant::STRING: return a.getString() == b.getString() ? 0 : 1;
            case xoVariant::STRINGLIST: return a.getStringList() == b.getStringList() ? 0 : 1;
            case xoVariant::USERDATA: return sameUserData(a.getUserData(), b.getUserData()) ? 0 : 1;
            default: return orderOfNumbers(a, b);
        }
    }

    static bool sameUserData(const xoVariant::UserDataInterface* a, const xoVariant::UserDataInterface* b) {
        return a != nullptr && b != nullptr ? a->equals(*b) : a == b;
    }
};

struct OrderRule {
    // The order needs the first difference, so the sizes decide nothing in advance.
    static bool mayMatch(std::size_t, std::size_t) { return true; }
    static int keys(const xoVariant&, const xoVariant&) { return 0; }
    static int keys(const Map::value_type& a, const Map::value_type& b) {
        return Map::KeyOrder::compare(a.first, b.first);
    }

    static int leaves(const xoVariant& a, const xoVariant& b) {
        switch (a.getType()) {
            case xoVariant::INTEGER:
            case xoVariant::DATETIME: return order(a.toInteger(), b.toInteger());
            case xoVariant::BOOL: return order(a.toBool(), b.toBool());
            case xoVariant::REAL: return order(a.toReal(), b.toReal());
            case xoVariant::STRING: return a.getString().compare(b.getString());
            case xoVariant::STRINGLIST: return orderOfStrings(a.getStringList(), b.getStringList());
            case xoVariant::USERDATA: return orderOfUserData(a.getUserData(), b.getUserData());
            default: return orderOfNumbers(a, b);
        }
    }

    // By address, because the interface offers equality only. std::less orders pointers to unrelated objects, for which
    // the operator < is unspecified: https://en.cppreference.com/w/cpp/utility/functional/less
    static int orderOfUserData(const xoVariant::UserDataInterface* a, const xoVariant::UserDataInterface* b) {
        const std::less<> before{};
        return before(a, b) ? -1 : before(b, a) ? 1 : 0;
    }
};

const xoVariant& valueAt(variant::List::const_iterator element) { return *element; }

const xoVariant& valueAt(Map::const_iterator entry) { return entry->second; }

std::size_t sizeOf(const xoVariant& container) {
    return container.getType() == xoVariant::MAP ? container.getMap().size() : container.getList().size();
}

// Two containers of one type inside the ones that are compared.
struct Inner {
    const xoVariant* a = nullptr;
    const xoVariant* b = nullptr;
};

// Compares elements up to the next pair of containers, which it stores in inner, or to the end. Returns the first
// difference.
template <class Rule, class Iterator>
int compareRun(Iterator& a, Iterator lastA, Iterator& b, Iterator lastB, Inner& inner) {
    for (; a != lastA && b != lastB; ++a, ++b) {
        if (const int result = Rule::keys(*a, *b)) return result;
        const xoVariant& left = valueAt(a);
        const xoVariant& right = valueAt(b);
        // Types are never converted for a comparison: the INTEGER 1 is less than the REAL 0.5 because its type's number
        // is.
        if (left.getType() != right.getType()) return left.getType() < right.getType() ? -1 : 1;
        if (variant::isContainer(left)) {
            if (!Rule::mayMatch(sizeOf(left), sizeOf(right))) return 1;
            inner = {&left, &right};
            // The caller stores these positions and continues from them, behind the containers.
            ++a, ++b;
            return 0;
        }
        if (const int result = Rule::leaves(left, right)) return result;
    }
    // Of two runs that agree so far, the shorter one is a prefix of the other and precedes it.
    return order(b == lastB, a == lastA);
}

// Returns the first difference of two lists or two maps, in the order of their elements, or 0. Containers inside are
// entered by this loop, without recursion.
template <class Rule>
int compareTrees(TreeCursor a, TreeCursor b) {
    std::vector<std::pair<TreeCursor, TreeCursor>> around;  // where to go on behind the containers that were entered
    for (;;) {
        Inner inner;
        const int result = a.isOnMap()
                               ? compareRun<Rule>(a.entry(), a.lastEntry(), b.entry(), b.lastEntry(), inner)
                               : compareRun<Rule>(a.element(), a.lastElement(), b.element(), b.lastElement(), inner);
        if (result != 0) return result;
        if (inner.a != nullptr) {
            around.emplace_back(a, b);
            a = TreeCursor::into(*inner.a);
            b = TreeCursor::into(*inner.b);
        } else if (!around.empty()) {
            std::tie(a, b) = around.back();
            around.pop_back();
        } else {
            return 0;
        }
    }
}

template <class Rule>
int compareValues(const xoVariant& a, const xoVariant& b) {
    if (a.getType() != b.getType()) return a.getType() < b.getType() ? -1 : 1;
    if (!variant::isContainer(a)) return Rule::leaves(a, b);
    if (!Rule::mayMatch(sizeOf(a), sizeOf(b))) return 1;
    return compareTrees<Rule>(TreeCursor::into(a), TreeCursor::into(b));
}

}  // namespace

bool xoVariant::operator==(const xoVariant& other) const { return compareValues<EqualityRule>(*this, other) == 0; }

bool xoVariant::operator<(const xoVariant& other) const { return compareValues<OrderRule>(*this, other) < 0; }

bool xoVariant::xoVariantListImpl::operator==(const xoVariantListImpl& other) const {
    return size() == other.size() && compareTrees<EqualityRule>(TreeCursor(*this), TreeCursor(other)) == 0;
}

bool xoVariant::xoVariantListImpl::operator<(const xoVariantListImpl& other) const {
    return compareTrees<OrderRule>(TreeCursor(*this), TreeCursor(other)) < 0;
}

bool xoVariant::xoVariantMapImpl::operator==(const xoVariantMapImpl& other) const {
    return size() == other.size() && compareTrees<EqualityRule>(TreeCursor(*this), TreeCursor(other)) == 0;
}

bool xoVariant::xoVariantMapImpl::operator<(const xoVariantMapImpl& other) const {
    return compareTrees<OrderRule>(TreeCursor(*this), TreeCursor(other)) < 0;
}

}  // namespace xo
