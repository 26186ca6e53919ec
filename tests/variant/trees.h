// Trees written as they look, and printed as they are when a test fails.
#ifndef XO_TESTS_VARIANT_TREES_H
#define XO_TESTS_VARIANT_TREES_H

#include <initializer_list>
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

inline Map map(std::initializer_list<std::pair<std::string, xoVariant>> entries) {
    Map result;
    for (const auto& entry : entries) result.insert(entry);
    return result;
}

inline List list(std::initializer_list<xoVariant> elements) {
    List result;
    for (const xoVariant& element : elements) result.push_back(element);
    return result;
}

inline xoVariant numbers(std::initializer_list<double> values) { return {values.begin(), values.size()}; }

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
