// Trees written as they look, and printed as they are when a test fails.
#ifndef XO_TESTS_VARIANT_TREES_H
#define XO_TESTS_VARIANT_TREES_H

#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "xoSystem/xoVariant.h"

namespace xo {

inline void PrintTo(const xoVariant& value, std::ostream* out) {
    *out << value.getTypeAsString() << ' ' << value.toString();
}
inline void PrintTo(const xoVariant::xoVariantMapImpl& map, std::ostream* out) { *out << map.toString(); }

namespace tests {

using List = xoVariant::xoVariantListImpl;
using Map = xoVariant::xoVariantMapImpl;
using Strings = std::vector<std::string>;

template <class... Values>
List list(const Values&... values) {
    List result;
    (void)(result << ... << values);
    return result;
}

// Keys and values in turn.
template <class... Items>
Map map(const Items&... items) {
    const List all = list(items...);
    Map result;
    for (std::size_t i = 0; i + 1 < all.size(); i += 2) result.insert({all[i].getString(), all[i + 1]});
    return result;
}

template <class... Numbers>
xoVariant numbers(Numbers... values) {
    const double array[] = {static_cast<double>(values)..., 0};
    return {array, sizeof...(values)};
}

// A map whose only entry is a map whose only entry ... is the value; or the same of lists.
inline xoVariant nest(int depth, bool inMaps, xoVariant value = 1) {
    for (int i = 0; i < depth; ++i) {
        xoVariant outer(inMaps ? xoVariant::MAP : xoVariant::LIST);
        if (inMaps) {
            outer.editMap()["k"] = std::move(value);
        } else {
            outer.editList().push_back(std::move(value));
        }
        value = std::move(outer);
    }
    return value;
}

}  // namespace tests
}  // namespace xo

#endif
